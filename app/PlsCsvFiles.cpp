#include "app/PlsCsvFiles.h"

#include "app/CsvRecords.h"
#include "app/ModelDiagnostics.h"
#include "app/Numbers.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::app {

namespace {

/// Writes lines of fields.
class CsvText {
 public:
  CsvText& Field(const std::string& text) {
    if (!lineIsEmpty_) text_ += ',';
    text_ += CsvField(text);
    lineIsEmpty_ = false;
    return *this;
  }
  CsvText& Number(const std::string& number) {  // needs no quotation marks, not even where it is empty
    text_ += ',';
    text_ += number;
    return *this;
  }
  CsvText& Number(double value) { return Number(Shortest(value)); }
  CsvText& Cell(float cell) { return Number(cell == static_cast<float>(kMissing) ? std::string() : Shortest(cell)); }
  void EndLine() {
    text_ += '\n';
    lineIsEmpty_ = true;
  }
  const std::string& Text() const { return text_; }

 private:
  std::string text_;
  bool lineIsEmpty_ = true;
};

/// One line for each name, one column for each component: a matrix with components in rows, turned.
CsvFile ComponentsCsv(const std::string& name, const std::string& what, const std::string& symbol,
                      const std::vector<std::string>& names, const NCDataMatrix<float>& prim) {
  CsvText csv;
  csv.Field(what);
  for (int a = 1; a <= prim.SizeRows(); ++a) csv.Field(symbol + std::to_string(a));
  csv.EndLine();
  for (std::size_t i = 0; i < names.size(); ++i) {
    csv.Field(names[i]);
    for (int a = 1; a <= prim.SizeRows(); ++a) csv.Cell(prim[a][static_cast<int>(i) + 1]);
    csv.EndLine();
  }
  return {name, csv.Text()};
}

CsvFile CoefficientsCsv(const StoredModel& model) {
  const Coefficients coefficients = CoefficientsInOriginalUnits(*model.pls, *model.xScale, *model.yScale);
  CsvText csv;
  csv.Field("column");
  for (const std::string& y : model.yNames) csv.Field(y);
  csv.EndLine();
  csv.Field("(intercept)");
  for (const double intercept : coefficients.intercepts) csv.Number(intercept);
  csv.EndLine();
  for (std::size_t k = 0; k < model.xNames.size(); ++k) {
    csv.Field(model.xNames[k]);
    for (const double slope : coefficients.slopes[k]) csv.Number(slope);
    csv.EndLine();
  }
  return {"coefficients.csv", csv.Text()};
}

CsvFile VipCsv(const StoredModel& model) {
  const std::vector<double> vip = VariableImportance(*model.pls);
  CsvText csv;
  csv.Field("column").Field("VIP").EndLine();
  for (std::size_t k = 0; k < vip.size(); ++k) csv.Field(model.xNames[k]).Number(vip[k]).EndLine();
  return {"vip.csv", csv.Text()};
}

CsvFile RowsCsv(const PlsOutcome& outcome) {
  const std::vector<double> t2 = HotellingT2(*outcome.model.pls);
  CsvText csv;
  csv.Field("row").Field("T2").Field("distance").EndLine();
  for (std::size_t i = 0; i < t2.size(); ++i) {
    csv.Field(outcome.data.rowNames[i])
        .Number(t2[i])
        .Number(DistanceToModel(outcome.model, outcome.fitted[i]))
        .EndLine();
  }
  return {"rows.csv", csv.Text()};
}

CsvFile FitCsv(const PlsOutcome& outcome) {
  CsvText csv;
  csv.Field("row");
  for (const std::string& y : outcome.data.yNames) csv.Field("measured " + y).Field("predicted " + y);
  csv.EndLine();
  for (std::size_t i = 0; i < outcome.fitted.size(); ++i) {
    csv.Field(outcome.data.rowNames[i]);
    for (std::size_t j = 0; j < outcome.data.yNames.size(); ++j) {
      csv.Cell(outcome.data.y[static_cast<int>(i) + 1][static_cast<int>(j) + 1]);
      csv.Number(outcome.fitted[i].y.empty() ? std::string() : Shortest(outcome.fitted[i].y[j]));
    }
    csv.EndLine();
  }
  return {"fit.csv", csv.Text()};
}

CsvFile QCsv(const PlsOutcome& outcome) {
  CsvText csv;
  csv.Field("component").Field("Y");
  for (const char* title : {"R2X", "R2X cum", "R2Y", "R2Y cum", "Q2", "Q2 cum", "Q2 limit"}) csv.Field(title);
  csv.Field("significant").Field("kept").EndLine();
  for (std::size_t a = 0; a < outcome.components.size(); ++a) {
    const ComponentRecord& record = outcome.components[a];
    const auto line = [&](const std::string& y, const YShare& share) {
      csv.Field(std::to_string(a + 1)).Field(y).Number(record.r2x).Number(record.r2xCum).Number(share.r2);
      csv.Number(share.r2Cum).Number(share.q2).Number(share.q2Cum).Number(record.q2Limit);
      csv.Number(record.significant ? "yes" : "no").Number(record.kept ? "yes" : "no").EndLine();
    };
    line("(all)", record.y);
    for (std::size_t j = 0; j < record.perY.size(); ++j) line(outcome.data.yNames[j], record.perY[j]);
  }
  return {"components.csv", csv.Text()};
}

}  // namespace

std::vector<CsvFile> PlsCsvFiles(const PlsOutcome& outcome) {
  const StoredModel& model = outcome.model;
  const NCPLS& pls = *model.pls;
  return {QCsv(outcome),
          ComponentsCsv("scores.csv", "row", "t", model.rowNames, *pls.GetTprim()),
          ComponentsCsv("y-scores.csv", "row", "u", model.rowNames, *pls.GetUprim()),
          ComponentsCsv("loadings.csv", "column", "p", model.xNames, *pls.GetPprim()),
          ComponentsCsv("weights.csv", "column", "w", model.xNames, *pls.GetWprim()),
          ComponentsCsv("w-star.csv", "column", "w*", model.xNames, pls.GetWStarPrim()),
          ComponentsCsv("y-weights.csv", "column", "c", model.yNames, *pls.GetCprim()),
          CoefficientsCsv(model),
          VipCsv(model),
          RowsCsv(outcome),
          FitCsv(outcome)};
}

std::vector<std::string> PlsCsvFileNames() {
  return {"components.csv", "scores.csv",       "y-scores.csv", "loadings.csv", "weights.csv", "w-star.csv",
          "y-weights.csv",  "coefficients.csv", "vip.csv",      "rows.csv",     "fit.csv"};
}

CsvFile PredictionsCsv(const StoredModel& model, const std::vector<std::string>& rowNames,
                       const std::vector<RowPrediction>& rows, const std::vector<std::vector<float>>& measured) {
  CsvText csv;
  csv.Field("row");
  for (std::size_t j = 0; j < model.yNames.size(); ++j) {
    if (!measured[j].empty()) csv.Field("measured " + model.yNames[j]);
    csv.Field("predicted " + model.yNames[j]);
  }
  csv.Field("distance").Field("reason").EndLine();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    csv.Field(rowNames[i]);
    for (std::size_t j = 0; j < model.yNames.size(); ++j) {
      if (!measured[j].empty()) csv.Cell(measured[j][i]);
      csv.Number(rows[i].y.empty() ? std::string() : Shortest(rows[i].y[j]));
    }
    csv.Number(DistanceToModel(model, rows[i])).Field(rows[i].reason).EndLine();
  }
  return {kPredictionsFile, csv.Text()};
}

}  // namespace kalmia::app
