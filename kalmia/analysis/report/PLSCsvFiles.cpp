#include "kalmia/analysis/report/PLSCsvFiles.h"

#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/report/internal/FitCsv.h"

namespace kalmia::analysis {

namespace {

CsvFile VipCsv(const StoredPLS& model, const CsvMarks& marks) {
  const std::vector<double> vip = VariableImportance(*model.pls);
  CsvText csv(marks);
  csv.Field("column").Field("VIP").EndLine();
  for (std::size_t k = 0; k < vip.size(); ++k) csv.Field(model.xNames[k]).Number(vip[k]).EndLine();
  return {"vip.csv", csv.Text()};
}

CsvFile QCsv(const PLSResult& result, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("component").Field("Y");
  for (const char* title : {"R2X", "R2X cum", "R2Y", "R2Y cum", "Q2", "Q2 cum", "Q2 limit"}) csv.Field(title);
  csv.Field("significant").Field("kept").EndLine();
  for (std::size_t a = 0; a < result.components.size(); ++a) {
    const ComponentRecord& record = result.components[a];
    const auto line = [&](const std::string& y, const YShare& share) {
      csv.Field(std::to_string(a + 1)).Field(y).Number(record.r2x).Number(record.r2xCum).Number(share.r2);
      csv.Number(share.r2Cum).Number(share.q2).Number(share.q2Cum).Number(record.q2Limit);
      csv.Field(record.significant ? "yes" : "no").Field(record.kept ? "yes" : "no").EndLine();
    };
    line("(all)", record.y);
    for (std::size_t j = 0; j < record.perY.size(); ++j) line(result.data.yNames[j], record.perY[j]);
  }
  return {"components.csv", csv.Text()};
}

}  // namespace

std::vector<CsvFile> PLSCsvFiles(const PLSResult& result, const CsvMarks& marks) {
  const StoredPLS& model = result.model;
  const NCPLS& pls = *model.pls;
  return {QCsv(result, marks),
          ComponentsCsv("scores.csv", "row", model.rowNames, {{"t", *pls.GetTprim()}}, marks),
          ComponentsCsv("y-scores.csv", "row", model.rowNames, {{"u", *pls.GetUprim()}}, marks),
          ComponentsCsv("loadings.csv", "column", model.xNames, {{"p", *pls.GetPprim()}}, marks),
          ComponentsCsv("weights.csv", "column", model.xNames, {{"w", *pls.GetWprim()}}, marks),
          ComponentsCsv("w-star.csv", "column", model.xNames, {{"w*", pls.GetWStarPrim()}}, marks),
          ComponentsCsv("y-weights.csv", "column", model.yNames, {{"c", *pls.GetCprim()}}, marks),
          CoefficientsCsv(CoefficientsInOriginalUnits(pls, *model.xScale, *model.yScale), model, marks),
          VipCsv(model, marks),
          RowsCsv(model.rowNames, HotellingT2(*pls.GetTprim()),
                  DistancesToModel(model, model.Components(), result.fitted), marks),
          FitCsv(result.data, result.fitted, marks)};
}

std::vector<std::string> PLSCsvFileNames() {
  return {"components.csv", "scores.csv",       "y-scores.csv", "loadings.csv", "weights.csv", "w-star.csv",
          "y-weights.csv",  "coefficients.csv", "vip.csv",      "rows.csv",     "fit.csv"};
}

}  // namespace kalmia::analysis
