#include "kalmia/analysis/report/PCAReport.h"

#include <cmath>

#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/report/internal/PCATables.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

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
  return "\n" + NamedComponentsText("column", model.xNames, {{"p", *model.pca->GetPprim()}}, kLinesShown) + "\n" +
         NamedComponentsText("row", model.rowNames, {{"t", *model.pca->GetTprim()}}, kLinesShown);
}

}  // namespace

std::string PCAText(const PCAResult& result, const FitFiles& files) {
  std::string text = "PCA of " + DataText(result.data, result.model);
  if (!result.components.empty()) text += PCAComponentText(result.components) + "\n";
  text += VerdictText(result);
  if (result.AnyKept()) text += NamedText(result.model);
  return text + WrittenText(files);
}

std::string PCAJson(const CsvTable& table, const PCAResult& result, const Notes& notes, const FitFiles& files) {
  const StoredPCA& model = result.model;
  Json json = JsonHeader("kalmia-pca");
  AddDataJson(table, result.data, model, &json);
  json["components"] = PCAComponentJson(result.components);
  json["kept"] = model.Components();
  json["endedEarly"] = result.endedEarly.empty() ? Json(nullptr) : Json(result.endedEarly);
  json["loadings"] = Json::array();
  json["scores"] = Json::array();
  if (result.AnyKept()) {
    json["loadings"] = NamedComponentsJson(model.xNames, {{"p", *model.pca->GetPprim()}});
    json["scores"] = NamedComponentsJson(model.rowNames, {{"t", *model.pca->GetTprim()}});
  }
  AddFilesJson(files, notes, &json);
  return JsonText(json);
}

}  // namespace kalmia::analysis
