#include "kalmia/kernels/regression/ColumnRegression.h"

#include <algorithm>

#include "kalmia/kernels/regression/Regression.h"
#include "kalmia/kernels/simd/Quotients.h"

namespace kalmia {
namespace {

/// Whether the quotients, as those of long doubles, could be had by dividing in double.
bool DivideInDouble(const double* numerators, int n, long double denominator, float* cells) {
  const double divisor = static_cast<double>(denominator);
  return divisor == denominator && std::fabs(divisor) > kSmallestDenominator &&
         simd::DivideToFloat(numerators, divisor, n, cells);
}

bool DivideInDouble(const double*, int, long double, double*) { return false; }

}  // namespace

template <class T>
void WriteQuotients(T* cells, const double* numerators, int n, long double denominator, int& numMisVal) {
  if (DivideInDouble(numerators, n, denominator, cells)) {
    numMisVal -= n;
    return;
  }
  for (int j = 0; j < n; ++j) WriteQuotient(cells[j], numerators[j], denominator, numMisVal);
}

template <class T>
int ColumnRegression<T>::Slice(T* out, int first, int last) const {
  int change = 0;
  ForColumnBlocks(first, last, [&](int c, int n) {
    const SumsBuffer<T> buffer(n);
    const bool vHasHoles = misValMode >= 2;
    if (vHasHoles) std::fill_n(buffer.Holes(), n, kMissingCell<T>);
    const bool holes = vHasHoles || (misValMode == 1 && MarkColumnsWithHoles(X, c, n, buffer.Holes()));
    change += holes ? BlockWithHoles(out, c, n, buffer) : CompleteBlock(out, c, n, buffer);
  });
  return change;
}

template <class T>
int ColumnRegression<T>::CompleteBlock(T* out, int first, int n, const SumsBuffer<T>& buffer) const {
  SumColumns(X, v, first, n, buffer.Products());
  int change = 0;
  WriteQuotients(out + first, buffer.Products(), n, ss, change);
  return change;
}

template <class T>
int ColumnRegression<T>::BlockWithHoles(T* out, int first, int n, const SumsBuffer<T>& buffer) const {
  const RowsUsed used = misValMode == 1 ? RowsUsed::All : RowsUsed::WithV;
  SumColumnPairs(X, v, used, RowWeight::Square, first, n, buffer.Holes(), buffer.Products(), buffer.Weights());
  return Write(out, first, n, buffer.Products(), buffer.Weights());
}

template <class T>
int ColumnRegression<T>::Write(T* out, int first, int n, const double* products, const double* weights) const {
  const long double third = ThirdOf(ss);
  int change = 0;
  for (int j = 0; j < n; ++j) {
    const int holes = X.GetColumnMisVal(first + j);
    if (misValMode == 1 && holes > 0 && holes == X.SizeRows()) continue;
    const bool complete = misValMode == 1 && holes == 0;
    const long double denominator = complete ? ss : fix ? ClampDenominator(third, weights[j]) : weights[j];
    WriteQuotient(out[first + j], products[j], denominator, change);
  }
  return change;
}

template void WriteQuotients(float*, const double*, int, long double, int&);
template void WriteQuotients(double*, const double*, int, long double, int&);
template struct ColumnRegression<float>;
template struct ColumnRegression<double>;

}  // namespace kalmia
