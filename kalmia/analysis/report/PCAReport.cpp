#include "kalmia/analysis/report/PCAReport.h"

#include <cmath>

#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/report/internal/ComponentTables.h"
#include "kalmia/analysis/report/internal/ContributionReport.h"
#include "kalmia/analysis/report/internal/FitCsv.h"
#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/report/internal/ModelsCsv.h"
#include "kalmia/analysis/report/internal/NamedComponents.h"
#include "kalmia/analysis/report/internal/RowReport.h"
#include "kalmia/analysis/report/internal/ValidationReport.h"
#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

using Align = TextTable::Align;

/// Whether cross-validation has judged the components, all of them or none.
bool AreJudged(const std::vector<PCAComponentRecord>& components) {
  return !components.empty() && components.front().IsJudged();
}

/// "No component is kept", "3 components kept".
std::string KeptText(const PCAResult& fit) {
  if (!fit.AnyKept()) return "No component is kept";
  return Counted(static_cast<std::size_t>(fit.model.Components()), "component") + " kept";
}

/// Behind what judged the model: what a model without components is, why there are no further ones.
std::string EndText(const PCAResult& fit) {
  const std::string mean = fit.AnyKept() ? "" : ": the model is the mean of each column";
  return mean + (fit.endedEarly.empty() ? "" : "; no further one: " + fit.endedEarly) + ".\n";
}

/// Of no model at all.
std::string NothingText(const PCAResult& fit) {
  if (fit.components.empty()) {
    return "No component is kept: none can be computed, " + fit.endedEarly + ".\nNothing is saved.\n";
  }
  const PCAComponentRecord& first = fit.components.front();
  if (std::isnan(first.q2)) {
    return "No component is kept: cross-validation cannot judge the first.\nNothing is saved.\n";
  }
  return "No component is kept, " + GroupsText(fit.model) + ": Q2 of the first, " + Significant(first.q2, 4) +
         ", does not exceed its limit, " + Significant(first.q2Limit, 4) + ".\nNothing is saved.\n";
}

std::string RefittedText(const PCAAnalysis& analysis) {
  const RefittedModels models = RefittedModelsOf(analysis.fit.model);
  return RefitText(models) + "\n" + KeptText(analysis.fit) + ", " + JudgedText(models, " and as many of columns") +
         EndText(analysis.fit) +
         ChoiceText(models, analysis.validation->choice, analysis.validation->whyNoneJudged);
}

std::string UnrefittedText(const PCAAnalysis& analysis) {
  const PCAResult& fit = analysis.fit;
  std::string text;
  if (!fit.components.empty()) text = ComponentText(fit.components) + "\n";
  if (!fit.IsUsable()) return text + NothingText(fit);
  const bool isJudged = analysis.recipe.method == ValidationMethod::Component;
  return text + KeptText(fit) + ", " + (isJudged ? GroupsText(fit.model) : "not validated") + EndText(fit);
}

Json ValidationJson(const PCAAnalysis& analysis) {
  const int chosen = analysis.fit.model.Components();
  if (analysis.validation) return RefitJson(RefittedModelsOf(analysis.fit.model), chosen);
  return OtherValidationJson(analysis.recipe.method, analysis.fit.model, chosen);
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
    const std::string verdict = record.significant ? "yes" : "no";
    csv.Field(record.IsJudged() ? verdict : "");
    for (const bool yes : {record.enoughLeft, record.kept}) csv.Field(yes ? "yes" : "no");
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
  if (components.empty()) return kNoComponent;
  TextTable table;
  const bool areJudged = AreJudged(components);
  for (const char* title : {"component", "R2X", "R2X cum"}) table.AddColumn(title, Align::Right);
  if (areJudged) {
    for (const char* title : {"Q2", "limit", "Q2 cum"}) table.AddColumn(title, Align::Right);
  }
  table.AddColumn("enough left", Align::Left);
  if (areJudged) table.AddColumn("cross-validation", Align::Left);
  for (std::size_t a = 0; a < components.size(); ++a) {
    const PCAComponentRecord& component = components[a];
    std::vector<std::string> cells = {std::to_string(a + 1), ShareText(component.r2x), ShareText(component.r2xCum)};
    if (areJudged) {
      cells.insert(cells.end(),
                   {ShareText(component.q2), ShareText(component.q2Limit), ShareText(component.q2Cum)});
    }
    cells.push_back(component.enoughLeft ? "yes" : "no");
    if (areJudged) cells.push_back(Verdict(component.significant, component.kept));
    table.AddRow(cells);
  }
  return table.Text();
}

Json ComponentJson(const std::vector<PCAComponentRecord>& components) {
  const bool areJudged = AreJudged(components);
  Json list = Json::array();
  for (std::size_t a = 0; a < components.size(); ++a) {
    const PCAComponentRecord& component = components[a];
    Json record = {{"component", a + 1}};
    if (areJudged) {
      record["kept"] = component.kept;
      record["significant"] = component.significant;
    }
    record["enoughLeft"] = component.enoughLeft;
    record["iterations"] = component.iterations;
    record["r2x"] = JsonNumber(component.r2x);
    record["r2xCum"] = JsonNumber(component.r2xCum);
    if (areJudged) {
      record["q2"] = JsonNumber(component.q2);
      record["q2Cum"] = JsonNumber(component.q2Cum);
      record["q2Limit"] = JsonNumber(component.q2Limit);
    }
    list.push_back(record);
  }
  return list;
}

std::string PCAText(const PCAAnalysis& analysis, const FitFiles& files,
                    const std::vector<RowContributions>& contributions) {
  const PCAResult& fit = analysis.fit;
  return "PCA of " + DataText(fit.data, fit.model) +
         (analysis.validation ? RefittedText(analysis) : UnrefittedText(analysis)) +
         (fit.AnyKept() ? NamedText(fit.model) : "") + RowsText(fit.model) +
         ContributionText(contributions, fit.model.xNames) + WrittenText(files);
}

std::string PCAJson(const Table& table, const PCAAnalysis& analysis, const Notes& notes, const FitFiles& files,
                    const std::vector<RowContributions>& contributions) {
  const PCAResult& fit = analysis.fit;
  const StoredPCA& model = fit.model;
  Json json = JsonHeader("kalmia-pca", kRefitJsonVersion);
  AddDataJson(table, fit.data, model, &json);
  // What was only described stands beside the errors of its number of components.
  json["components"] = ComponentJson(analysis.validation ? model.components : fit.components);
  json["kept"] = model.Components();
  json["endedEarly"] = TextOrNull(fit.endedEarly);
  json["validation"] = ValidationJson(analysis);
  json["loadings"] = Json::array();
  json["scores"] = Json::array();
  if (fit.AnyKept()) {
    json["loadings"] = NamedComponentsJson(model.xNames, {{"p", *model.pca->GetPprim()}});
    json["scores"] = NamedComponentsJson(model.rowNames, {{"t", *model.pca->GetTprim()}});
  }
  AddRowsJson(fit.model, fit.model.Components(), &json);
  json["contributions"] = ContributionJson(contributions);
  json["digest"] = DigestJson(fit.model);
  AddFilesJson(files, notes, &json);
  return JsonText(json);
}

std::vector<CsvFile> PCACsvFiles(const PCAAnalysis& analysis, const CsvMarks& marks) {
  const PCAResult& fit = analysis.fit;
  const StoredPCA& model = fit.model;
  const NCDataMatrix<float>& scores = *model.pca->GetTprim();
  const bool isRefitted = analysis.validation.has_value();
  return {isRefitted ? ModelsCsv(RefittedModelsOf(model), marks) : ComponentRecordsCsv(fit, marks),
          NamedComponentsCsv("scores.csv", "row", model.rowNames, {{"t", scores}}, marks),
          NamedComponentsCsv("loadings.csv", "column", model.xNames, {{"p", *model.pca->GetPprim()}}, marks),
          ColumnsCsv(fit, marks),
          RowsCsv(model, marks)};
}

std::vector<std::string> PCACsvFileNames() {
  return {"components.csv", "scores.csv", "loadings.csv", "columns.csv", "rows.csv"};
}

}  // namespace kalmia::analysis
