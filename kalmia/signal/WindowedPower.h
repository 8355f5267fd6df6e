#pragma once

#include <cstdint>

#include "kalmia/signal/FFT.h"
#include "kalmia/support/Export.h"

namespace kalmia {

/// Weight of cell j, 1 <= j <= 2 m, of a segment: the formulas stand beside FFT::DataWindowMode.
KALMIA_EXPORT double WindowAt(FFT::DataWindowMode window, int j, int m);

/// How a signal is cut: so many rounds of two segments each, which take so many cells in all.
struct SegmentCut {
  int rounds;
  std::int64_t cells;
};

/// The cut of n cells into segments of 2 m, m a power of two; n over the segments' step is formed in float, so that
/// some of the last cells of more than 2^24 may be left out.
KALMIA_EXPORT SegmentCut CutIntoSegments(int n, int m, bool overlap);

/// The core of FFT::PowerSpectrum: `rounds` times two windowed segments of 2 m cells, as real and imaginary part of one
/// transform; power(1) to power(m + 1) take what FFT::PowerSpectrum says. Both arrays are numbered from 1; `signal` has
/// the cells of the cut, at least. m is a power of two, not checked. The sums of the window
/// and of its squares run in float, those of the power in double.
/// A power that is denormal and below 2^-48 of the sum of all is what rounding left where there is none: 0. False if a
/// power is a NaN, infinite or else denormal (all are written), or if there is no memory (none is).
KALMIA_EXPORT bool WindowedPower(const float* signal, int m, int rounds, bool overlap, FFT::ScalingMode scaling,
                                 FFT::DataWindowMode window, float* power);

}  // namespace kalmia
