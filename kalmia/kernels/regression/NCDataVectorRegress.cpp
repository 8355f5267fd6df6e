#include <tuple>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/kernels/regression/ExcludedPositions.h"
#include "kalmia/kernels/regression/Regression.h"
#include "kalmia/kernels/regression/VectorPath.h"
#include "kalmia/kernels/simd/Dots.h"

// The regressions of one vector on another, and the dot product.

namespace {

using kalmia::simd::Holes;
using kalmia::simd::PairSums;

/// The primitives, by lanes or by their twins, as VectorPath decides.
template <class T>
struct Primitives {
  bool byLanes;

  double Dot(const T* a, const T* b, int n) const {
    return byLanes ? kalmia::simd::Dot(a, b, n) : kalmia::simd::scalar::Dot(a, b, n);
  }
  double DotMasked(const T* a, const T* b, int n) const {
    return byLanes ? kalmia::simd::DotMasked(a, b, n) : kalmia::simd::scalar::DotMasked(a, b, n);
  }
  double DotMasked2(const T* a, const T* b, int n, int& pairs) const {
    return byLanes ? kalmia::simd::DotMasked2(a, b, n, pairs) : kalmia::simd::scalar::DotMasked2(a, b, n, pairs);
  }
  PairSums Pairs(const T* v, const T* x, int n, Holes holes) const {
    PairSums sums;
    byLanes ? kalmia::simd::PairRows(v, &x, 1, n, holes, &sums)
            : kalmia::simd::scalar::PairRows(v, &x, 1, n, holes, &sums);
    return sums;
  }
};

/// The three sums of v1, with what is left out of it, and v2.
template <class T>
kalmia::RegressionSums SumsOf(const kalmia::VectorWithExclusions<T>& v1, const NCDataVector<T>& v2,
                              const Primitives<T>& use) {
  const int n = v1.Size();
  const T *a = v1.begin(), *b = v2.begin();
  kalmia::RegressionSums sums;
  sums.v1tv1All = v1.HasHoles() ? use.DotMasked(a, a, n) : use.Dot(a, a, n);
  if (v2.GetNumMisVal() > 0) {
    const PairSums pairs = use.Pairs(a, b, n, v1.HasHoles() ? Holes::InBoth : Holes::InRows);
    sums.v1tv2 = pairs.product;
    sums.v1tv1 = pairs.square;
  } else {
    sums.v1tv2 = v1.HasHoles() ? use.DotMasked(a, b, n) : use.Dot(a, b, n);
    sums.v1tv1 = sums.v1tv1All;
  }
  kalmia::DropWithoutEstimate(sums);
  return sums;
}

}  // namespace

template <class T>
void NCDataVector<T>::Calculate_V1txV2_and_V1txV1(long double& v1tv2, long double& v1tv1, long double& v1tv1All,
                                                  const NCDataVector& v2, int start, int stride) const {
  const Primitives<T> use{kalmia::VectorPath::LanesPayOff<T>(size_, numMisVal_, v2.numMisVal_, stride)};
  const auto sums = SumsOf({*this, start, stride}, v2, use);
  std::tie(v1tv2, v1tv1, v1tv1All) = std::tie(sums.v1tv2, sums.v1tv1, sums.v1tv1All);
}

template <class T>
void NCDataVector<T>::Calculate_V1txV2_and_V1txV1(long double& v1tv2, long double& v1tv1, long double& v1tv1All,
                                                  const NCDataVector& v2, const NCIntegralVector<int, -99>& groups,
                                                  int group) const {
  const Primitives<T> use{kalmia::VectorPath::LanesPayOff<T>(size_, numMisVal_, v2.numMisVal_, /*stride=*/1)};
  const auto sums = SumsOf({*this, groups, group}, v2, use);
  std::tie(v1tv2, v1tv1, v1tv1All) = std::tie(sums.v1tv2, sums.v1tv1, sums.v1tv1All);
}

template <class T>
long double NCDataVector<T>::Regress(const NCDataVector& w) const {
  kalmia::RegressionSums sums;
  Calculate_V1txV2_and_V1txV1(sums.v1tv2, sums.v1tv1, sums.v1tv1All, w, 1, 1);
  return kalmia::Coefficient(sums);
}

template <class T>
long double NCDataVector<T>::SpecialNipalsRegressFix(const NCDataVector& w) const {
  return SpecialNipalsRegressFixWithExclude(w, 1, 1);
}

template <class T>
long double NCDataVector<T>::SpecialNipalsRegressFixWithExclude(const NCDataVector& w, int start, int stride) const {
  kalmia::RegressionSums sums;
  Calculate_V1txV2_and_V1txV1(sums.v1tv2, sums.v1tv1, sums.v1tv1All, w, start, stride);
  return kalmia::CoefficientWithFix(sums);
}

template <class T>
long double NCDataVector<T>::SpecialNipalsRegressFixWithExclude(const NCDataVector& w,
                                                                const NCIntegralVector<int, -99>& groups,
                                                                int group) const {
  kalmia::RegressionSums sums;
  Calculate_V1txV2_and_V1txV1(sums.v1tv2, sums.v1tv1, sums.v1tv1All, w, groups, group);
  return kalmia::CoefficientWithFix(sums);
}

template <class T>
long double NCDataVector<T>::operator*(const NCDataVector& v) const {
  const Primitives<T> use{kalmia::VectorPath::LanesPayOff<T>(size_, numMisVal_, v.numMisVal_, /*stride=*/1)};
  switch (kalmia::MisValMode(numMisVal_, v.numMisVal_)) {
    case 0:
      return use.Dot(begin(), v.begin(), size_);
    case 1:  // without a pair the sum is 0, not missing
      return use.DotMasked(begin(), v.begin(), size_);
    case 2:
      if (v.numMisVal_ == size_) return kalmia::kMissing;
      return use.DotMasked(v.begin(), begin(), size_);
    default:
      if (numMisVal_ == size_ || v.numMisVal_ == size_) return kalmia::kMissing;
      int pairs;
      const double sum = use.DotMasked2(begin(), v.begin(), size_, pairs);
      return pairs > 0 ? sum : kalmia::kMissing;
  }
}

#define KALMIA_INSTANTIATE(T)                                                                                        \
  template void NCDataVector<T>::Calculate_V1txV2_and_V1txV1(long double&, long double&, long double&,               \
                                                             const NCDataVector&, int, int) const;                   \
  template void NCDataVector<T>::Calculate_V1txV2_and_V1txV1(long double&, long double&, long double&,               \
                                                             const NCDataVector&, const NCIntegralVector<int, -99>&, \
                                                             int) const;                                             \
  template long double NCDataVector<T>::Regress(const NCDataVector&) const;                                          \
  template long double NCDataVector<T>::SpecialNipalsRegressFix(const NCDataVector&) const;                          \
  template long double NCDataVector<T>::SpecialNipalsRegressFixWithExclude(const NCDataVector&, int, int) const;     \
  template long double NCDataVector<T>::SpecialNipalsRegressFixWithExclude(                                          \
      const NCDataVector&, const NCIntegralVector<int, -99>&, int) const;                                            \
  template long double NCDataVector<T>::operator*(const NCDataVector&) const;

KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
