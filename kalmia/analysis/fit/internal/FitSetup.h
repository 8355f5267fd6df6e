#pragma once

#include <string>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/fit/internal/SelectData.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Notes.h"

namespace kalmia::analysis {

// What every fitting command does around the fit itself.

/// Fills the frame of a model but for the scaling and the pooled deviation.
void FillInfo(const Table& table, const FitRecipe& recipe, const ModelData& data, ModelInfo* frame);

/// When the extraction of components stops, as the recipe says. Notes a cut of their number.
FitRules RulesOf(const FitRecipe& recipe, const ModelData& data, Notes* notes);

/// Principal components take two columns. Throws BadData.
void RequireTwoColumns(const Table& table, const ModelData& data);

/// What `fit` returns. Where it fails for bad data, the failure also names what X had to do without.
template <class Fit>
auto FitOrNameLeftOut(const ModelData& data, const Fit& fit) {
  try {
    return fit();
  } catch (const BadData& failure) {
    const std::string leftOut = LeftOutText(data);
    if (leftOut.empty()) throw;
    throw BadData(std::string(failure.what()) + "; left out of X: " + leftOut, failure.WhatHelps(), failure.Place());
  }
}

}  // namespace kalmia::analysis
