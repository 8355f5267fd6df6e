#pragma once

#include <memory>
#include <ostream>
#include <random>
#include <vector>

#include "kalmia/signal/Wavelet.h"

// What the tests of wavelets share: every filter, signals, results that are owned.

/// One filter pair of the library, both ways.
struct Filters {
  Filters(Wavelet::WaveletFunctionType type, int order)
      : decomposition(Wavelet::GetDecompositionFilter(type, order)),
        reconstruction(Wavelet::GetReconstructionFilter(type, order)) {}
  Filters(const Filters&) = delete;
  Filters& operator=(const Filters&) = delete;
  ~Filters() {
    decomposition.CleanUp();
    reconstruction.CleanUp();
  }

  Wavelet::WaveletFilters decomposition, reconstruction;
};

struct FamilyAndOrder {
  Wavelet::WaveletFunctionType type;
  int order;
};

inline std::ostream& operator<<(std::ostream& stream, const FamilyAndOrder& filter) {
  return stream << Wavelet::WaveletFunctionStr(filter.type) << ", order " << filter.order;
}

/// All 31 filters.
inline std::vector<FamilyAndOrder> AllFilters() {
  std::vector<FamilyAndOrder> all;
  for (int type = 0; type <= 9; ++type)
    for (int order = 1; order <= Wavelet::GetNumFunctionOrder(static_cast<Wavelet::WaveletFunctionType>(type)); ++order)
      all.push_back({static_cast<Wavelet::WaveletFunctionType>(type), order});
  return all;
}

inline NCDataVector<float> Signal(const std::vector<float>& cells) {
  NCDataVector<float> signal;
  signal.CopyZeroBasedVector(cells.data(), static_cast<int>(cells.size()));
  return signal;
}

/// Normally distributed cells around `mean`.
inline NCDataVector<float> RandomSignal(int n, unsigned seed, float mean = 0) {
  std::mt19937 random(seed);
  std::normal_distribution<float> normal(mean);
  NCDataVector<float> signal(n, 0.0F);
  for (int i = 1; i <= n; ++i) signal(i, normal(random));
  return signal;
}

template <class V>
auto CellsOf(const V& v) {
  return std::vector<std::decay_t<decltype(*v.begin())>>(v.begin(), v.end());
}

using OwnedVector = std::unique_ptr<NCDataVector<float>>;
using OwnedMatrix = std::unique_ptr<NCDataMatrix<float>>;
