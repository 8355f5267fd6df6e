#include <cmath>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/internal/SampleMoments.h"

using kalmia::kMissing;

template <class T>
long double NCDataVector<T>::GetMean() const {
  const long double sum = GetSum();  // -99 for the empty vector too, so n > 0 below
  return sum == kMissing ? sum : sum / (Size() - GetNumMisVal());
}

template <class T>
long double NCDataVector<T>::GetVariance() const {
  const long double mean = GetMean();
  if (mean == kMissing) return kMissing;
  const int n = Size() - GetNumMisVal();
  return n < 2 ? 0 : GetSS(mean) / (n - 1);
}

template <class T>
long double NCDataVector<T>::GetStdDev() const {
  if (Size() - GetNumMisVal() < 2) return kMissing;
  const long double variance = GetVariance();
  return variance == kMissing ? variance : std::sqrt(variance);
}

template <class T>
long double NCDataVector<T>::GetSkewnessTest() const {
  return kalmia::SkewnessOverStandardError(static_cast<double>(GetSkewness()), Size() - GetNumMisVal());
}

template <class T>
long double NCDataVector<T>::Correlation(const NCDataVector& v) const {
  const bool complete = GetNumMisVal() == 0 && v.GetNumMisVal() == 0;
  double sumAB = 0, sumAA = 0, sumBB = 0;
  int pairs = 0;
  for (int i = 1; i <= Size(); ++i) {
    const double a = data_[i], b = v.data_[i];
    if (!complete && (a == kMissing || b == kMissing)) continue;
    sumAB += a * b;
    sumAA += a * a;
    sumBB += b * b;
    ++pairs;
  }
  return pairs == 0 ? kMissing : kalmia::CorrelationFromSums(sumAB, sumAA, sumBB);
}

#define KALMIA_INSTANTIATE(T)                                                       \
  template long double NCDataVector<T>::GetMean() const;                            \
  template long double NCDataVector<T>::GetVariance() const;                        \
  template long double NCDataVector<T>::GetStdDev() const;                          \
  template long double NCDataVector<T>::GetSkewnessTest() const;                    \
  template long double NCDataVector<T>::Correlation(const NCDataVector<T>&) const;
KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
