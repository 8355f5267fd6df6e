#include "kalmia/analysis/report/OPLSReport.h"

#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/internal/OPLSDiagnostics.h"
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
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr auto kLeftOutScores = "cross-validated-scores.csv";  ///< of a validation by component alone
using Align = TextTable::Align;

/// Whether cross-validation has judged the components, all of them or none.
bool AreJudged(const std::vector<OPLSComponentRecord>& components) {
  return !components.empty() && components.front().IsJudged();
}

/// "predictive 1", "orthogonal 2": the kind of each component, and its number among its kind.
std::vector<std::string> ComponentNames(const std::vector<OPLSComponentRecord>& components) {
  std::vector<std::string> names;
  int predictive = 0;
  int orthogonal = 0;
  for (const OPLSComponentRecord& component : components) {
    names.push_back(component.orthogonal ? "orthogonal " + std::to_string(++orthogonal)
                                         : "predictive " + std::to_string(++predictive));
  }
  return names;
}

CsvFile ComponentRecordsCsv(const OPLSResult& result, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("component");
  for (const char* title : {"R2X", "R2Y", "Q2", "Q2 cum", "Q2 limit"}) csv.Field(title);
  csv.Field("significant").Field("kept").EndLine();
  const std::vector<std::string> names = ComponentNames(result.components);
  for (std::size_t a = 0; a < result.components.size(); ++a) {
    const OPLSComponentRecord& record = result.components[a];
    csv.Field(names[a]).Number(record.r2x).Number(record.r2y).Number(record.q2).Number(record.q2Cum);
    const std::string verdict = record.significant ? "yes" : "no";
    csv.Number(record.q2Limit).Field(record.IsJudged() ? verdict : "").Field(record.kept ? "yes" : "no").EndLine();
  }
  return {"components.csv", csv.Text()};
}

std::vector<NamedImportance> ImportancesOf(const StoredOPLS& model) {
  const std::vector<double> none(model.xNames.size(), kNotANumber);
  const bool isMean = model.Components() == 0;
  return {{"predictive", isMean ? none : PredictiveImportance(model)},
          {"orthogonal", isMean ? none : OrthogonalImportance(model)}};
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

std::string Heading(const OPLSResult& fit) {
  return "OPLS of " + Listed(fit.data.yNames) + " on " + DataText(fit.data, fit.model);
}

/// "No component is kept", "1 predictive and 2 orthogonal components kept".
std::string KeptText(const StoredOPLS& model) {
  if (model.Components() == 0) return "No component is kept";
  return std::to_string(model.Predictive()) + " predictive and " +
         Counted(static_cast<std::size_t>(model.Orthogonal()), "orthogonal component") + " kept";
}

/// Behind what judged the model: what a model without components is, why there are no further ones.
std::string EndText(const OPLSResult& fit) {
  const std::string mean = fit.model.Components() > 0 ? "" : ": " + MeanModelText(fit.model);
  return mean + (fit.endedEarly.empty() ? "" : "; no further one: " + fit.endedEarly) + ".\n";
}

std::string RefittedText(const OPLSAnalysis& analysis) {
  const StoredOPLS& model = analysis.fit.model;
  return RefittedYText(RefittedModelsOf(model), model, *analysis.validation, KeptText(model), EndText(analysis.fit));
}

std::string UnrefittedText(const OPLSAnalysis& analysis) {
  const OPLSResult& fit = analysis.fit;
  const bool isJudged = analysis.recipe.method == ValidationMethod::Component;
  return (fit.components.empty() ? "" : ComponentText(fit.components) + "\n") + KeptText(fit.model) + ", " +
         (isJudged ? GroupsText(fit.model) : "not validated") + EndText(fit) + "\n" + QualityText(fit.model) +
         ClassText(fit.model);
}

Json ValidationJson(const OPLSAnalysis& analysis) {
  const int chosen = analysis.fit.model.Components();
  if (analysis.validation) return RefitJson(RefittedModelsOf(analysis.fit.model), chosen);
  return OtherValidationJson(analysis.recipe.method, analysis.fit.model, chosen);
}

/// Of the model with all orthogonal components; no rows without components.
NCDataMatrix<float> LastBlock(const std::vector<NCDataMatrix<float>>& blocks) {
  return blocks.empty() ? NCDataMatrix<float>() : blocks.back();
}

}  // namespace

std::string ComponentText(const std::vector<OPLSComponentRecord>& components) {
  if (components.empty()) return kNoComponent;
  TextTable table;
  const bool areJudged = AreJudged(components);
  table.AddColumn("component", Align::Left);
  for (const char* title : {"R2X", "R2Y"}) table.AddColumn(title, Align::Right);
  if (areJudged) {
    for (const char* title : {"Q2", "limit", "Q2 cum"}) table.AddColumn(title, Align::Right);
    table.AddColumn("verdict", Align::Left);
  }
  const std::vector<std::string> names = ComponentNames(components);
  for (std::size_t a = 0; a < components.size(); ++a) {
    const OPLSComponentRecord& component = components[a];
    std::vector<std::string> cells = {names[a], ShareText(component.r2x), ShareText(component.r2y)};
    if (areJudged) {
      cells.insert(cells.end(), {ShareText(component.q2), ShareText(component.q2Limit), ShareText(component.q2Cum),
                                 Verdict(component.significant, component.kept)});
    }
    table.AddRow(cells);
  }
  return table.Text();
}

Json ComponentJson(const std::vector<OPLSComponentRecord>& components) {
  const bool areJudged = AreJudged(components);
  Json list = Json::array();
  for (std::size_t a = 0; a < components.size(); ++a) {
    const OPLSComponentRecord& component = components[a];
    Json record = {{"component", a + 1}, {"kind", component.orthogonal ? "orthogonal" : "predictive"}};
    if (areJudged) {
      record["kept"] = component.kept;
      record["significant"] = component.significant;
    }
    record["r2x"] = JsonNumber(component.r2x);
    record["r2y"] = JsonNumber(component.r2y);
    if (areJudged) {
      record["q2"] = JsonNumber(component.q2);
      record["q2Cum"] = JsonNumber(component.q2Cum);
      record["q2Limit"] = JsonNumber(component.q2Limit);
    }
    list.push_back(record);
  }
  return list;
}

std::string OPLSText(const OPLSAnalysis& analysis, const FitFiles& files,
                     const std::vector<RowContributions>& contributions) {
  return Heading(analysis.fit) + (analysis.validation ? RefittedText(analysis) : UnrefittedText(analysis)) +
         RowsText(analysis.fit.model) + ContributionText(contributions, analysis.fit.model.xNames) + WrittenText(files);
}

std::string OPLSJson(const Table& table, const OPLSAnalysis& analysis, const Notes& notes, const FitFiles& files,
                     const std::vector<RowContributions>& contributions) {
  const OPLSResult& fit = analysis.fit;
  const StoredOPLS& model = fit.model;
  const RefitValidation* validation = analysis.validation ? &*analysis.validation : nullptr;
  Json json = JsonHeader("kalmia-opls", kRefitJsonVersion);
  AddDataJson(table, fit.data, model, &json);
  json["y"] = {{"columns", fit.data.yNames}, {"missingCells", fit.data.y.GetNumMisVal()}};
  json["components"] = ComponentJson(fit.components);
  json["predictive"] = model.Predictive();
  json["orthogonal"] = model.Orthogonal();
  json["endedEarly"] = TextOrNull(fit.endedEarly);
  json["validation"] = ValidationJson(analysis);
  json["quality"] = QualityJson(model);
  json["crossValidated"] = CrossValidatedJson(validation);
  json["cvAnova"] = CvAnovaJson(fit.model);
  json["nested"] = NestedJson(validation);
  json["permutation"] = PermutationJson(fit.model, analysis.permutation);
  json["classes"] = ClassJson(fit.model);
  AddRowClassesJson(RowClassesOf(fit.model, fit.classes, validation), &json["classes"]);
  json["savedCv"] = TextOrNull(files.savedCv);
  AddRowsJson(fit.model, fit.model.Components(), &json);
  json["contributions"] = ContributionJson(contributions);
  json["digest"] = DigestJson(fit.model);
  AddFilesJson(files, notes, &json);
  return JsonText(json);
}

std::vector<CsvFile> OPLSCsvFiles(const OPLSAnalysis& analysis, const CsvMarks& marks) {
  const OPLSResult& fit = analysis.fit;
  const ModelData& data = fit.data;
  const StoredOPLS& model = fit.model;
  const OPLSMatrices& opls = model.opls;
  const RealMatrix none;
  const std::vector<JackKnifeResult> noJackKnife;
  const RealMatrix& leftOut = analysis.validation ? analysis.validation->predicted : none;
  const auto& jackKnife = analysis.validation ? analysis.validation->coefficients : noJackKnife;
  const auto& importances = analysis.validation ? analysis.validation->importances : noJackKnife;
  std::vector<CsvFile> csvFiles = {
      analysis.validation ? ModelsCsv(RefittedModelsOf(analysis.fit.model), marks) : ComponentRecordsCsv(fit, marks),
      NamedComponentsCsv("scores.csv", "row", model.rowNames, {{"t", opls.t}, {"to", opls.to}}, marks),
      NamedComponentsCsv("y-scores.csv", "row", model.rowNames, {{"u", fit.u}}, marks),
      NamedComponentsCsv("loadings.csv", "column", model.xNames, {{"p", LastBlock(opls.p)}, {"po", opls.po}}, marks),
      NamedComponentsCsv("weights.csv", "column", model.xNames, {{"w", LastBlock(opls.w)}, {"wo", opls.wo}}, marks),
      NamedComponentsCsv("y-weights.csv", "column", model.yNames, {{"c", LastBlock(opls.c)}, {"co", opls.co}}, marks),
      SPlotCsv(fit, marks),
      CoefficientsCsv(CoefficientsOf(model), model, marks, &jackKnife),
      VipCsv(model.xNames, ImportancesOf(model), importances, marks),
      RowsCsv(model, marks),
      FitCsv("fit.csv", data.rowNames, data.yNames, data.measuredY, fit.fitted, marks, &leftOut,
                 RowClassesOf(model, fit.classes, analysis.validation ? &*analysis.validation : nullptr))};
  if (analysis.recipe.method != ValidationMethod::Component) return csvFiles;
  const CrossValidatedScores& left = fit.crossValidated;
  csvFiles.push_back(
      NamedComponentsCsv(kLeftOutScores, "row", model.rowNames, {{"t", left.t}, {"to", left.to}}, marks));
  return csvFiles;
}

std::vector<std::string> OPLSCsvFileNames() {
  return {"components.csv", "scores.csv",      "y-scores.csv", "loadings.csv", "weights.csv", "y-weights.csv",
          "s-plot.csv",     "coefficients.csv", "vip.csv",     "rows.csv",     "fit.csv",     kLeftOutScores};
}

}  // namespace kalmia::analysis
