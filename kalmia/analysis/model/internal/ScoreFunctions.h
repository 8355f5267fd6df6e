#pragma once

#include <vector>

#include "kalmia/analysis/model/StoredModel.h"

namespace kalmia::analysis {

/// A linear function of a row of scaled X without missing cells: one factor for each column.
using LinearFunction = std::vector<double>;

// The scores of a row as functions of the row itself: for PLS the columns of W* = W (P'W)^-1, for PCA those of
// P (P'P)^-1. They are in the order of RowFit::t; OPLS has predictive scores first.

std::vector<LinearFunction> ScoreFunctions(const StoredPLS& model);
std::vector<LinearFunction> ScoreFunctions(const StoredPCA& model);
std::vector<LinearFunction> ScoreFunctions(const StoredOPLS& model);

}  // namespace kalmia::analysis
