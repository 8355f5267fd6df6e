#pragma once

#include <memory>
#include <ostream>
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

/// Daubechies' filters of four taps, for tests to which the filter does not matter.
struct SomeFilters : Filters {
  SomeFilters() : Filters(Wavelet::FunctionDaubechies, 1) {}
};

struct FamilyAndOrder {
  Wavelet::WaveletFunctionType type;
  int order;
};

std::ostream& operator<<(std::ostream& stream, const FamilyAndOrder& filter);

std::vector<FamilyAndOrder> AllFilters();         ///< 31
std::vector<FamilyAndOrder> OrthogonalFilters();  ///< 16
std::vector<FamilyAndOrder> BiorthogonalFilters();

using OwnedVector = std::unique_ptr<NCDataVector<float>>;
using OwnedMatrix = std::unique_ptr<NCDataMatrix<float>>;

NCDataVector<float> Signal(const std::vector<float>& cells);
NCDataVector<float> RandomSignal(int n, unsigned seed, float mean = 0);  ///< normally distributed around the mean
/// Rows of random cells around 5, two holes in each but the first.
NCDataMatrix<float> RandomSignals(int rows, int columns, unsigned seed);

double Norm(const NCDataVector<float>& v);
double LargestGap(const NCDataVector<float>& a, const NCDataVector<float>& b);

/// A level rounds each coefficient to float, and filters are floats: so is what a few levels, there and back, lose of a
/// signal's length, in steps of half a unit in the last place. 64 of them are beyond what these filters, lengths and
/// depths can lose; the least wrong tap loses a hundred times as much.
constexpr double kRoundings = 64 * 0x1p-24;

/// Forward without trend; the result is never null where the signal has a cell.
OwnedVector Transformed(const NCDataVector<float>& signal, const Wavelet::WaveletFilters& filters, bool pad);
/// The same in the basis of the decisions; null where it is refused.
OwnedVector InBasis(const NCDataVector<float>& signal, const BoolVector& decisions,
                    const Wavelet::WaveletFilters& filters);

template <class V>
auto CellsOf(const V& v) {
  return std::vector<std::decay_t<decltype(*v.begin())>>(v.begin(), v.end());
}
