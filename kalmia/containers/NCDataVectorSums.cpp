#include <algorithm>
#include <cmath>
#include <cstring>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/internal/LaneSum.h"

// Sums, extremes and comparison.

using kalmia::kMissingCell;
using kalmia::SumPresent;

namespace {

/// Sum of f(a, b) over the pairs of present cells.
template <class T, class F>
double SumPairs(const T* a, const T* b, int n, bool complete, F f) {
  const auto term = [=](int i) { return f(static_cast<double>(a[i]), static_cast<double>(b[i])); };
  if (complete) return kalmia::LaneSum(n, term);
  return kalmia::LaneSum(n, [=](int i) { return a[i] == kMissingCell<T> || b[i] == kMissingCell<T> ? 0.0 : term(i); });
}

template <class T>
bool HasPair(const T* a, const T* b, int n) {
  for (int i = 0; i < n; ++i)
    if (a[i] != kMissingCell<T> && b[i] != kMissingCell<T>) return true;
  return false;
}

bool IsNoNumberToDivide(double x) {
  const int kind = std::fpclassify(x);
  return kind == FP_NAN || kind == FP_INFINITE || kind == FP_SUBNORMAL;
}

constexpr long double kNoEstimate = kalmia::kMissing;
constexpr double kChangeFromNothing = 1e30;  ///< the relative change of what was nearly nothing

}  // namespace

template <class T>
long double NCDataVector<T>::GetSS() const {
  if (size_ > 0 && numMisVal_ == size_) return kNoEstimate;
  return SumPresent(begin(), size_, numMisVal_ == 0, [](double x) { return x * x; });
}

template <class T>
long double NCDataVector<T>::GetSS(long double mean) const {
  if (size_ > 0 && numMisVal_ == size_) return kNoEstimate;
  const double centre = static_cast<double>(mean);
  return SumPresent(begin(), size_, numMisVal_ == 0, [centre](double x) { return (x - centre) * (x - centre); });
}

template <class T>
long double NCDataVector<T>::GetSum() const {
  if (numMisVal_ == size_) return kNoEstimate;
  return SumPresent(begin(), size_, numMisVal_ == 0, [](double x) { return x; });
}

template <class T>
void NCDataVector<T>::GetMinMax(T& min, T& max) const {
  min = max = kMissingCell<T>;
  const T* cell = std::find_if(begin(), end(), [](T x) { return x != kMissingCell<T>; });
  if (cell == end()) return;
  T low = *cell, high = *cell;
  for (; cell != end(); ++cell) {
    if (*cell == kMissingCell<T>) continue;
    if (*cell < low) low = *cell;
    if (*cell > high) high = *cell;
  }
  min = low;
  max = high;
}

template <class T>
long double NCDataVector<T>::Difference(const NCDataVector& v) const {
  const T* a = begin();
  const T* b = v.begin();
  const bool complete = numMisVal_ == 0 && v.numMisVal_ == 0;
  if (!complete && !HasPair(a, b, size_)) return kNoEstimate;
  const double reference = SumPairs(a, b, size_, complete, [](double x, double) { return x * x; });
  if (reference < kalmia::kSmallestDenominator) return kChangeFromNothing;
  const double change = SumPairs(a, b, size_, complete, [](double x, double y) { return (x - y) * (x - y); });
  if (IsNoNumberToDivide(change) || IsNoNumberToDivide(reference)) return kNoEstimate;
  return change / reference;
}

template <class T>
bool NCDataVector<T>::operator==(const NCDataVector& other) const {
  if (refCount_ == other.refCount_) return true;
  if (size_ != other.size_) return false;
  return size_ == 0 || std::memcmp(begin(), other.begin(), static_cast<std::size_t>(size_) * sizeof(T)) == 0;
}

#define KALMIA_INSTANTIATE(T)                                                       \
  template long double NCDataVector<T>::GetSS() const;                              \
  template long double NCDataVector<T>::GetSS(long double) const;                   \
  template long double NCDataVector<T>::GetSum() const;                             \
  template void NCDataVector<T>::GetMinMax(T&, T&) const;                           \
  template long double NCDataVector<T>::Difference(const NCDataVector<T>&) const;   \
  template bool NCDataVector<T>::operator==(const NCDataVector<T>&) const;
KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
