#pragma once

#include <random>

#include "signal/WaveletCase.h"

// What the tests of wavelet packets share.

/// Decisions for so many cells, three of four nodes split and the whole signal in any case.
inline BoolVector RandomDecisions(int cells, unsigned seed) {
  std::mt19937 random(seed);
  BoolVector decisions(cells - 1, true);
  for (int node = 2; node < cells; ++node) decisions(node) = random() % 4 != 0;
  return decisions;
}

/// Backward without trend; null where it is refused.
inline OwnedVector OutOfBasis(const NCDataVector<float>& coefficients, const BoolVector& decisions,
                              const Wavelet::WaveletFilters& filters, int length) {
  return OwnedVector(Wavelet::BackwardTransformBestBasis(&coefficients, &decisions, filters, Wavelet::DetrendNone,
                                                         length, 0, 0, nullptr));
}
