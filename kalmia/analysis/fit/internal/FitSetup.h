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

// Steps that every fit takes before and after the extraction of components.

/// Writes down what a model was fitted to: the table, its columns and rows, and the groups of a fit that has them.
void FillInfo(const Table& table, const XRecipe& recipe, const ModelData& data, ModelInfo* frame);
void FillInfo(const Table& table, const FitRecipe& recipe, const ModelData& data, ModelInfo* frame);

/// The rules that the recipe sets. Notes a cut of the number of components.
FitRules RulesOf(const FitRecipe& recipe, const ModelData& data, Notes* notes);

/// Throws BadData unless X has two columns, which principal components need.
void RequireTwoColumns(const Table& table, const ModelData& data);

/// Returns the result of `fit`. Its BadData is thrown again with the columns that were left out of X.
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
