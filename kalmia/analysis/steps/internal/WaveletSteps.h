#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/steps/LearntStep.h"
#include "kalmia/analysis/table/CellRows.h"
#include "kalmia/analysis/text/WorkProgress.h"

namespace kalmia::analysis {

// The steps of preprocessing that work on wavelet coefficients, row by row and in double: holes are filled along
// straight lines, flat at both ends, the row is padded to P cells, a power of two, and transformed whole, as
// Wavelet::ForwardTransform does it in single precision. Rows without a cell come out without one.

/// The positions, from 1 and rising, of the coefficients of largest mean square over the rows, as many as the step
/// says; of equal ones the first. Not checked: that there are so many.
std::vector<int> LargestCoefficients(const Step& step, const CellRows& signals, WorkProgress* progress);

/// "wavelet_1" and so on, by their positions.
std::vector<std::string> CoefficientNames(const LearntStep& compress);

/// Each row by its kept coefficients alone.
CellRows Compressed(const LearntStep& compress, const CellRows& signals, WorkProgress* progress);

/// Signals of so many channels again: coefficients that were not kept are 0. `compress` is the step that made them.
CellRows Restored(const LearntStep& compress, int channels, const CellRows& coefficients,
                             WorkProgress* progress);

/// Details d become sign(d) max(0, |d| - t) with t = s sqrt(2 ln n) for n channels. s is the median of |d|, divided
/// by 0.6745, over those of the finest level whose taps all fall on cells of the row: where holes are filled or the row
/// is padded there is no noise, but a kink. With less than 4 such details the row stays as it is, s = 0. Holes stay
/// holes.
/// Source: Donoho & Johnstone (1994), Biometrika 81, 425-455.
CellRows Denoised(const Step& step, const CellRows& signals, WorkProgress* progress);

}  // namespace kalmia::analysis
