#include "kalmia/analysis/report/PLSReport.h"

#include "kalmia/analysis/report/internal/ComponentTable.h"
#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

std::string Heading(const PLSOutcome& outcome) {
  return "PLS of " + Listed(outcome.data.yNames) + " on " + DataText(outcome.data, outcome.model);
}

std::string Outcome(const PLSOutcome& outcome) {
  if (outcome.AnyKept()) {
    const std::string kept = Counted(static_cast<std::size_t>(outcome.model.Components()), "component") + " kept, ";
    const std::string early = outcome.endedEarly.empty() ? "" : "; no further one: " + outcome.endedEarly;
    return kept + GroupsText(outcome.model) + early + ".\n\n" + QualityText(outcome.model);
  }
  if (outcome.components.empty()) {
    return "No component is kept: none can be computed, " + outcome.endedEarly + ".\nNothing is saved.\n";
  }
  const ComponentRecord& first = outcome.components.front();
  return "No component is kept, " + GroupsText(outcome.model) + ": Q2 of the first, " + Significant(first.y.q2, 4) +
         ", does not exceed its limit, " + Significant(first.q2Limit, 4) + ".\nNothing is saved.\n";
}

}  // namespace

std::string PLSText(const PLSOutcome& outcome, const FitFiles& files) {
  std::string text = Heading(outcome);
  if (!outcome.components.empty()) text += ComponentText(outcome.components, outcome.data.yNames) + "\n";
  return text + Outcome(outcome) + WrittenText(files);
}

std::string PLSJson(const CsvTable& table, const PLSOutcome& outcome, const Notes& notes, const FitFiles& files) {
  const ModelData& data = outcome.data;
  const StoredPLS& model = outcome.model;
  Json json = JsonHeader("kalmia-pls");
  AddDataJson(table, data, model, &json);
  json["y"] = {{"columns", data.yNames}, {"missingCells", data.y.GetNumMisVal()}};
  json["components"] = ComponentJson(outcome.components, data.yNames);
  json["kept"] = model.Components();
  json["endedEarly"] = outcome.endedEarly.empty() ? Json(nullptr) : Json(outcome.endedEarly);
  json["quality"] = QualityJson(model);
  AddFilesJson(files, notes, &json);
  return JsonText(json);
}

}  // namespace kalmia::analysis
