#include "kalmia/analysis/report/PredictReport.h"

#include "kalmia/analysis/report/internal/PredictJson.h"

namespace kalmia::analysis {

namespace {

template <class Model, class Result>
std::string JsonOf(const Model& model, const Result& result, const PredictFiles& files, const Notes& notes) {
  Json json = JsonHeader(PredictFormat(model));
  json["model"] = files.model;
  json["table"] = files.table;
  json["components"] = model.Components();
  json["missingColumns"] = result.rows.missingColumns;
  AddPredictJson(model, result, &json);
  json["csvFiles"] = files.csv;
  json["notes"] = notes.Lines();
  return JsonText(json);
}

}  // namespace

std::string PredictJson(const StoredPLS& model, const PLSPredictions& result, const PredictFiles& files,
                        const Notes& notes) {
  return JsonOf(model, result, files, notes);
}

std::string PredictJson(const StoredOPLS& model, const PLSPredictions& result, const PredictFiles& files,
                        const Notes& notes) {
  return JsonOf(model, result, files, notes);
}

std::string PredictJson(const StoredO2PLS& model, const PLSPredictions& result, const PredictFiles& files,
                        const Notes& notes) {
  return JsonOf(model, result, files, notes);
}

std::string PredictJson(const StoredPCA& model, const PCAPredictions& result, const PredictFiles& files,
                        const Notes& notes) {
  return JsonOf(model, result, files, notes);
}

}  // namespace kalmia::analysis
