#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/model/ComponentRecord.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// The input of an O2PLS fit: complete scaled blocks of the same rows.
struct O2PLSTask {
  NCDataMatrix<float> x;
  NCDataMatrix<float> y;
  NCIntegralVector<int, -99> groups;    ///< cross-validation group of each row, from 0
  int rounds = 0;
  std::optional<O2PLSNumbers> numbers;  ///< nothing: those that cross-validation finds
  bool judgeComponents = true;          ///< whether given numbers are cross-validated
};

/// A fitted model with the records of its components.
struct O2PLSComponents {
  O2PLSMatrices model;  ///< empty where no joint component was found
  std::vector<O2PLSComponentRecord> components;  ///< of each kind the kept ones, then those that were refused
};

/// Cross-validates the numbers of components, or finds them, and fits the model to all rows. Numbers that it finds are
/// cut, with a note, to the dimensions that the whole blocks have apart from the other block, and to those of each
/// round; given numbers are not cut. `progress` (may be null) shows the stages.
/// Throws Stopped on a stop of the progress, BadData for numbers that the blocks cannot carry, or where nothing can be
/// computed.
O2PLSComponents ExtractO2PLS(const O2PLSTask& task, Notes* notes, NCProgress* progress = nullptr);

/// The matrices of a model of these numbers. Its unique components may be related to the other block, as in the rounds
/// of a cross-validation. Nothing where it cannot be computed, or where a component is rounding alone. Throws Stopped.
std::optional<O2PLSMatrices> TryO2PLS(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y,
                                      const O2PLSNumbers& numbers, WorkProgress* progress);

/// Estimates the missing cells of scaled blocks, each from the other. Throws BadData where they cannot be estimated.
void EstimateHoles(NCDataMatrix<float>* x, NCDataMatrix<float>* y, WorkProgress* progress);

}  // namespace kalmia::analysis
