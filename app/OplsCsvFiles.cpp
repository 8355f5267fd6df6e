#include "app/OplsCsvFiles.h"

#include "app/FitCsv.h"
#include "app/ModelDiagnostics.h"
#include "app/OplsDiagnostics.h"
#include "app/OplsTables.h"

namespace kalmia::app {

namespace {

CsvFile ComponentRecordsCsv(const OplsOutcome& outcome) {
  CsvText csv;
  csv.Field("component");
  for (const char* title : {"R2X", "R2Y", "Q2", "Q2 cum", "Q2 limit"}) csv.Field(title);
  csv.Field("significant").Field("kept").EndLine();
  const std::vector<std::string> names = OplsComponentNames(outcome.components);
  for (std::size_t a = 0; a < outcome.components.size(); ++a) {
    const OplsComponentRecord& record = outcome.components[a];
    csv.Field(names[a]).Number(record.r2x).Number(record.r2y).Number(record.q2).Number(record.q2Cum);
    csv.Number(record.q2Limit).Field(record.significant ? "yes" : "no").Field(record.kept ? "yes" : "no").EndLine();
  }
  return {"components.csv", csv.Text()};
}

/// One line for each name: the predictive components p1.. (or t1.., by `symbol`), then the orthogonal ones po1..
CsvFile BothKindsCsv(const std::string& file, const std::string& what, const std::string& symbol,
                     const std::vector<std::string>& names, const NCDataMatrix<float>& predictive,
                     const NCDataMatrix<float>& orthogonal) {
  CsvText csv;
  csv.Field(what);
  for (int a = 1; a <= predictive.SizeRows(); ++a) csv.Field(symbol + std::to_string(a));
  for (int o = 1; o <= orthogonal.SizeRows(); ++o) csv.Field(symbol + "o" + std::to_string(o));
  csv.EndLine();
  for (int i = 1; i <= static_cast<int>(names.size()); ++i) {
    csv.Field(names[static_cast<std::size_t>(i - 1)]);
    for (int a = 1; a <= predictive.SizeRows(); ++a) csv.Cell(predictive[a][i]);
    for (int o = 1; o <= orthogonal.SizeRows(); ++o) csv.Cell(orthogonal[o][i]);
    csv.EndLine();
  }
  return {file, csv.Text()};
}

CsvFile CoefficientsCsv(const StoredOpls& model) {
  const Coefficients coefficients = CoefficientsInOriginalUnits(model);
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

CsvFile VipCsv(const StoredOpls& model) {
  const std::vector<double> predictive = PredictiveImportance(model);
  const std::vector<double> orthogonal = OrthogonalImportance(model);
  CsvText csv;
  csv.Field("column").Field("VIP predictive").Field("VIP orthogonal").EndLine();
  for (std::size_t k = 0; k < predictive.size(); ++k)
    csv.Field(model.xNames[k]).Number(predictive[k]).Number(orthogonal[k]).EndLine();
  return {"vip.csv", csv.Text()};
}

CsvFile SPlotCsv(const OplsOutcome& outcome) {
  const StoredOpls& model = outcome.model;
  CsvText csv;
  csv.Field("column");
  for (int a = 1; a <= model.Predictive(); ++a)
    csv.Field("covariance t" + std::to_string(a)).Field("correlation t" + std::to_string(a));
  csv.EndLine();
  for (std::size_t k = 0; k < model.xNames.size(); ++k) {
    csv.Field(model.xNames[k]);
    for (int a = 1; a <= model.Predictive(); ++a) {
      const ColumnWithScores related = RelateColumn(outcome.scaledX, static_cast<int>(k) + 1, model.opls.t[a]);
      csv.Number(related.covariance).Number(related.correlation);
    }
    csv.EndLine();
  }
  return {"s-plot.csv", csv.Text()};
}

NCDataMatrix<float> Together(const NCDataMatrix<float>& above, const NCDataMatrix<float>& below) {
  NCDataMatrix<float> both = above;
  for (int r = 1; r <= below.SizeRows(); ++r) both.push_back(below[r]);
  return both;
}

}  // namespace

std::vector<CsvFile> OplsCsvFiles(const OplsOutcome& outcome) {
  const StoredOpls& model = outcome.model;
  const OplsMatrices& opls = model.opls;
  const CrossValidatedScores& left = outcome.crossValidated;
  return {ComponentRecordsCsv(outcome),
          BothKindsCsv("scores.csv", "row", "t", model.rowNames, opls.t, opls.to),
          BothKindsCsv("cross-validated-scores.csv", "row", "t", model.rowNames, left.t, left.to),
          ComponentsCsv("y-scores.csv", "row", "u", model.rowNames, outcome.u),
          BothKindsCsv("loadings.csv", "column", "p", model.xNames, opls.p.back(), opls.po),
          BothKindsCsv("weights.csv", "column", "w", model.xNames, opls.w.back(), opls.wo),
          BothKindsCsv("y-weights.csv", "column", "c", model.yNames, opls.c.back(), opls.co),
          SPlotCsv(outcome),
          CoefficientsCsv(model),
          VipCsv(model),
          RowsCsv(model.rowNames, HotellingT2(Together(opls.t, opls.to)),
                  DistancesToModel(model, model.Components(), outcome.fitted)),
          FitCsv(outcome.data, outcome.fitted)};
}

std::vector<std::string> OplsCsvFileNames() {
  return {"components.csv", "scores.csv",      "cross-validated-scores.csv",
          "y-scores.csv",   "loadings.csv",    "weights.csv",
          "y-weights.csv",  "s-plot.csv",      "coefficients.csv",
          "vip.csv",        "rows.csv",        "fit.csv"};
}

}  // namespace kalmia::app
