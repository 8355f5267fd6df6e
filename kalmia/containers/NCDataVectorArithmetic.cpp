#include <algorithm>
#include <cmath>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/internal/MapCells.h"

// Arithmetic cell by cell, in double. Every result vector is fetched (and unlinked) before a source's cells are looked
// at, since it may be one of the sources.

using kalmia::kMissingCell;
using kalmia::Map;

namespace {

/// As Map, but a cell of `out` opposite a hole is left as it is.
template <class T, class F>
void MapPresent(T* out, const T* a, int n, bool complete, F f) {
  if (complete) return Map(out, a, n, true, f);
  for (int i = 0; i < n; ++i)
    out[i] = a[i] == kMissingCell<T> ? out[i] : static_cast<T>(f(static_cast<double>(a[i])));
}

/// out[i] = f(a[i], b[i]), missing where either is.
template <class T, class F>
void Combine(T* out, const T* a, const T* b, int n, bool complete, F f) {
  const auto cell = [f](T x, T y) { return static_cast<T>(f(static_cast<double>(x), static_cast<double>(y))); };
  if (complete) {
    for (int i = 0; i < n; ++i) out[i] = cell(a[i], b[i]);
  } else {
    for (int i = 0; i < n; ++i)
      out[i] = a[i] == kMissingCell<T> || b[i] == kMissingCell<T> ? kMissingCell<T> : cell(a[i], b[i]);
  }
}

}  // namespace

template <class T>
void NCDataVector<T>::Add(NCDataVector& out, const NCDataVector& a, const NCDataVector& b) {
  out.Unlink();
  const bool complete = a.numMisVal_ == 0 && b.numMisVal_ == 0;
  Combine(out.Cells(), a.begin(), b.begin(), a.size_, complete, [](double x, double y) { return x + y; });
  out.SetCountOfCombination(complete);
}

template <class T>
void NCDataVector<T>::Subtract(NCDataVector& out, const NCDataVector& a, const NCDataVector& b) {
  out.Unlink();
  const bool complete = a.numMisVal_ == 0 && b.numMisVal_ == 0;
  Combine(out.Cells(), a.begin(), b.begin(), a.size_, complete, [](double x, double y) { return x - y; });
  out.SetCountOfCombination(complete);
}

/// The sum or difference of complete vectors is complete without a look, even if a cell lands on -99.
template <class T>
void NCDataVector<T>::SetCountOfCombination(bool complete) {
  numMisVal_ = 0;
  if (!complete) CountMissing();
}

template <class T>
void NCDataVector<T>::Subtract(NCDataVector& out, const NCDataVector& a, long double d) {
  if (d == kalmia::kMissing) return out.SetAllValues(kMissingCell<T>);
  out.Unlink();
  const double subtrahend = static_cast<double>(d);
  Map(out.Cells(), a.begin(), a.size_, a.numMisVal_ == 0, [subtrahend](double x) { return x - subtrahend; });
  out.numMisVal_ = a.numMisVal_;
}

template <class T>
void NCDataVector<T>::Multiply(NCDataVector& out, const NCDataVector& a, long double d) {
  out.Unlink();
  const double factor = static_cast<double>(d);
  MapPresent(out.Cells(), a.begin(), a.size_, a.numMisVal_ == 0, [factor](double x) { return x * factor; });
  out.numMisVal_ = a.numMisVal_;
}

template <class T>
NCDataVector<T> NCDataVector<T>::operator+(const NCDataVector& v) const {
  VectorDestroyer<T> holder;
  GetReturnVector(holder, size_);
  Add(*holder.vector, *this, v);
  return *holder.vector;
}

template <class T>
NCDataVector<T> NCDataVector<T>::operator-(const NCDataVector& v) const {
  VectorDestroyer<T> holder;
  GetReturnVector(holder, size_);
  Subtract(*holder.vector, *this, v);
  return *holder.vector;
}

template <class T>
NCDataVector<T> NCDataVector<T>::operator-(long double d) const {
  VectorDestroyer<T> holder;
  GetReturnVector(holder, size_);
  Subtract(*holder.vector, *this, d);
  return *holder.vector;
}

template <class T>
NCDataVector<T> NCDataVector<T>::operator*(long double d) const {
  VectorDestroyer<T> holder;
  GetReturnVector(holder, size_);
  Multiply(*holder.vector, *this, d);
  return *holder.vector;
}

template <class T>
NCDataVector<T>& NCDataVector<T>::operator+=(const NCDataVector& v) {
  Result(this) + v;
  return *this;
}

template <class T>
NCDataVector<T>& NCDataVector<T>::operator-=(const NCDataVector& v) {
  Subtract(*this, *this, v);
  return *this;
}

template <class T>
NCDataVector<T>& NCDataVector<T>::operator+=(long double d) {
  Subtract(*this, *this, -d);
  return *this;
}

template <class T>
NCDataVector<T>& NCDataVector<T>::operator-=(long double d) {
  Subtract(*this, *this, d);
  return *this;
}

template <class T>
NCDataVector<T>& NCDataVector<T>::operator*=(long double d) {
  Multiply(*this, *this, d);
  return *this;
}

template <class T>
NCDataVector<T> NCDataVector<T>::DotMultiplication(const NCDataVector& v) const {
  VectorDestroyer<T> holder;
  GetReturnVector(holder, size_);
  const bool complete = numMisVal_ == 0 && v.numMisVal_ == 0;
  Combine(holder.vector->Cells(), begin(), v.begin(), size_, complete, [](double x, double y) { return x * y; });
  holder.vector->CountMissing();
  return *holder.vector;
}

template <class T>
NCDataVector<T> NCDataVector<T>::DotDivide(const NCDataVector& v) const {
  VectorDestroyer<T> holder;
  GetReturnVector(holder, size_);
  const bool complete = numMisVal_ == 0 && v.numMisVal_ == 0;
  Combine(holder.vector->Cells(), begin(), v.begin(), size_, complete,
          [](double x, double y) { return y == 0 ? static_cast<double>(kalmia::kMissing) : x / y; });
  holder.vector->CountMissing();
  return *holder.vector;
}

template <class T>
NCDataVector<T> NCDataVector<T>::VectorDivide(long double d) const {
  VectorDestroyer<T> holder;
  GetReturnVector(holder, size_);
  const double dividend = static_cast<double>(d);
  Map(holder.vector->Cells(), begin(), size_, numMisVal_ == 0, [dividend](double x) { return dividend / x; });
  holder.vector->numMisVal_ = numMisVal_;
  return *holder.vector;
}

template <class T>
void NCDataVector<T>::Abs() {
  Unlink();
  Map(Cells(), begin(), size_, numMisVal_ == 0, [](double x) { return std::fabs(x); });
}

template <class T>
void NCDataVector<T>::Sqrt() {
  Unlink();
  Map(Cells(), begin(), size_, numMisVal_ == 0, [](double x) { return std::sqrt(x); });
}

template <class T>
void NCDataVector<T>::TransformTo_Sub_d_x_Vt(long double d, const NCDataVector& v) {
  Unlink();
  const double factor = static_cast<double>(d);
  // The cells are asked, not the counts: an earlier call may have left a hole here that the count does not know.
  Combine(Cells(), begin(), v.begin(), size_, /*complete=*/false,
          [factor](double a, double b) { return a - factor * b; });
}

template <class T>
void NCDataVector<T>::TransformTo_Add_d_x_Vt(long double d, const NCDataVector& v) {
  TransformTo_Sub_d_x_Vt(-d, v);
}

template <class T>
long double NCDataVector<T>::Normalise() {
  const long double ss = GetSS();
  if (ss == kalmia::kMissing) return ss;
  const double norm = std::sqrt(static_cast<double>(ss));
  if (norm == 0) return 0;
  Unlink();
  Map(Cells(), begin(), size_, numMisVal_ == 0, [norm](double x) { return x / norm; });
  return norm;
}

#define KALMIA_INSTANTIATE(T)                                                                                     \
  template void NCDataVector<T>::Add(NCDataVector<T>&, const NCDataVector<T>&, const NCDataVector<T>&);           \
  template void NCDataVector<T>::Subtract(NCDataVector<T>&, const NCDataVector<T>&, const NCDataVector<T>&);      \
  template void NCDataVector<T>::Subtract(NCDataVector<T>&, const NCDataVector<T>&, long double);                 \
  template void NCDataVector<T>::Multiply(NCDataVector<T>&, const NCDataVector<T>&, long double);                 \
  template void NCDataVector<T>::SetCountOfCombination(bool);                                                     \
  template NCDataVector<T> NCDataVector<T>::operator+(const NCDataVector<T>&) const;                              \
  template NCDataVector<T> NCDataVector<T>::operator-(const NCDataVector<T>&) const;                              \
  template NCDataVector<T> NCDataVector<T>::operator-(long double) const;                                         \
  template NCDataVector<T> NCDataVector<T>::operator*(long double) const;                                         \
  template NCDataVector<T>& NCDataVector<T>::operator+=(const NCDataVector<T>&);                                  \
  template NCDataVector<T>& NCDataVector<T>::operator-=(const NCDataVector<T>&);                                  \
  template NCDataVector<T>& NCDataVector<T>::operator+=(long double);                                             \
  template NCDataVector<T>& NCDataVector<T>::operator-=(long double);                                             \
  template NCDataVector<T>& NCDataVector<T>::operator*=(long double);                                             \
  template NCDataVector<T> NCDataVector<T>::DotMultiplication(const NCDataVector<T>&) const;                      \
  template NCDataVector<T> NCDataVector<T>::DotDivide(const NCDataVector<T>&) const;                              \
  template NCDataVector<T> NCDataVector<T>::VectorDivide(long double) const;                                      \
  template void NCDataVector<T>::Abs();                                                                           \
  template void NCDataVector<T>::Sqrt();                                                                          \
  template void NCDataVector<T>::TransformTo_Sub_d_x_Vt(long double, const NCDataVector<T>&);                     \
  template void NCDataVector<T>::TransformTo_Add_d_x_Vt(long double, const NCDataVector<T>&);                     \
  template long double NCDataVector<T>::Normalise();
KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
