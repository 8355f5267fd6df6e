#pragma once

#include <vector>

#include "kalmia/analysis/fit/ModelData.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/StoredModel.h"

namespace kalmia::analysis {

/// Fills in the pooled deviation and the quality of the Y columns, from the predictions of the training rows (`fitted`)
/// and the cross-validated residuals of the scaled Y.
void JudgeModel(const ModelData& data, const std::vector<RowPrediction>& fitted, int components,
                const NCDataMatrix<float>& crossValidatedResiduals, YModelInfo* model);

/// Leaves a model without a pooled deviation, and so without distances, whose components describe X but for roundings
/// (kRoundings). `r2x` is their share of X.
void DropRoundings(double r2x, ModelInfo* model);

}  // namespace kalmia::analysis
