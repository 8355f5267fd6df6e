#pragma once

#include <vector>

#include "kalmia/analysis/model/Judgement.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// From the values of a discriminant rule, N x C, preferably of rows that were left out when it was learnt; a row's
/// class is a number below C, or -1.
KALMIA_EXPORT ClassFigures JudgeClasses(const std::vector<int>& classOfRow, const RealMatrix& values);

/// Takes the areas under the curves away from figures whose values order no rows, as those of a model without
/// components do: they are not numbers then.
KALMIA_EXPORT void WithoutAuc(ClassFigures* figures);

/// The area under the ROC curve, as Mann and Whitney's statistic: the share of pairs of a positive and a negative row
/// in which the positive one scores higher; equal scores count as half. Scores that are not numbers do not count,
/// infinite ones do. Not a number without a pair. Cost: n log n.
/// Source: J. A. Hanley, B. J. McNeil, Radiology 143 (1982) 29-36.
KALMIA_EXPORT double AreaUnderCurve(const std::vector<double>& scores, const std::vector<bool>& isPositive);

}  // namespace kalmia::analysis
