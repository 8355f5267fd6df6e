#include "kalmia/analysis/report/PLSReport.h"

#include "kalmia/analysis/report/internal/ComponentTable.h"
#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

std::string Heading(const PLSResult& result) {
  return "PLS of " + Listed(result.data.yNames) + " on " + DataText(result.data, result.model);
}

std::string VerdictText(const PLSResult& result) {
  if (result.AnyKept()) {
    const std::string kept = Counted(static_cast<std::size_t>(result.model.Components()), "component") + " kept, ";
    const std::string early = result.endedEarly.empty() ? "" : "; no further one: " + result.endedEarly;
    return kept + GroupsText(result.model) + early + ".\n\n" + QualityText(result.model);
  }
  if (result.components.empty()) {
    return "No component is kept: none can be computed, " + result.endedEarly + ".\nNothing is saved.\n";
  }
  const ComponentRecord& first = result.components.front();
  return "No component is kept, " + GroupsText(result.model) + ": Q2 of the first, " + Significant(first.y.q2, 4) +
         ", does not exceed its limit, " + Significant(first.q2Limit, 4) + ".\nNothing is saved.\n";
}

}  // namespace

std::string PLSText(const PLSResult& result, const FitFiles& files) {
  std::string text = Heading(result);
  if (!result.components.empty()) text += ComponentText(result.components, result.data.yNames) + "\n";
  return text + VerdictText(result) + WrittenText(files);
}

std::string PLSJson(const CsvTable& table, const PLSResult& result, const Notes& notes, const FitFiles& files) {
  const ModelData& data = result.data;
  const StoredPLS& model = result.model;
  Json json = JsonHeader("kalmia-pls");
  AddDataJson(table, data, model, &json);
  json["y"] = {{"columns", data.yNames}, {"missingCells", data.y.GetNumMisVal()}};
  json["components"] = ComponentJson(result.components, data.yNames);
  json["kept"] = model.Components();
  json["endedEarly"] = result.endedEarly.empty() ? Json(nullptr) : Json(result.endedEarly);
  json["quality"] = QualityJson(model);
  AddFilesJson(files, notes, &json);
  return JsonText(json);
}

}  // namespace kalmia::analysis
