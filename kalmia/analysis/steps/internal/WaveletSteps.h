#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/steps/LearntStep.h"
#include "kalmia/analysis/table/CellRows.h"
#include "kalmia/analysis/text/WorkProgress.h"

namespace kalmia::analysis {

// The steps that work on wavelet coefficients, row by row and in double. Holes are filled along straight lines, flat at
// both ends; the row is padded to a power of two and transformed whole, as Wavelet::ForwardTransform does in single
// precision. Rows without a cell stay without one.

/// The positions, from 1 and rising, of the coefficients with the largest mean squares over the rows, as many as the
/// step says; of equal ones the first. The signals must have so many coefficients: not checked.
std::vector<int> LargestCoefficients(const Step& step, const CellRows& signals, WorkProgress* progress);

/// "wavelet_1" and so on, by their positions.
std::vector<std::string> CoefficientNames(const LearntStep& compress);

/// The kept coefficients of each row.
CellRows Compressed(const LearntStep& compress, const CellRows& signals, WorkProgress* progress);

/// Signals of `channels` channels from the kept coefficients; the others are 0. `compress` is the step that kept them.
CellRows Restored(const LearntStep& compress, int channels, const CellRows& coefficients, WorkProgress* progress);

/// Details d become sign(d) max(0, |d| - t) with t = s sqrt(2 ln n) for n channels. s is the median of |d|, divided
/// by 0.6745, over the details of the finest level whose taps all fall on present cells: filled holes and padding have
/// kinks instead of noise. With less than 4 such details s = 0, and the row does not change. Holes stay holes.
/// Source: Donoho & Johnstone (1994), Biometrika 81, 425-455.
CellRows Denoised(const Step& step, const CellRows& signals, WorkProgress* progress);

}  // namespace kalmia::analysis
