#include "kalmia/analysis/report/OPLSReport.h"

#include "kalmia/analysis/report/internal/ComponentTable.h"
#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/report/internal/OPLSTables.h"
#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

std::string OPLSText(const OPLSOutcome& outcome, const FitFiles& files) {
  const StoredOPLS& model = outcome.model;
  const std::string early = outcome.endedEarly.empty() ? "" : "; no further one: " + outcome.endedEarly;
  return "OPLS of " + Listed(outcome.data.yNames) + " on " + DataText(outcome.data, model) +
         OPLSComponentText(outcome.components) + "\n" + std::to_string(model.Predictive()) + " predictive and " +
         Counted(static_cast<std::size_t>(model.Orthogonal()), "orthogonal component") + " kept, " +
         GroupsText(model) + early + ".\n\n" + QualityText(model) + WrittenText(files);
}

std::string OPLSJson(const CsvTable& table, const OPLSOutcome& outcome, const Notes& notes, const FitFiles& files) {
  const StoredOPLS& model = outcome.model;
  Json json = JsonHeader("kalmia-opls");
  AddDataJson(table, outcome.data, model, &json);
  json["y"] = {{"columns", outcome.data.yNames}, {"missingCells", outcome.data.y.GetNumMisVal()}};
  json["components"] = OPLSComponentJson(outcome.components);
  json["predictive"] = model.Predictive();
  json["orthogonal"] = model.Orthogonal();
  json["endedEarly"] = outcome.endedEarly.empty() ? Json(nullptr) : Json(outcome.endedEarly);
  json["quality"] = QualityJson(model);
  json["savedCv"] = files.savedCv.empty() ? Json(nullptr) : Json(files.savedCv);
  AddFilesJson(files, notes, &json);
  return JsonText(json);
}

}  // namespace kalmia::analysis
