#pragma once

#include <vector>

#include "kalmia/signal/Wavelet.h"

// The plainest wavelet transforms that can be right: one index after the other, wrapped one period at a time. Cells are
// counted from 1, entry 0 is unused; sums run in double in the order of the taps, so that the library has the
// same bits.

using PlainCells = std::vector<float>;

PlainCells PlainCellsOf(const NCDataVector<float>& v);

void PlainForwardStep(const PlainCells& in, PlainCells& out, int n, int lowStart, int highStart,
                      const Wavelet::WaveletFilters& filters);
void PlainBackwardStep(const PlainCells& in, PlainCells& out, int n, int lowStart, int highStart,
                       const Wavelet::WaveletFilters& filters);
/// All levels; without a power of two the scheme that shortens the signal by one at each odd length.
PlainCells PlainForward(const PlainCells& signal, const Wavelet::WaveletFilters& filters);
/// The inverse, from a list of the odd lengths that were met.
PlainCells PlainBackward(const PlainCells& coefficients, const Wavelet::WaveletFilters& filters);

/// Packets along a decided tree, from `work` to `out`, both whole signals; children follow from what `out` then holds.
void PlainForwardPackets(PlainCells& work, PlainCells& out, const BoolVector& decisions,
                         const Wavelet::WaveletFilters& filters, int level, int index, bool sequency);
void PlainBackwardPackets(PlainCells& work, PlainCells& out, const BoolVector& decisions,
                          const Wavelet::WaveletFilters& filters, int level, int index, bool sequency);
