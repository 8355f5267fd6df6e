#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/PCAPredict.h"
#include "kalmia/analysis/model/PLSPredict.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/text/Notes.h"

namespace kalmia::analysis {

/// Where a prediction came from and went.
struct PredictFiles {
  std::string model, table;
  std::vector<std::string> csv;
};

/// What a model says of new rows as JSON, format kalmia-predict, or kalmia-predict-o2pls or kalmia-predict-pca.
std::string PredictJson(const StoredPLS& model, const PLSPredictions& result, const PredictFiles& files,
                        const Notes& notes);
std::string PredictJson(const StoredOPLS& model, const PLSPredictions& result, const PredictFiles& files,
                        const Notes& notes);
std::string PredictJson(const StoredO2PLS& model, const PLSPredictions& result, const PredictFiles& files,
                        const Notes& notes);
std::string PredictJson(const StoredPCA& model, const PCAPredictions& result, const PredictFiles& files,
                        const Notes& notes);

}  // namespace kalmia::analysis
