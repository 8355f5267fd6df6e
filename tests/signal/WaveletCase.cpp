#include "signal/WaveletCase.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace {

std::vector<FamilyAndOrder> FiltersOf(int firstType, int lastType) {
  std::vector<FamilyAndOrder> filters;
  for (int number = firstType; number <= lastType; ++number) {
    const auto type = static_cast<Wavelet::WaveletFunctionType>(number);
    for (int order = 1; order <= Wavelet::GetNumFunctionOrder(type); ++order) filters.push_back({type, order});
  }
  return filters;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const FamilyAndOrder& filter) {
  return stream << Wavelet::WaveletFunctionStr(filter.type) << ", order " << filter.order;
}

std::vector<FamilyAndOrder> AllFilters() { return FiltersOf(Wavelet::FunctionBeylkin, Wavelet::FunctionBiorthogonal6); }
std::vector<FamilyAndOrder> OrthogonalFilters() {
  return FiltersOf(Wavelet::FunctionBeylkin, Wavelet::FunctionSymmlet);
}
std::vector<FamilyAndOrder> BiorthogonalFilters() {
  return FiltersOf(Wavelet::FunctionBiorthogonal1, Wavelet::FunctionBiorthogonal6);
}

NCDataVector<float> Signal(const std::vector<float>& cells) {
  NCDataVector<float> signal;
  signal.CopyZeroBasedVector(cells.data(), static_cast<int>(cells.size()));
  return signal;
}

NCDataVector<float> RandomSignal(int n, unsigned seed, float mean) {
  std::mt19937 random(seed);
  std::normal_distribution<float> normal(mean);
  NCDataVector<float> signal(n, 0.0F);
  for (int i = 1; i <= n; ++i) signal(i, normal(random));
  return signal;
}

NCDataMatrix<float> RandomSignals(int rows, int columns, unsigned seed) {
  NCDataMatrix<float> table(rows, columns);
  for (int r = 1; r <= rows; ++r) {
    NCDataVector<float> row = RandomSignal(columns, seed + r, 5);
    if (r > 1 && columns > 4) {
      row(r % columns + 1, -99.0F);
      row((r + 3) % columns + 1, -99.0F);
    }
    table.SetRow(r, row);
  }
  return table;
}

double Norm(const NCDataVector<float>& v) { return std::sqrt(static_cast<double>(v.GetSS())); }

double LargestGap(const NCDataVector<float>& a, const NCDataVector<float>& b) {
  double gap = a.Size() == b.Size() ? 0 : INFINITY;
  for (int i = 1; i <= std::min(a.Size(), b.Size()); ++i)
    gap = std::max(gap, std::fabs(double(a[i]) - double(b[i])));
  return gap;
}

OwnedVector Transformed(const NCDataVector<float>& signal, const Wavelet::WaveletFilters& filters, bool pad) {
  long double mean = 0, slope = 0;
  return OwnedVector(Wavelet::ForwardTransform(&signal, filters, Wavelet::DetrendNone, mean, slope, nullptr, pad));
}

OwnedVector InBasis(const NCDataVector<float>& signal, const BoolVector& decisions,
                    const Wavelet::WaveletFilters& filters) {
  long double mean = 0, slope = 0;
  return OwnedVector(Wavelet::ForwardTransformBestBasis(&signal, &decisions, filters, Wavelet::DetrendNone, mean, slope,
                                                        nullptr));
}
