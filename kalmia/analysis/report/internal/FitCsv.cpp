#include "kalmia/analysis/report/internal/FitCsv.h"

#include <set>

#include "kalmia/analysis/model/internal/OPLSDiagnostics.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/internal/CsvText.h"

namespace kalmia::analysis {

namespace {

double CellOr(const RealMatrix& matrix, std::size_t row, std::size_t column) {
  return matrix.rows > 0 ? matrix(row, column) : kNotANumber;
}

/// The titles of what the jack-knife says of each Y column, followed by its name where there are several.
void JackKnifeTitles(const std::vector<std::string>& yNames, CsvText* csv) {
  for (const std::string& y : yNames) {
    const std::string behind = yNames.size() > 1 ? " " + y : "";
    for (const char* title : {"standard error", "lower", "upper", "p"}) csv->Field(title + behind);
  }
}

/// Of one number in each Y column.
void JackKnifeCells(const std::vector<JackKnifeResult>& ofColumns, std::size_t columns, std::size_t number,
                    CsvText* csv) {
  for (std::size_t j = 0; j < columns; ++j) {
    if (ofColumns.empty()) {
      for (int i = 0; i < 4; ++i) csv->Number(kNotANumber);
      continue;
    }
    const JackKnifeResult& of = ofColumns[j];
    csv->Number(of.standardErrors[number]).Number(of.lower[number]).Number(of.upper[number]).Number(of.p[number]);
  }
}

/// Of one X column in each kind of VIP, of which there are so many.
void ImportanceCells(const std::vector<JackKnifeResult>& ofKinds, std::size_t kinds, std::size_t column, CsvText* csv) {
  for (std::size_t kind = 0; kind < kinds; ++kind) {
    if (ofKinds.empty()) {
      csv->Number(kNotANumber).Number(kNotANumber).Number(kNotANumber);
      continue;
    }
    const JackKnifeResult& of = ofKinds[kind];
    csv->Number(of.standardErrors[column]).Number(of.lower[column]).Number(of.upper[column]);
  }
}

/// Titles of columns, each different from those before: where one is there already, a number from 2 on in parentheses
/// follows it.
class DifferentTitles {
 public:
  explicit DifferentTitles(CsvText* csv) : csv_(csv) {}

  void Add(const std::string& title) {
    std::string own = title;
    for (int number = 2; !taken_.insert(own).second; ++number) own = title + " (" + std::to_string(number) + ")";
    csv_->Field(own);
  }

 private:
  CsvText* csv_;
  std::set<std::string> taken_;
};

/// Of a model without components.
Coefficients CoefficientsOfMeans(const YModelInfo& model) {
  Coefficients means;
  for (std::size_t j = 1; j <= model.yNames.size(); ++j) {
    means.intercepts.push_back(CentreOf(model.yScaling, static_cast<int>(j)));
  }
  means.slopes.assign(model.xNames.size(), std::vector<double>(model.yNames.size(), 0.0));
  return means;
}

}  // namespace

CsvFile FitCsv(const std::string& file, const std::vector<std::string>& rowNames,
               const std::vector<std::string>& columnNames, const std::vector<std::vector<double>>& measured,
               const std::vector<RowPrediction>& fitted, const CsvMarks& marks, const RealMatrix* leftOut,
               const std::optional<RowClasses>& classes) {
  CsvText csv(marks);
  DifferentTitles titles(&csv);
  titles.Add("row");
  if (classes) {
    for (const std::string& title : {"measured " + classes->column, std::string("class"), std::string("cv class")}) {
      titles.Add(title);
    }
  }
  for (const std::string& name : columnNames) {
    titles.Add("measured " + name);
    titles.Add("predicted " + name);
    if (leftOut != nullptr) titles.Add("cv " + name);
  }
  csv.EndLine();
  for (std::size_t i = 0; i < fitted.size(); ++i) {
    csv.Field(rowNames[i]);
    if (classes) {
      for (const auto* of : {&classes->own, &classes->fitted, &classes->leftOut}) {
        csv.Field(of->empty() ? "" : ClassName(classes->model, (*of)[i]));
      }
    }
    for (std::size_t j = 0; j < columnNames.size(); ++j) {
      csv.Number(measured[j][i]);
      csv.Number(fitted[i].y.empty() ? kNotANumber : fitted[i].y[j]);
      if (leftOut != nullptr) csv.Number(CellOr(*leftOut, i, j));
    }
    csv.EndLine();
  }
  return {file, csv.Text()};
}

Coefficients CoefficientsOf(const StoredPLS& model) {
  if (model.Components() == 0) return CoefficientsOfMeans(model);
  return CoefficientsInOriginalUnits(*model.pls, model.xScaling, model.yScaling);
}

Coefficients CoefficientsOf(const StoredOPLS& model) {
  return model.Components() > 0 ? CoefficientsInOriginalUnits(model) : CoefficientsOfMeans(model);
}

CsvFile CoefficientsCsv(const Coefficients& coefficients, const YModelInfo& model, const CsvMarks& marks,
                        const std::vector<JackKnifeResult>* jackKnife) {
  const std::size_t slopes = model.xNames.size();
  CsvText csv(marks);
  csv.Field("column");
  for (const std::string& y : model.yNames) csv.Field(y);
  if (jackKnife != nullptr) JackKnifeTitles(model.yNames, &csv);
  csv.EndLine();
  const auto line = [&](const std::string& name, const std::vector<double>& numbers, std::size_t place) {
    csv.Field(name);
    for (const double number : numbers) csv.Number(number);
    if (jackKnife != nullptr) JackKnifeCells(*jackKnife, model.yNames.size(), place, &csv);
    csv.EndLine();
  };
  line("(intercept)", coefficients.intercepts, slopes);
  for (std::size_t k = 0; k < slopes; ++k) line(model.xNames[k], coefficients.slopes[k], k);
  return {"coefficients.csv", csv.Text()};
}

CsvFile VipCsv(const std::vector<std::string>& xNames, const std::vector<NamedImportance>& kinds,
               const std::vector<JackKnifeResult>& jackKnife, const CsvMarks& marks) {
  const auto called = [](const std::string& title, const NamedImportance& kind) {
    return kind.name.empty() ? title : title + " " + kind.name;
  };
  CsvText csv(marks);
  csv.Field("column");
  for (const NamedImportance& kind : kinds) csv.Field(called("VIP", kind));
  for (const NamedImportance& kind : kinds) {
    for (const char* title : {"standard error", "lower", "upper"}) csv.Field(called(title, kind));
  }
  csv.EndLine();
  for (std::size_t k = 0; k < xNames.size(); ++k) {
    csv.Field(xNames[k]);
    for (const NamedImportance& kind : kinds) csv.Number(kind.vip[k]);
    ImportanceCells(jackKnife, kinds.size(), k, &csv);
    csv.EndLine();
  }
  return {"vip.csv", csv.Text()};
}

}  // namespace kalmia::analysis
