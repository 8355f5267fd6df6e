#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "kalmia/analysis/model/Judgement.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// With SS the sum of squares of Y about its mean and PRESS that of the errors, both in the units of Y and over the N
/// rows that have a measured value and an error,
///
///   F = ((SS - PRESS) / (2 A)) / (PRESS / (N - 1 - 2 A)),
///
/// where A counts all components, predictive and orthogonal. PRESS above SS gives an F below 0 and p = 1. Nothing for
/// A < 1, for N - 1 - 2 A < 1 and for a Y without variance. The squared errors have to come from models that learnt
/// nothing of the row, its scaling included; of fitted values any noise is significant. The test is conservative: of
/// noise it finds next to nothing. With several Y columns each is judged alone, by a model of all: a rule of thumb.
/// `y` and `squaredErrors` have a cell for each row; not a number where there is none.
/// Source: L. Eriksson, J. Trygg, S. Wold, J. Chemometrics 22 (2008) 594-600.
KALMIA_EXPORT std::optional<CvAnova> ComputeCvAnova(const std::vector<double>& y,
                                                    const std::vector<double>& squaredErrors, int components);

}  // namespace kalmia::analysis
