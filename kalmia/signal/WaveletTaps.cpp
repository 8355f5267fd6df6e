#include "kalmia/signal/WaveletTaps.h"

#include <cmath>
#include <cstddef>

#include "kalmia/signal/internal/WaveletTables.h"

namespace kalmia {

namespace {

using Taps = std::vector<double>;

/// The two published filters of an order, each scaled; for an orthogonal family they are one.
struct PublishedTaps {
  bool isOrthogonal = true;
  Taps decomposition;
  Taps reconstruction;
};

Taps Scaled(Taps taps, double factor) {
  for (double& tap : taps) tap *= factor;
  return taps;
}

Taps OfUnitLength(const double* taps, int length) {
  double squares = 0;
  for (int i = 0; i < length; ++i) squares += taps[i] * taps[i];
  return Scaled({taps, taps + length}, 1 / std::sqrt(squares));
}

Taps OfSumRootTwo(const double* taps, int length) {
  double sum = 0;
  for (int i = 0; i < length; ++i) sum += taps[i];
  return Scaled({taps, taps + length}, std::sqrt(2.0) / sum);
}

PublishedTaps TapsOf(Wavelet::WaveletFunctionType type, int order) {
  const WaveletTables tables = TablesOfFamily(type);
  if (order < 1 || order > tables.count) return {};
  const WaveletTable& table = tables.first[order - 1];
  if (table.reconstruction == nullptr) {
    const Taps h = OfUnitLength(table.decomposition, table.length);
    return {true, h, h};
  }
  return {false, OfSumRootTwo(table.decomposition, table.length), OfSumRootTwo(table.reconstruction, table.length)};
}

Taps Reversed(const Taps& taps) { return {taps.rbegin(), taps.rend()}; }

/// Changes the sign of every other tap from place `first` on, counted from 0.
Taps Alternated(Taps taps, std::size_t first) {
  for (std::size_t i = first; i < taps.size(); i += 2) taps[i] = -taps[i];
  return taps;
}

}  // namespace

WaveletTaps DecompositionTaps(Wavelet::WaveletFunctionType type, int order) {
  const PublishedTaps published = TapsOf(type, order);
  return {Reversed(published.decomposition), Alternated(published.reconstruction, published.isOrthogonal ? 1 : 0)};
}

WaveletTaps ReconstructionTaps(Wavelet::WaveletFunctionType type, int order) {
  const PublishedTaps published = TapsOf(type, order);
  return {published.reconstruction, Alternated(Reversed(published.decomposition), published.isOrthogonal ? 0 : 1)};
}

}  // namespace kalmia
