#include <algorithm>
#include <cmath>
#include <utility>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/internal/SampleMoments.h"
#include "kalmia/kernels/simd/Standardise.h"

// Standard normal variate, detrending, and the moments of standardised cells, in double.

using kalmia::kMissing;
using kalmia::kMissingCell;
namespace simd = kalmia::simd;

namespace {

/// What the cells of a vector are standardised by.
struct Standard {
  double mean, sd;
};

template <class T>
double SumOf(const NCDataVector<T>& v) {
  return simd::PowerSum(1, v.begin(), 0, 1, v.Size(), v.GetNumMisVal() > 0);
}

/// Of a vector of at least 2 present cells and this sum.
template <class T>
Standard StandardOf(const NCDataVector<T>& v, double sum) {
  const int n = v.Size() - v.GetNumMisVal();
  const double mean = sum / n;
  const double squares = simd::PowerSum(2, v.begin(), mean, 1, v.Size(), v.GetNumMisVal() > 0);
  return {mean, std::sqrt(squares / (n - 1))};
}

/// sum(z^power), z = (x - mean) / sd; false where the moments of higher order have no estimate.
template <class T>
bool SumOfStandardisedPowers(const NCDataVector<T>& v, int power, double& sum) {
  if (v.Size() - v.GetNumMisVal() < 2) return false;
  const double sumOfCells = SumOf(v);
  const Standard standard = StandardOf(v, sumOfCells);
  // A sum or mean of -99 counts as none, as in GetMean.
  if (sumOfCells == kMissing || standard.mean == kMissing || standard.sd == 0) return false;
  sum = simd::PowerSum(power, v.begin(), standard.mean, 1 / standard.sd, v.Size(), v.GetNumMisVal() > 0);
  return true;
}

/// Positions i, from 0, of the cells that are present, as the fit of a line takes them: from an origin in their midst,
/// so that nothing cancels in the sums.
struct Positions {
  double origin;
  double sum, squares;  ///< of i - origin
};

template <class T>
Positions PositionsOfPresent(const NCDataVector<T>& v) {
  const double n = v.Size() - v.GetNumMisVal();
  if (v.GetNumMisVal() == 0) {
    const double origin = std::floor((n - 1) / 2), ofMean = (n - 1) / 2 - origin;
    return {origin, n * ofMean, n * (n * n - 1) / 12 + n * ofMean * ofMean};
  }
  const double origin = std::floor(simd::SumPositions(v.begin(), 0, v.Size(), true).first / n);
  const simd::TwoSums sums = simd::SumPositions(v.begin(), origin, v.Size(), true);
  return {origin, sums.first, sums.second};
}

}  // namespace

template <class T>
void NCDataVector<T>::SNVInto(NCDataVector& out) const {
  const bool holes = numMisVal_ > 0;
  if (size_ - numMisVal_ < 2) return out.SetAllValues(kMissingCell<T>);
  const Standard standard = StandardOf(*this, SumOf(*this));
  const double factor = standard.sd == 0 ? 0 : 1 / standard.sd;  // without spread every cell becomes 0
  out.Unlink();
  simd::Standardise(begin(), standard.mean, factor, size_, holes, out.Cells());
  out.numMisVal_ = numMisVal_;
}

template <class T>
NCDataVector<T> NCDataVector<T>::SNV() const {
  VectorDestroyer<T> holder;
  GetReturnVector(holder, size_);  // may be this vector itself, unlinked
  SNVInto(*holder.vector);
  return *holder.vector;
}

template <class T>
void NCDataVector<T>::DetrendMean(long double& mean) {
  const bool holes = numMisVal_ > 0;
  const int n = size_ - numMisVal_;
  const double centre = n == 0 ? kMissing : kalmia::MeanFromSum(SumOf(*this), n);
  mean = centre;
  if (centre == kMissing) return;
  Unlink();
  numMisVal_ = 0;
  if (simd::Standardise(begin(), centre, 1, size_, holes, Cells())) CountMissing();  // a difference may land on -99
}

template <class T>
void NCDataVector<T>::FitOverPositions(double& intercept, double& slope) const {
  const bool holes = numMisVal_ > 0;
  const double n = size_ - numMisVal_;
  const Positions x = PositionsOfPresent(*this);
  const auto isPresent = [](T cell) { return cell != kMissingCell<T>; };
  const double y0 = holes ? *std::find_if(begin(), end(), isPresent) : *begin();  // cells from an origin as well
  const simd::TwoSums y = simd::SumMoments(begin(), x.origin, y0, size_, holes);
  slope = (y.second - x.sum * y.first / n) / (x.squares - x.sum * x.sum / n);
  const double firstPosition = 1;
  intercept = y0 + (y.first - x.sum * slope) / n - (x.origin + firstPosition) * slope;
}

template <class T>
void NCDataVector<T>::DetrendLinear(long double& intercept, long double& slope) {
  if (size_ - numMisVal_ < 2) return;
  double start, rise;
  FitOverPositions(start, rise);
  Unlink();
  const bool holes = std::exchange(numMisVal_, 0) > 0;
  if (simd::SubtractLine(begin(), start, rise, size_, holes, Cells())) CountMissing();  // a difference may be -99
  intercept = start;
  slope = rise;
}

template <class T>
long double NCDataVector<T>::GetSkewness() const {
  double sum;
  if (!SumOfStandardisedPowers(*this, 3, sum)) return kMissing;
  return kalmia::SkewnessFromCubes(sum, Size() - GetNumMisVal());
}

template <class T>
long double NCDataVector<T>::GetKurtosis() const {
  double sum;
  if (!SumOfStandardisedPowers(*this, 4, sum)) return kMissing;
  return kalmia::KurtosisFromFourthPowers(sum, Size() - GetNumMisVal());
}

#define KALMIA_INSTANTIATE(T)                                                     \
  template void NCDataVector<T>::SNVInto(NCDataVector<T>&) const;                 \
  template NCDataVector<T> NCDataVector<T>::SNV() const;                          \
  template void NCDataVector<T>::DetrendMean(long double&);                       \
  template void NCDataVector<T>::FitOverPositions(double&, double&) const;        \
  template void NCDataVector<T>::DetrendLinear(long double&, long double&);       \
  template long double NCDataVector<T>::GetSkewness() const;                      \
  template long double NCDataVector<T>::GetKurtosis() const;
KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
