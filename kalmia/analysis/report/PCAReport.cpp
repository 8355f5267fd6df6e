#include "kalmia/analysis/report/PCAReport.h"

#include <cmath>

#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/report/internal/ComponentTables.h"
#include "kalmia/analysis/report/internal/FitCsv.h"
#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/report/internal/NamedComponents.h"
#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

using Align = TextTable::Align;

std::string VerdictText(const PCAResult& result) {
  if (result.AnyKept()) {
    const std::string early = result.endedEarly.empty() ? "" : "; no further one: " + result.endedEarly;
    return Counted(static_cast<std::size_t>(result.model.Components()), "component") + " kept, " +
           GroupsText(result.model) + early + ".\n";
  }
  if (result.components.empty()) {
    return "No component is kept: none can be computed, " + result.endedEarly + ".\nNothing is saved.\n";
  }
  const PCAComponentRecord& first = result.components.front();
  if (std::isnan(first.q2)) {
    return "No component is kept: cross-validation cannot judge the first.\nNothing is saved.\n";
  }
  return "No component is kept, " + GroupsText(result.model) + ": Q2 of the first, " + Significant(first.q2, 4) +
         ", does not exceed its limit, " + Significant(first.q2Limit, 4) + ".\nNothing is saved.\n";
}

std::string NamedText(const StoredPCA& model) {
  return "\n" + NamedComponentsText("column", model.xNames, {{"p", *model.pca->GetPprim()}}) + "\n" +
         NamedComponentsText("row", model.rowNames, {{"t", *model.pca->GetTprim()}});
}

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

std::string ComponentText(const std::vector<PCAComponentRecord>& components) {
  TextTable table;
  for (const char* title : {"component", "R2X", "R2X cum", "Q2", "limit", "Q2 cum"}) {
    table.AddColumn(title, Align::Right);
  }
  table.AddColumn("enough left", Align::Left);
  table.AddColumn("cross-validation", Align::Left);
  for (std::size_t a = 0; a < components.size(); ++a) {
    const PCAComponentRecord& component = components[a];
    table.AddRow({std::to_string(a + 1), ShareText(component.r2x), ShareText(component.r2xCum), ShareText(component.q2),
                  ShareText(component.q2Limit), ShareText(component.q2Cum), component.enoughLeft ? "yes" : "no",
                  Verdict(component.significant, component.kept)});
  }
  return table.Text();
}

Json ComponentJson(const std::vector<PCAComponentRecord>& components) {
  Json list = Json::array();
  for (std::size_t a = 0; a < components.size(); ++a) {
    const PCAComponentRecord& component = components[a];
    list.push_back({{"component", a + 1},
                    {"kept", component.kept},
                    {"significant", component.significant},
                    {"enoughLeft", component.enoughLeft},
                    {"iterations", component.iterations},
                    {"r2x", JsonNumber(component.r2x)},
                    {"r2xCum", JsonNumber(component.r2xCum)},
                    {"q2", JsonNumber(component.q2)},
                    {"q2Cum", JsonNumber(component.q2Cum)},
                    {"q2Limit", JsonNumber(component.q2Limit)}});
  }
  return list;
}

std::string PCAText(const PCAResult& result, const FitFiles& files) {
  std::string text = "PCA of " + DataText(result.data, result.model);
  if (!result.components.empty()) text += ComponentText(result.components) + "\n";
  text += VerdictText(result);
  if (result.AnyKept()) text += NamedText(result.model);
  return text + WrittenText(files);
}

std::string PCAJson(const Table& table, const PCAResult& result, const Notes& notes, const FitFiles& files) {
  const StoredPCA& model = result.model;
  Json json = JsonHeader("kalmia-pca");
  AddDataJson(table, result.data, model, &json);
  AddGroupsJson(model, &json);
  json["components"] = ComponentJson(result.components);
  json["kept"] = model.Components();
  json["endedEarly"] = TextOrNull(result.endedEarly);
  json["loadings"] = Json::array();
  json["scores"] = Json::array();
  if (result.AnyKept()) {
    json["loadings"] = NamedComponentsJson(model.xNames, {{"p", *model.pca->GetPprim()}});
    json["scores"] = NamedComponentsJson(model.rowNames, {{"t", *model.pca->GetTprim()}});
  }
  AddFilesJson(files, notes, &json);
  return JsonText(json);
}

std::vector<CsvFile> PCACsvFiles(const PCAResult& result, const CsvMarks& marks) {
  const StoredPCA& model = result.model;
  const NCDataMatrix<float>& scores = *model.pca->GetTprim();
  return {ComponentRecordsCsv(result, marks),
          NamedComponentsCsv("scores.csv", "row", model.rowNames, {{"t", scores}}, marks),
          NamedComponentsCsv("loadings.csv", "column", model.xNames, {{"p", *model.pca->GetPprim()}}, marks),
          ColumnsCsv(result, marks),
          RowsCsv(model.rowNames, HotellingT2(scores),
                  DistancesToModel(model, model.Components(), result.rows), marks)};
}

std::vector<std::string> PCACsvFileNames() {
  return {"components.csv", "scores.csv", "loadings.csv", "columns.csv", "rows.csv"};
}

}  // namespace kalmia::analysis
