#include <cmath>
#include <cstdint>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/internal/OrderStatistics.h"
#include "kalmia/containers/internal/SampleMoments.h"

using kalmia::kMissing;
using kalmia::kMissingCell;

namespace {

/// Calls visit(x) for the present cells of column c from the first row down; a column without holes is not tested.
template <class T, class Visit>
void ForEachPresent(const NCDataMatrix<T>& m, int c, Visit visit) {
  const bool complete = m.SizeRows() == 0 || m.GetColumnMisVal(c) == 0;
  for (int r = 1; r <= m.SizeRows(); ++r) {
    const T x = m[r][c];
    if (complete || x != kMissing) visit(x);
  }
}

template <class T>
int PresentInColumn(const NCDataMatrix<T>& m, int c) {
  return m.SizeRows() == 0 ? 0 : m.SizeRows() - m.GetColumnMisVal(c);
}

template <class T>
double SumOfColumn(const NCDataMatrix<T>& m, int c) {
  double sum = 0;
  ForEachPresent(m, c, [&sum](T x) { sum += x; });
  return sum;
}

/// What standardises the present cells of column c, in double: the sum of squares is taken over `divisor`, or over one
/// less than the cells where that is missing. False where the moments of higher order have no estimate.
template <class T>
bool GetColumnMeanAndSd(const NCDataMatrix<T>& m, int c, float divisor, double& mean, double& sd) {
  const int n = PresentInColumn(m, c);
  const double denominator = divisor == kMissing ? n - 1 : static_cast<double>(divisor);
  if (n < 2 || denominator <= 0) return false;
  mean = SumOfColumn(m, c) / n;
  sd = std::sqrt(static_cast<double>(m.GetColumnSS(c, mean)) / denominator);
  return sd != 0;
}

/// sum(((x - mean) / sd)^power) over the present cells of column c.
template <int power, class T>
double SumOfStandardisedPowers(const NCDataMatrix<T>& m, int c, double mean, double sd) {
  double sum = 0;
  ForEachPresent(m, c, [&sum, mean, sd](T x) { sum += kalmia::PowerOf<power>((x - mean) / sd); });
  return sum;
}

}  // namespace

template <class T>
long double NCDataMatrix<T>::GetMean() const {
  double sum = 0;
  std::int64_t n = 0;
  for (const NCDataVector<T>& row : *this)
    for (int c = 1; c <= columns_; ++c)
      if (row.GetNumMisVal() == 0 || row[c] != kMissing) {
        sum += row[c];
        ++n;
      }
  return n == 0 ? kMissing : static_cast<long double>(sum) / static_cast<long double>(n);
}

template <class T>
long double NCDataMatrix<T>::GetColumnMean(int c) const {
  if (rows_ == 0) return 0;
  const int n = PresentInColumn(*this, c);
  if (n == 0) return kMissing;
  return static_cast<long double>(SumOfColumn(*this, c)) / n;
}

template <class T>
long double NCDataMatrix<T>::GetColumnSS(int c, long double mean) const {
  if (rows_ == 0) return 0;
  if (PresentInColumn(*this, c) == 0) return kMissing;
  const double centre = static_cast<double>(mean);
  double ss = 0;
  ForEachPresent(*this, c, [&ss, centre](T x) { ss += (x - centre) * (x - centre); });
  return ss;
}

template <class T>
long double NCDataMatrix<T>::GetColumnStdDev(int c, float divisor) const {
  const int n = PresentInColumn(*this, c);
  const long double denominator = divisor == kMissing ? n - 1 : static_cast<long double>(divisor);
  if (n == 0 || denominator <= 0) return kMissing;
  return std::sqrt(GetColumnSS(c, GetColumnMean(c)) / denominator);
}

template <class T>
long double NCDataMatrix<T>::GetColumnSkewness(int c, int divisor) const {
  double mean, sd;
  if (!GetColumnMeanAndSd(*this, c, static_cast<float>(divisor), mean, sd)) return kMissing;
  return kalmia::SkewnessFromCubes(SumOfStandardisedPowers<3>(*this, c, mean, sd), PresentInColumn(*this, c));
}

template <class T>
long double NCDataMatrix<T>::GetColumnSkewnessTest(int c, int divisor) const {
  const double skewness = static_cast<double>(GetColumnSkewness(c, divisor));
  return kalmia::SkewnessOverStandardError(skewness, PresentInColumn(*this, c));
}

template <class T>
long double NCDataMatrix<T>::GetColumnKurtosis(int c) const {
  double mean, sd;
  if (!GetColumnMeanAndSd(*this, c, kMissingCell<float>, mean, sd)) return kMissing;
  return kalmia::KurtosisFromFourthPowers(SumOfStandardisedPowers<4>(*this, c, mean, sd), PresentInColumn(*this, c));
}

template <class T>
long double NCDataMatrix<T>::GetColumnMedian(int c) const {
  std::vector<T> present;
  present.reserve(static_cast<std::size_t>(rows_));
  ForEachPresent(*this, c, [&present](T x) { present.push_back(x); });
  kalmia::SortAscending(present);
  return kalmia::MedianOfSorted(present.data(), present.size());
}

template <class T>
void NCDataMatrix<T>::GetColumnMinMax(int c, T& min, T& max) const {
  min = max = static_cast<T>(kMissing);
  bool first = true;
  ForEachPresent(*this, c, [&](T x) {
    if (first || x < min) min = x;
    if (first || x > max) max = x;
    first = false;
  });
}

template <class T>
void NCDataMatrix<T>::GetRowMinMax(int r, T& min, T& max) const {
  rowArray_[r].GetMinMax(min, max);
}

template <class T>
NCDataMatrix<T> NCDataMatrix<T>::SNV() const {
  MatrixDestroyer<T> holder;
  GetReturnMatrix(holder, rows_, columns_);
  NCDataMatrix& result = *holder.matrix;
  for (int r = 1; r <= rows_; ++r) rowArray_[r].SNVInto(result.rowArray_[r]);
  result.CountMissing();
  return result;
}

#define KALMIA_INSTANTIATE(T)                                                   \
  template long double NCDataMatrix<T>::GetMean() const;                        \
  template long double NCDataMatrix<T>::GetColumnMean(int) const;               \
  template long double NCDataMatrix<T>::GetColumnSS(int, long double) const;    \
  template long double NCDataMatrix<T>::GetColumnStdDev(int, float) const;      \
  template long double NCDataMatrix<T>::GetColumnSkewness(int, int) const;      \
  template long double NCDataMatrix<T>::GetColumnSkewnessTest(int, int) const;  \
  template long double NCDataMatrix<T>::GetColumnKurtosis(int) const;           \
  template long double NCDataMatrix<T>::GetColumnMedian(int) const;             \
  template void NCDataMatrix<T>::GetColumnMinMax(int, T&, T&) const;            \
  template void NCDataMatrix<T>::GetRowMinMax(int, T&, T&) const;               \
  template NCDataMatrix<T> NCDataMatrix<T>::SNV() const;
KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
