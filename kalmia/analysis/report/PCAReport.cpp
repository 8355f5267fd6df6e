#include "kalmia/analysis/report/PCAReport.h"

#include <cmath>

#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/report/internal/PCATables.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

std::string Outcome(const PCAOutcome& outcome) {
  if (outcome.AnyKept()) {
    const std::string early = outcome.endedEarly.empty() ? "" : "; no further one: " + outcome.endedEarly;
    return Counted(static_cast<std::size_t>(outcome.model.Components()), "component") + " kept, " +
           GroupsText(outcome.model) + early + ".\n";
  }
  if (outcome.components.empty()) {
    return "No component is kept: none can be computed, " + outcome.endedEarly + ".\nNothing is saved.\n";
  }
  const PCAComponentRecord& first = outcome.components.front();
  if (std::isnan(first.q2)) {
    return "No component is kept: cross-validation cannot judge the first.\nNothing is saved.\n";
  }
  return "No component is kept, " + GroupsText(outcome.model) + ": Q2 of the first, " + Significant(first.q2, 4) +
         ", does not exceed its limit, " + Significant(first.q2Limit, 4) + ".\nNothing is saved.\n";
}

std::string NamedText(const StoredPCA& model) {
  return "\n" + NamedComponentsText("column", model.xNames, {{"p", *model.pca->GetPprim()}}, kLinesShown) + "\n" +
         NamedComponentsText("row", model.rowNames, {{"t", *model.pca->GetTprim()}}, kLinesShown);
}

}  // namespace

std::string PCAText(const PCAOutcome& outcome, const FitFiles& files) {
  std::string text = "PCA of " + DataText(outcome.data, outcome.model);
  if (!outcome.components.empty()) text += PCAComponentText(outcome.components) + "\n";
  text += Outcome(outcome);
  if (outcome.AnyKept()) text += NamedText(outcome.model);
  return text + WrittenText(files);
}

std::string PCAJson(const CsvTable& table, const PCAOutcome& outcome, const Notes& notes, const FitFiles& files) {
  const StoredPCA& model = outcome.model;
  Json json = JsonHeader("kalmia-pca");
  AddDataJson(table, outcome.data, model, &json);
  json["components"] = PCAComponentJson(outcome.components);
  json["kept"] = model.Components();
  json["endedEarly"] = outcome.endedEarly.empty() ? Json(nullptr) : Json(outcome.endedEarly);
  json["loadings"] = Json::array();
  json["scores"] = Json::array();
  if (outcome.AnyKept()) {
    json["loadings"] = NamedComponentsJson(model.xNames, {{"p", *model.pca->GetPprim()}});
    json["scores"] = NamedComponentsJson(model.rowNames, {{"t", *model.pca->GetTprim()}});
  }
  AddFilesJson(files, notes, &json);
  return JsonText(json);
}

}  // namespace kalmia::analysis
