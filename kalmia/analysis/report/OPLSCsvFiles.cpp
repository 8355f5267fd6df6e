#include "kalmia/analysis/report/OPLSCsvFiles.h"

#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/internal/OPLSDiagnostics.h"
#include "kalmia/analysis/report/internal/FitCsv.h"
#include "kalmia/analysis/report/internal/OPLSTables.h"

namespace kalmia::analysis {

namespace {

CsvFile ComponentRecordsCsv(const OPLSResult& result, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("component");
  for (const char* title : {"R2X", "R2Y", "Q2", "Q2 cum", "Q2 limit"}) csv.Field(title);
  csv.Field("significant").Field("kept").EndLine();
  const std::vector<std::string> names = OPLSComponentNames(result.components);
  for (std::size_t a = 0; a < result.components.size(); ++a) {
    const OPLSComponentRecord& record = result.components[a];
    csv.Field(names[a]).Number(record.r2x).Number(record.r2y).Number(record.q2).Number(record.q2Cum);
    csv.Number(record.q2Limit).Field(record.significant ? "yes" : "no").Field(record.kept ? "yes" : "no").EndLine();
  }
  return {"components.csv", csv.Text()};
}

CsvFile VipCsv(const StoredOPLS& model, const CsvMarks& marks) {
  const std::vector<double> predictive = PredictiveImportance(model);
  const std::vector<double> orthogonal = OrthogonalImportance(model);
  CsvText csv(marks);
  csv.Field("column").Field("VIP predictive").Field("VIP orthogonal").EndLine();
  for (std::size_t k = 0; k < predictive.size(); ++k)
    csv.Field(model.xNames[k]).Number(predictive[k]).Number(orthogonal[k]).EndLine();
  return {"vip.csv", csv.Text()};
}

CsvFile SPlotCsv(const OPLSResult& result, const CsvMarks& marks) {
  const StoredOPLS& model = result.model;
  CsvText csv(marks);
  csv.Field("column");
  for (int a = 1; a <= model.Predictive(); ++a)
    csv.Field("covariance t" + std::to_string(a)).Field("correlation t" + std::to_string(a));
  csv.EndLine();
  for (std::size_t k = 0; k < model.xNames.size(); ++k) {
    csv.Field(model.xNames[k]);
    for (int a = 1; a <= model.Predictive(); ++a) {
      const ColumnWithScores related = RelateColumn(result.scaledX, static_cast<int>(k) + 1, model.opls.t[a]);
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

std::vector<CsvFile> OPLSCsvFiles(const OPLSResult& result, const CsvMarks& marks) {
  const StoredOPLS& model = result.model;
  const OPLSMatrices& opls = model.opls;
  const CrossValidatedScores& left = result.crossValidated;
  return {ComponentRecordsCsv(result, marks),
          ComponentsCsv("scores.csv", "row", model.rowNames, {{"t", opls.t}, {"to", opls.to}}, marks),
          ComponentsCsv("cross-validated-scores.csv", "row", model.rowNames, {{"t", left.t}, {"to", left.to}}, marks),
          ComponentsCsv("y-scores.csv", "row", model.rowNames, {{"u", result.u}}, marks),
          ComponentsCsv("loadings.csv", "column", model.xNames, {{"p", opls.p.back()}, {"po", opls.po}}, marks),
          ComponentsCsv("weights.csv", "column", model.xNames, {{"w", opls.w.back()}, {"wo", opls.wo}}, marks),
          ComponentsCsv("y-weights.csv", "column", model.yNames, {{"c", opls.c.back()}, {"co", opls.co}}, marks),
          SPlotCsv(result, marks),
          CoefficientsCsv(CoefficientsInOriginalUnits(model), model, marks),
          VipCsv(model, marks),
          RowsCsv(model.rowNames, HotellingT2(Together(opls.t, opls.to)),
                  DistancesToModel(model, model.Components(), result.fitted), marks),
          FitCsv(result.data, result.fitted, marks)};
}

std::vector<std::string> OPLSCsvFileNames() {
  return {"components.csv", "scores.csv",      "cross-validated-scores.csv",
          "y-scores.csv",   "loadings.csv",    "weights.csv",
          "y-weights.csv",  "s-plot.csv",      "coefficients.csv",
          "vip.csv",        "rows.csv",        "fit.csv"};
}

}  // namespace kalmia::analysis
