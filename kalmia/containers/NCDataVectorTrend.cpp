#include <limits>

#include "kalmia/containers/NCDataVector.h"

using kalmia::kMissing;

namespace {

/// Sums of the least-squares line over abscissas of the caller's.
struct LineSums {
  int n = 0;
  long double x = 0, xx = 0, y = 0, xy = 0;
  long double firstAbscissa = 0;
  bool equalAbscissas = true;  ///< noted, because the rounded difference of their sums need not be 0

  void Add(long double abscissa, long double ordinate) {
    if (++n == 1) firstAbscissa = abscissa;
    equalAbscissas = equalAbscissas && abscissa == firstAbscissa;
    x += abscissa;
    xx += abscissa * abscissa;
    y += ordinate;
    xy += abscissa * ordinate;
  }
};

/// Fills the cells strictly between the present cells a and b along the straight line over the abscissas x(i).
template <class T, class Abscissa>
void FillAlongLine(T* y, int a, int b, Abscissa x) {
  const long double ya = y[a], rise = static_cast<long double>(y[b]) - ya;
  const long double xa = x(a), run = x(b) - xa;
  for (int j = a + 1; j < b; ++j) y[j] = static_cast<T>(ya + (x(j) - xa) / run * rise);
}

template <class T>
bool HasMissing(const NCDataVector<T>& v, int first, int last) {
  for (int i = first; i <= last; ++i)
    if (v[i] == kMissing) return true;
  return false;
}

}  // namespace

template <class T>
bool NCDataVector<T>::LeastSquare(const NCDataVector* x, long double& intercept, long double& slope) const {
  const bool complete = numMisVal_ == 0;
  if (size_ - numMisVal_ < 2 || (x != nullptr && complete && x->numMisVal_ != 0)) return false;

  if (x == nullptr) {
    double start, rise;
    FitOverPositions(start, rise);
    intercept = start;
    slope = rise;
    return true;
  }
  LineSums sum;
  for (int i = 1; i <= size_; ++i) {
    if (!complete && data_[i] == kMissing) continue;
    if (!complete && x->data_[i] == kMissing) return false;
    sum.Add(x->data_[i], data_[i]);
  }
  const long double d = sum.xx - sum.x * sum.x / sum.n;
  if (d == 0 || sum.equalAbscissas) {
    slope = std::numeric_limits<float>::max();
    return true;
  }
  slope = (sum.xy - sum.x * sum.y / sum.n) / d;
  intercept = (sum.y - sum.x * slope) / sum.n;
  return true;
}

template <class T>
bool NCDataVector<T>::InterpolateMisVals(const NCDataVector* x) {
  if (numMisVal_ == 0) return true;
  int first = 1, last = size_;
  while (first <= size_ && data_[first] == kMissing) ++first;
  if (first > size_) return false;
  while (data_[last] == kMissing) --last;

  Unlink();
  for (int i = 1; i < first; ++i) data_[i] = data_[first];
  for (int i = last + 1; i <= size_; ++i) data_[i] = data_[last];

  for (int a = first; a < last;) {
    int b = a + 1;
    while (data_[b] == kMissing) ++b;
    if (b > a + 1) {
      if (x == nullptr) {
        FillAlongLine(data_, a, b, [](int i) { return static_cast<long double>(i); });
      } else if (!HasMissing(*x, a, b)) {
        FillAlongLine(data_, a, b, [x](int i) { return static_cast<long double>((*x)[i]); });
      } else {
        CountMissing();
        return false;
      }
    }
    a = b;
  }
  numMisVal_ = 0;
  return true;
}

template <class T>
void NCDataVector<T>::Lag(int k) {
  if (k == 0 || size_ == 0) return;
  if (k >= size_ || k <= -size_) {
    SetAllValues(static_cast<T>(kMissing));
    return;
  }
  Unlink();
  if (k > 0) {
    for (int i = size_; i > k; --i) data_[i] = data_[i - k];
    for (int i = 1; i <= k; ++i) data_[i] = static_cast<T>(kMissing);
  } else {
    for (int i = 1; i <= size_ + k; ++i) data_[i] = data_[i - k];
    for (int i = size_ + k + 1; i <= size_; ++i) data_[i] = static_cast<T>(kMissing);
  }
  CountMissing();
}

#define KALMIA_INSTANTIATE(T)                                                                            \
  template bool NCDataVector<T>::LeastSquare(const NCDataVector<T>*, long double&, long double&) const;  \
  template bool NCDataVector<T>::InterpolateMisVals(const NCDataVector<T>*);                             \
  template void NCDataVector<T>::Lag(int);
KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
