#pragma once

#include "kalmia/signal/FFT.h"

namespace kalmia {

/// Weight of cell j, 1 <= j <= 2 m, of a segment: the formulas stand beside FFT::DataWindowMode.
double WindowAt(FFT::DataWindowMode window, int j, int m);

/// The core of FFT::PowerSpectrum: `rounds` times two windowed segments of 2 m cells, as real and imaginary part of one
/// transform; power(1) to power(m + 1) take what FFT::PowerSpectrum says. Both arrays are numbered from 1; `signal` has
/// (2 rounds + 1) m cells with `overlap`, 4 rounds m without. m is a power of two, not checked. The sums of the window
/// and of its squares run in float, those of the power in double.
/// False if a power is a NaN, infinite or denormal (all are written), or if there is no memory (none is).
bool WindowedPower(const float* signal, int m, int rounds, bool overlap, FFT::ScalingMode scaling,
                   FFT::DataWindowMode window, float* power);

}  // namespace kalmia
