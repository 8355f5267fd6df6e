#include "kalmia/analysis/report/O2PLSCsvFiles.h"

#include <limits>

#include "kalmia/analysis/report/internal/O2PLSTables.h"

namespace kalmia::analysis {

namespace {

CsvFile ComponentRecordsCsv(const O2PLSResult& result, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("component");
  for (const char* title : {"R2X", "R2Y", "Q2", "Q2 limit", "code", "kept"}) csv.Field(title);
  csv.EndLine();
  const std::vector<std::string> names = O2PLSComponentNames(result.components);
  for (std::size_t a = 0; a < result.components.size(); ++a) {
    const O2PLSComponentRecord& record = result.components[a];
    csv.Field(names[a]).Number(record.r2x).Number(record.r2y).Number(record.q2).Number(record.q2Limit);
    csv.Field(SignificanceE::GetSignificance(record.verdict)).Field(record.kept ? "yes" : "no").EndLine();
  }
  return {"components.csv", csv.Text()};
}

CsvFile SharesCsv(const O2PLSResult& result, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("block").Field("joint").Field("unique").Field("rest").Field("R2 predicted").EndLine();
  const BlockShares x = SharesOfX(result.components), y = SharesOfY(result.components);
  csv.Field("X").Number(x.joint).Number(x.unique).Number(x.Rest()).Number(result.r2x).EndLine();
  csv.Field("Y").Number(y.joint).Number(y.unique).Number(y.Rest()).Number(result.r2y).EndLine();
  return {"shares.csv", csv.Text()};
}

/// Measured and predicted values of one block.
CsvFile FittedCsv(const std::string& file, const Block& block, const std::vector<std::string>& rowNames,
                  const std::vector<RowPrediction>& fitted, const CsvMarks& marks) {
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  CsvText csv(marks);
  csv.Field("row");
  for (const std::string& name : block.names) csv.Field("measured " + name).Field("predicted " + name);
  csv.EndLine();
  for (std::size_t i = 0; i < fitted.size(); ++i) {
    csv.Field(rowNames[i]);
    for (std::size_t j = 0; j < block.names.size(); ++j) {
      csv.Cell(block.cells[static_cast<int>(i) + 1][static_cast<int>(j) + 1]);
      csv.Number(fitted[i].y.empty() ? kNone : fitted[i].y[j]);
    }
    csv.EndLine();
  }
  return {file, csv.Text()};
}

}  // namespace

std::vector<CsvFile> O2PLSCsvFiles(const O2PLSResult& result, const CsvMarks& marks) {
  const StoredO2PLS& model = result.model;
  const O2PLSMatrices& o = model.o2pls;
  return {ComponentRecordsCsv(result, marks),
          SharesCsv(result, marks),
          ComponentsCsv("x-scores.csv", "row", model.rowNames, {{"t", o.t}, {"to", o.to}}, marks),
          ComponentsCsv("y-scores.csv", "row", model.rowNames, {{"u", o.u}, {"uo", o.uo}}, marks),
          ComponentsCsv("x-loadings.csv", "column", model.xNames, {{"p", o.p}, {"po", o.po}}, marks),
          ComponentsCsv("y-loadings.csv", "column", model.yNames, {{"q", o.q}, {"qo", o.qo}}, marks),
          ComponentsCsv("x-weights.csv", "column", model.xNames, {{"w", o.w}, {"wo", o.wo}}, marks),
          ComponentsCsv("y-weights.csv", "column", model.yNames, {{"c", o.c}, {"co", o.co}}, marks),
          FittedCsv("y-fit.csv", result.data.y, model.rowNames, result.fittedY, marks),
          FittedCsv("x-fit.csv", result.data.x, model.rowNames, result.fittedX, marks)};
}

std::vector<std::string> O2PLSCsvFileNames() {
  return {"components.csv", "shares.csv",    "x-scores.csv",  "y-scores.csv", "x-loadings.csv",
          "y-loadings.csv", "x-weights.csv", "y-weights.csv", "y-fit.csv",    "x-fit.csv"};
}

}  // namespace kalmia::analysis
