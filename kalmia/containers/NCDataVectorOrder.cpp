#include <algorithm>
#include <cmath>
#include <vector>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/internal/OrderStatistics.h"

using kalmia::kMissing;

namespace {

template <class T>
std::vector<T> SortedPresentCells(const NCDataVector<T>& v) {
  std::vector<T> present;
  present.reserve(static_cast<std::size_t>(v.Size()));
  for (int i = 1; i <= v.Size(); ++i)
    if (v[i] != kMissing) present.push_back(v[i]);
  kalmia::SortAscending(present);
  return present;
}

template <class T>
struct PositionAndValue {
  int position;
  T value;
};

/// Numbers, then cells that are no number, then missing cells: in both directions.
template <class T>
int Rank(T value) {
  return value == kMissing ? 2 : std::isnan(value) ? 1 : 0;
}

template <class T>
bool ComesFirst(const PositionAndValue<T>& a, const PositionAndValue<T>& b, bool ascending) {
  const int rankA = Rank(a.value), rankB = Rank(b.value);
  if (rankA != rankB) return rankA < rankB;
  if (rankA == 0 && a.value != b.value) return ascending ? a.value < b.value : a.value > b.value;
  return a.position < b.position;
}

}  // namespace

template <class T>
long double NCDataVector<T>::GetMedian() const {
  const std::vector<T> sorted = SortedPresentCells(*this);
  return kalmia::MedianOfSorted(sorted.data(), sorted.size());
}

template <class T>
bool NCDataVector<T>::GetInterquartiles(long double& q1, long double& median, long double& q3) const {
  const std::vector<T> sorted = SortedPresentCells(*this);
  const std::size_t n = sorted.size(), half = n / 2;  // of an odd n the middle value belongs to neither half
  if (n < 2) {
    q1 = median = q3 = kMissing;
    return false;
  }
  q1 = kalmia::MedianOfSorted(sorted.data(), half);
  median = kalmia::MedianOfSorted(sorted.data(), n);
  q3 = kalmia::MedianOfSorted(sorted.data() + (n - half), half);
  return true;
}

template <class T>
long double NCDataVector<T>::GetInterquartileRange() const {
  long double q1, median, q3;
  return GetInterquartiles(q1, median, q3) ? q3 - q1 : kMissing;
}

template <class T>
long double NCDataVector<T>::GetRobustStdDev() const {
  constexpr double kQuartileDistancePerSd = 1.075;
  long double q1, median, q3;
  return GetInterquartiles(q1, median, q3) ? (q3 - q1) / kQuartileDistancePerSd : kMissing;
}

template <class T>
NCIntegralVector<int, -99> NCDataVector<T>::Sort(NCDataVector* out, bool ascending) {
  if (Size() < 2 || (out != nullptr && out->Size() == Size())) return {};
  std::vector<PositionAndValue<T>> order(static_cast<std::size_t>(Size()));
  for (int i = 1; i <= Size(); ++i) order[static_cast<std::size_t>(i - 1)] = {i, data_[i]};
  std::sort(order.begin(), order.end(),
            [ascending](const auto& a, const auto& b) { return ComesFirst(a, b, ascending); });

  NCDataVector& sorted = out != nullptr ? *out : *this;
  NCIntegralVector<int, -99> positions(Size());
  int i = 0;
  for (const auto& [position, value] : order) {
    ++i;
    sorted(i, value);
    positions(i) = position;
  }
  return positions;
}

#define KALMIA_INSTANTIATE(T)                                                                        \
  template long double NCDataVector<T>::GetMedian() const;                                           \
  template bool NCDataVector<T>::GetInterquartiles(long double&, long double&, long double&) const;  \
  template long double NCDataVector<T>::GetInterquartileRange() const;                               \
  template long double NCDataVector<T>::GetRobustStdDev() const;                                     \
  template NCIntegralVector<int, -99> NCDataVector<T>::Sort(NCDataVector<T>*, bool);
KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
