#include "kalmia/analysis/report/PCACsvFiles.h"

#include "kalmia/analysis/model/ModelDiagnostics.h"

namespace kalmia::analysis {

namespace {

CsvFile ComponentRecordsCsv(const PCAResult& result, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("component");
  for (const char* title : {"R2X", "R2X cum", "Q2", "Q2 cum", "Q2 limit"}) csv.Field(title);
  csv.Field("significant").Field("enough left").Field("kept").EndLine();
  for (std::size_t a = 0; a < result.components.size(); ++a) {
    const PCAComponentRecord& record = result.components[a];
    csv.Field(std::to_string(a + 1)).Number(record.r2x).Number(record.r2xCum);
    csv.Number(record.q2).Number(record.q2Cum).Number(record.q2Limit);
    for (const bool yes : {record.significant, record.enoughLeft, record.kept}) csv.Field(yes ? "yes" : "no");
    csv.EndLine();
  }
  return {"components.csv", csv.Text()};
}

CsvFile ColumnsCsv(const PCAResult& result, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("column").Field("R2X cum").Field("Q2 cum").EndLine();
  for (std::size_t k = 0; k < result.columnR2.size(); ++k) {
    csv.Field(result.model.xNames[k]).Number(result.columnR2[k]).Number(result.columnQ2[k]).EndLine();
  }
  return {"columns.csv", csv.Text()};
}

}  // namespace

std::vector<CsvFile> PCACsvFiles(const PCAResult& result, const CsvMarks& marks) {
  const StoredPCA& model = result.model;
  const NCDataMatrix<float>& scores = *model.pca->GetTprim();
  return {ComponentRecordsCsv(result, marks),
          ComponentsCsv("scores.csv", "row", model.rowNames, {{"t", scores}}, marks),
          ComponentsCsv("loadings.csv", "column", model.xNames, {{"p", *model.pca->GetPprim()}}, marks),
          ColumnsCsv(result, marks),
          RowsCsv(model.rowNames, HotellingT2(scores),
                  DistancesToModel(model, model.Components(), result.rows), marks)};
}

std::vector<std::string> PCACsvFileNames() {
  return {"components.csv", "scores.csv", "loadings.csv", "columns.csv", "rows.csv"};
}

}  // namespace kalmia::analysis
