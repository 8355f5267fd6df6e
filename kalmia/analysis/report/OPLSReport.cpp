#include "kalmia/analysis/report/OPLSReport.h"

#include "kalmia/analysis/report/internal/ComponentTable.h"
#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/report/internal/OPLSTables.h"
#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

std::string OPLSText(const OPLSResult& result, const FitFiles& files) {
  const StoredOPLS& model = result.model;
  const std::string early = result.endedEarly.empty() ? "" : "; no further one: " + result.endedEarly;
  return "OPLS of " + Listed(result.data.yNames) + " on " + DataText(result.data, model) +
         OPLSComponentText(result.components) + "\n" + std::to_string(model.Predictive()) + " predictive and " +
         Counted(static_cast<std::size_t>(model.Orthogonal()), "orthogonal component") + " kept, " +
         GroupsText(model) + early + ".\n\n" + QualityText(model) + WrittenText(files);
}

std::string OPLSJson(const CsvTable& table, const OPLSResult& result, const Notes& notes, const FitFiles& files) {
  const StoredOPLS& model = result.model;
  Json json = JsonHeader("kalmia-opls");
  AddDataJson(table, result.data, model, &json);
  json["y"] = {{"columns", result.data.yNames}, {"missingCells", result.data.y.GetNumMisVal()}};
  json["components"] = OPLSComponentJson(result.components);
  json["predictive"] = model.Predictive();
  json["orthogonal"] = model.Orthogonal();
  json["endedEarly"] = result.endedEarly.empty() ? Json(nullptr) : Json(result.endedEarly);
  json["quality"] = QualityJson(model);
  json["savedCv"] = files.savedCv.empty() ? Json(nullptr) : Json(files.savedCv);
  AddFilesJson(files, notes, &json);
  return JsonText(json);
}

}  // namespace kalmia::analysis
