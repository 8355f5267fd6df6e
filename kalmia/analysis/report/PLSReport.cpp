#include "kalmia/analysis/report/PLSReport.h"

#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/report/internal/ClassReport.h"
#include "kalmia/analysis/report/internal/ComponentTables.h"
#include "kalmia/analysis/report/internal/ContributionReport.h"
#include "kalmia/analysis/report/internal/FitCsv.h"
#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/report/internal/ModelsCsv.h"
#include "kalmia/analysis/report/internal/NamedComponents.h"
#include "kalmia/analysis/report/internal/RowReport.h"
#include "kalmia/analysis/report/internal/StoredValidationReport.h"
#include "kalmia/analysis/report/internal/ValidationReport.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

using Align = TextTable::Align;

/// Whether cross-validation has judged the components, all of them or none.
bool AreJudged(const std::vector<ComponentRecord>& components) {
  return !components.empty() && components.front().IsJudged();
}

void AddShares(const YShare& share, bool isJudged, const std::string& r2, Json* json) {
  (*json)[r2] = JsonNumber(share.r2);
  (*json)[r2 + "Cum"] = JsonNumber(share.r2Cum);
  if (!isJudged) return;
  (*json)["q2"] = JsonNumber(share.q2);
  (*json)["q2Cum"] = JsonNumber(share.q2Cum);
}

std::string PerYText(const std::vector<ComponentRecord>& components, const std::vector<std::string>& yNames) {
  const bool areJudged = AreJudged(components);
  TextTable table;
  table.AddColumn("component", Align::Right);
  table.AddColumn("Y", Align::Left);
  for (const char* title : {"R2Y", "R2Y cum"}) table.AddColumn(title, Align::Right);
  if (areJudged) {
    for (const char* title : {"Q2", "Q2 cum"}) table.AddColumn(title, Align::Right);
  }
  for (std::size_t a = 0; a < components.size(); ++a) {
    for (std::size_t j = 0; j < yNames.size(); ++j) {
      const YShare& share = components[a].perY[j];
      std::vector<std::string> cells = {j == 0 ? std::to_string(a + 1) : "", yNames[j], ShareText(share.r2),
                                        ShareText(share.r2Cum)};
      if (areJudged) cells.insert(cells.end(), {ShareText(share.q2), ShareText(share.q2Cum)});
      table.AddRow(cells);
    }
  }
  return table.Text();
}

std::string Heading(const PLSResult& result) {
  return "PLS of " + Listed(result.data.yNames) + " on " + DataText(result.data, result.model);
}

/// "No component is kept", "3 components kept".
std::string KeptText(const StoredPLS& model) {
  if (model.Components() == 0) return "No component is kept";
  return Counted(static_cast<std::size_t>(model.Components()), "component") + " kept";
}

/// Behind what judged the model: what a model without components is, why there are no further ones.
std::string EndText(const PLSResult& fit) {
  const std::string mean = fit.AnyKept() ? "" : ": " + MeanModelText(fit.model);
  return mean + (fit.endedEarly.empty() ? "" : "; no further one: " + fit.endedEarly) + ".\n";
}

/// Of no model at all.
std::string NothingText(const PLSResult& fit) {
  if (fit.components.empty()) {
    return "No component is kept: none can be computed, " + fit.endedEarly + ".\nNothing is saved.\n";
  }
  const ComponentRecord& first = fit.components.front();
  return "No component is kept, " + GroupsText(fit.model) + ": Q2 of the first, " + Significant(first.y.q2, 4) +
         ", does not exceed its limit, " + Significant(first.q2Limit, 4) + ".\nNothing is saved.\n";
}

std::string RefittedText(const PLSAnalysis& analysis) {
  const StoredPLS& model = analysis.fit.model;
  return RefittedYText(RefittedModelsOf(model), model, *analysis.validation, KeptText(model), EndText(analysis.fit));
}

std::string UnrefittedText(const PLSAnalysis& analysis) {
  const PLSResult& fit = analysis.fit;
  std::string text;
  if (!fit.components.empty()) text = ComponentText(fit.components, ShownYNames(fit.model)) + "\n";
  if (!fit.IsUsable()) return text + NothingText(fit);
  const bool isJudged = analysis.recipe.method == ValidationMethod::Component;
  return text + KeptText(fit.model) + ", " + (isJudged ? GroupsText(fit.model) : "not validated") + EndText(fit) +
         "\n" + QualityText(fit.model) + ClassText(fit.model);
}

Json ValidationJson(const PLSAnalysis& analysis) {
  const int chosen = analysis.fit.model.Components();
  if (analysis.validation) return RefitJson(RefittedModelsOf(analysis.fit.model), chosen);
  return OtherValidationJson(analysis.recipe.method, analysis.fit.model, chosen);
}

std::vector<NamedImportance> ImportancesOf(const StoredPLS& model) {
  if (model.Components() == 0) return {{"", std::vector<double>(model.xNames.size(), kNotANumber)}};
  return {{"", VariableImportance(*model.pls)}};
}

/// components.csv of components that were not judged one by one, but refitted as models of 0, 1, 2, ... of them.
CsvFile NumbersCsv(const PLSAnalysis& analysis, const CsvMarks& marks) {
  const PLSResult& fit = analysis.fit;
  const RefittedModels models = RefittedModelsOf(fit.model);
  CsvText csv(marks);
  csv.Field("components").Field("Y");
  for (const char* title : {"R2X cum", "R2Y cum", "PRESS", "Q2", "RMSECV"}) csv.Field(title);
  RateTitles(models, &csv);
  csv.Field("kept").EndLine();
  for (std::size_t model = 0; model < models.entries.size(); ++model) {
    const StoredValidationEntry& entry = models.entries[model];
    const auto a = static_cast<std::size_t>(entry.components);
    const ComponentRecord* record = a == 0 || a > fit.components.size() ? nullptr : &fit.components[a - 1];
    const double none = a == 0 ? 0.0 : kNotANumber;
    const auto line = [&](const std::string& y, double r2y, double press, double q2, double rmsecv, bool isOfAll) {
      csv.Field(std::to_string(a)).Field(y).Number(record != nullptr ? record->r2xCum : none).Number(r2y);
      csv.Number(press).Number(q2).Number(rmsecv);
      RateFields(models, isOfAll ? &entry : nullptr, &csv);
      csv.Field(model == models.model ? "yes" : "no").EndLine();
    };
    line("(all)", record != nullptr ? record->y.r2Cum : none, entry.press, entry.q2, kNotANumber, /*isOfAll=*/true);
    for (std::size_t j = 0; j < fit.data.yNames.size(); ++j) {
      line(fit.data.yNames[j], record != nullptr ? record->perY[j].r2Cum : none, kNotANumber, entry.q2PerY[j],
           entry.rmsecv[j], /*isOfAll=*/false);
    }
  }
  return {"components.csv", csv.Text()};
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
      const std::string verdict = record.significant ? "yes" : "no";
      csv.Field(record.IsJudged() ? verdict : "").Field(record.kept ? "yes" : "no").EndLine();
    };
    line("(all)", record.y);
    for (std::size_t j = 0; j < record.perY.size(); ++j) line(result.data.yNames[j], record.perY[j]);
  }
  return {"components.csv", csv.Text()};
}

}  // namespace

std::string ComponentText(const std::vector<ComponentRecord>& components, const std::vector<std::string>& yNames) {
  if (components.empty()) return kNoComponent;
  const bool areJudged = AreJudged(components);
  TextTable table;
  for (const char* title : {"component", "R2X", "R2X cum", "R2Y", "R2Y cum"}) table.AddColumn(title, Align::Right);
  if (areJudged) {
    for (const char* title : {"Q2", "limit", "Q2 cum"}) table.AddColumn(title, Align::Right);
    table.AddColumn("verdict", Align::Left);
  }
  for (std::size_t a = 0; a < components.size(); ++a) {
    const ComponentRecord& component = components[a];
    std::vector<std::string> cells = {std::to_string(a + 1), ShareText(component.r2x), ShareText(component.r2xCum),
                                      ShareText(component.y.r2), ShareText(component.y.r2Cum)};
    if (areJudged) {
      cells.insert(cells.end(), {ShareText(component.y.q2), ShareText(component.q2Limit),
                                 ShareText(component.y.q2Cum), Verdict(component.significant, component.kept)});
    }
    table.AddRow(cells);
  }
  if (yNames.size() < 2) return table.Text();
  return table.Text() + "\n" + PerYText(components, yNames);
}

Json ComponentJson(const std::vector<ComponentRecord>& components, const std::vector<std::string>& yNames) {
  const bool areJudged = AreJudged(components);
  Json list = Json::array();
  for (std::size_t a = 0; a < components.size(); ++a) {
    const ComponentRecord& component = components[a];
    Json record = {{"component", a + 1}};
    if (areJudged) {
      record["kept"] = component.kept;
      record["significant"] = component.significant;
    }
    record["iterations"] = component.iterations;
    record["r2x"] = JsonNumber(component.r2x);
    record["r2xCum"] = JsonNumber(component.r2xCum);
    AddShares(component.y, areJudged, "r2y", &record);
    if (areJudged) record["q2Limit"] = JsonNumber(component.q2Limit);
    Json perY = Json::array();
    for (std::size_t j = 0; j < yNames.size(); ++j) {
      perY.push_back({{"name", yNames[j]}});
      AddShares(component.perY[j], areJudged, "r2", &perY.back());
    }
    record["y"] = perY;
    list.push_back(record);
  }
  return list;
}

std::string PLSText(const PLSAnalysis& analysis, const FitFiles& files,
                    const std::vector<RowContributions>& contributions) {
  return Heading(analysis.fit) + (analysis.validation ? RefittedText(analysis) : UnrefittedText(analysis)) +
         RowsText(analysis.fit.model) + ContributionText(contributions, analysis.fit.model.xNames) + WrittenText(files);
}

std::string PLSJson(const Table& table, const PLSAnalysis& analysis, const Notes& notes, const FitFiles& files,
                    const std::vector<RowContributions>& contributions) {
  const PLSResult& fit = analysis.fit;
  const RefitValidation* validation = analysis.validation ? &*analysis.validation : nullptr;
  // What was only described stands beside the errors of its number of components.
  const std::vector<ComponentRecord>& components = validation != nullptr ? fit.model.components : fit.components;
  Json json = JsonHeader("kalmia-pls", kRefitJsonVersion);
  AddDataJson(table, fit.data, fit.model, &json);
  json["y"] = {{"columns", fit.data.yNames}, {"missingCells", fit.data.y.GetNumMisVal()}};
  json["components"] = ComponentJson(components, fit.data.yNames);
  json["kept"] = fit.model.Components();
  json["endedEarly"] = TextOrNull(fit.endedEarly);
  json["validation"] = ValidationJson(analysis);
  json["quality"] = QualityJson(fit.model);
  json["crossValidated"] = CrossValidatedJson(validation);
  json["cvAnova"] = CvAnovaJson(fit.model);
  json["nested"] = NestedJson(validation);
  json["permutation"] = PermutationJson(fit.model, analysis.permutation);
  json["classes"] = ClassJson(fit.model);
  AddRowClassesJson(RowClassesOf(fit.model, fit.classes, validation), &json["classes"]);
  AddRowsJson(fit.model, fit.model.Components(), &json);
  json["contributions"] = ContributionJson(contributions);
  json["digest"] = DigestJson(fit.model);
  AddFilesJson(files, notes, &json);
  return JsonText(json);
}

std::vector<CsvFile> PLSCsvFiles(const PLSAnalysis& analysis, const CsvMarks& marks) {
  const PLSResult& fit = analysis.fit;
  const ModelData& data = fit.data;
  const StoredPLS& model = fit.model;
  const NCPLS& pls = *model.pls;
  const RealMatrix none;
  const std::vector<JackKnifeResult> noJackKnife;
  const RealMatrix& leftOut = analysis.validation ? analysis.validation->predicted : none;
  const auto& jackKnife = analysis.validation ? analysis.validation->coefficients : noJackKnife;
  const auto& importances = analysis.validation ? analysis.validation->importances : noJackKnife;
  const NCDataMatrix<float> wStar = model.Components() > 0 ? pls.GetWStarPrim() : NCDataMatrix<float>();
  return {analysis.validation ? NumbersCsv(analysis, marks) : QCsv(fit, marks),
          NamedComponentsCsv("scores.csv", "row", model.rowNames, {{"t", *pls.GetTprim()}}, marks),
          NamedComponentsCsv("y-scores.csv", "row", model.rowNames, {{"u", *pls.GetUprim()}}, marks),
          NamedComponentsCsv("loadings.csv", "column", model.xNames, {{"p", *pls.GetPprim()}}, marks),
          NamedComponentsCsv("weights.csv", "column", model.xNames, {{"w", *pls.GetWprim()}}, marks),
          NamedComponentsCsv("w-star.csv", "column", model.xNames, {{"w*", wStar}}, marks),
          NamedComponentsCsv("y-weights.csv", "column", model.yNames, {{"c", *pls.GetCprim()}}, marks),
          CoefficientsCsv(CoefficientsOf(model), model, marks, &jackKnife),
          VipCsv(model.xNames, ImportancesOf(model), importances, marks),
          RowsCsv(model, marks),
          FitCsv("fit.csv", data.rowNames, data.yNames, data.measuredY, fit.fitted, marks, &leftOut,
                 RowClassesOf(model, fit.classes, analysis.validation ? &*analysis.validation : nullptr))};
}

std::vector<std::string> PLSCsvFileNames() {
  return {"components.csv", "scores.csv",       "y-scores.csv", "loadings.csv", "weights.csv", "w-star.csv",
          "y-weights.csv",  "coefficients.csv", "vip.csv",      "rows.csv",     "fit.csv"};
}

}  // namespace kalmia::analysis
