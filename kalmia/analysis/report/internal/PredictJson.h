#pragma once

#include "kalmia/analysis/model/PCAPredictions.h"
#include "kalmia/analysis/model/PLSPredictions.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/text/Json.h"

namespace kalmia::analysis {

// What the JSON of predictions has for each kind of model: the name of its format, and fields of its own.

constexpr auto PredictFormat(const YModelInfo& /*model*/) { return "kalmia-predict"; }
constexpr auto PredictFormat(const StoredO2PLS& /*model*/) { return "kalmia-predict-o2pls"; }
void AddPredictJson(const YModelInfo& model, const PLSPredictions& result, Json* json);
void AddPredictJson(const StoredO2PLS& model, const PLSPredictions& result, Json* json);

constexpr auto PredictFormat(const StoredPCA& /*model*/) { return "kalmia-predict-pca"; }
void AddPredictJson(const StoredPCA& model, const PCAPredictions& result, Json* json);

}  // namespace kalmia::analysis
