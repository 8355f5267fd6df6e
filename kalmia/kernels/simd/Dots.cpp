#include "kalmia/kernels/simd/Dots.h"

#include "kalmia/kernels/simd/Targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kalmia/kernels/simd/Dots.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "kalmia/kernels/simd/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {

/// The sums of v with kRows rows, sixteen positions at a time. Squares are formed only where rows have holes: otherwise
/// they are the same for every row, and the caller's.
template <class T, int kRows, bool kHolesInV, bool kHolesInRows>
class RowSums {
 public:
  RowSums(const T* v, const T* const* rows) : v_(v), rows_(rows) {
    for (int r = 0; r < kRows; ++r)
      for (int k = 0; k < kVectors; ++k) product_[r][k] = square_[r][k] = hn::Zero(Wide());
  }

  HWY_INLINE void Run(int n) {
    int i = 0;
    for (; n - i >= kLanes; i += kLanes)
      Step([i](const T* p, int k) HWY_ATTR { return Load(p + i + k * kWidth); });
    if (i < n)
      Step([i, n](const T* p, int k) HWY_ATTR { return LoadFirst(p + i + k * kWidth, n - i - k * kWidth); });
  }

  HWY_INLINE double Product(int r) { return Fold(product_[r]); }
  HWY_INLINE double Square(int r) { return Fold(square_[r]); }

 private:
  template <class LoadCells>
  HWY_INLINE void Step(const LoadCells& load) {
    for (int k = 0; k < kVectors; ++k) {
      const WideVector v = load(v_, k);
      for (int r = 0; r < kRows; ++r) Add(v, load(rows_[r], k), product_[r][k], square_[r][k]);
    }
  }

  HWY_INLINE void Add(WideVector v, WideVector x, WideVector& product, WideVector& square) {
    const WideVector newProduct = AddProduct<T>(v, x, product);
    if constexpr (kHolesInRows) {
      WideMask present = Present(x);
      if constexpr (kHolesInV) present = hn::And(present, Present(v));
      product = hn::IfThenElse(present, newProduct, product);
      square = hn::IfThenElse(present, AddProduct<T>(v, v, square), square);
    } else if constexpr (kHolesInV) {
      product = hn::IfThenElse(Present(v), newProduct, product);
    } else {
      product = newProduct;
    }
  }

  const T* v_;
  const T* const* rows_;
  WideVector product_[kRows][kVectors];
  WideVector square_[kRows][kVectors];
};

template <class T, int kRows, bool kHolesInV>
void Dots(const T* v, const T* const* rows, int n, double* dots) {
  RowSums<T, kRows, kHolesInV, false> sums(v, rows);
  sums.Run(n);
  for (int r = 0; r < kRows; ++r) dots[r] = sums.Product(r);
}

template <class T, int kRows, bool kHolesInV>
void Pairs(const T* v, const T* const* rows, int n, PairSums* out) {
  RowSums<T, kRows, kHolesInV, true> sums(v, rows);
  sums.Run(n);
  for (int r = 0; r < kRows; ++r) out[r] = {sums.Product(r), sums.Square(r)};
}

template <class T, bool kHolesInV>
void DotsByCount(const T* v, const T* const* rows, int count, int n, double* dots) {
  static_assert(kRowsAtOnce == 4, "one case for each count");
  switch (count) {
    case 1: return Dots<T, 1, kHolesInV>(v, rows, n, dots);
    case 2: return Dots<T, 2, kHolesInV>(v, rows, n, dots);
    case 3: return Dots<T, 3, kHolesInV>(v, rows, n, dots);
    case 4: return Dots<T, 4, kHolesInV>(v, rows, n, dots);
    default: return;
  }
}

template <class T, bool kHolesInV>
void PairsByCount(const T* v, const T* const* rows, int count, int n, PairSums* sums) {
  switch (count) {
    case 1: return Pairs<T, 1, kHolesInV>(v, rows, n, sums);
    case 2: return Pairs<T, 2, kHolesInV>(v, rows, n, sums);
    case 3: return Pairs<T, 3, kHolesInV>(v, rows, n, sums);
    case 4: return Pairs<T, 4, kHolesInV>(v, rows, n, sums);
    default: return;
  }
}

template <class T>
double CountedDot(const T* a, const T* b, int n, int& pairs) {
  const Wide d;
  WideVector lane[kVectors];
  for (int k = 0; k < kVectors; ++k) lane[k] = hn::Zero(d);
  std::size_t found = 0;
  int i = 0;
  for (; n - i >= kLanes; i += kLanes)
    for (int k = 0; k < kVectors; ++k) {
      const WideVector x = Load(a + i + k * kWidth), y = Load(b + i + k * kWidth);
      const WideMask present = hn::And(Present(x), Present(y));
      lane[k] = hn::IfThenElse(present, AddProduct<T>(x, y, lane[k]), lane[k]);
      found += hn::CountTrue(d, present);
    }
  for (int k = 0; i + k * kWidth < n; ++k) {
    const int left = n - i - k * kWidth;
    const WideVector x = LoadFirst(a + i + k * kWidth, left), y = LoadFirst(b + i + k * kWidth, left);
    const WideMask inside = hn::FirstN(d, static_cast<std::size_t>(left));
    const WideMask present = hn::And(inside, hn::And(Present(x), Present(y)));
    lane[k] = hn::IfThenElse(present, AddProduct<T>(x, y, lane[k]), lane[k]);
    found += hn::CountTrue(d, present);
  }
  pairs = static_cast<int>(found);
  return Fold(lane);
}

void FloatDots(const float* v, const float* const* rows, int count, int n, double* dots) {
  DotsByCount<float, false>(v, rows, count, n, dots);
}
void DoubleDots(const double* v, const double* const* rows, int count, int n, double* dots) {
  DotsByCount<double, false>(v, rows, count, n, dots);
}
void FloatDotsMasked(const float* v, const float* const* rows, int count, int n, double* dots) {
  DotsByCount<float, true>(v, rows, count, n, dots);
}
void DoubleDotsMasked(const double* v, const double* const* rows, int count, int n, double* dots) {
  DotsByCount<double, true>(v, rows, count, n, dots);
}
void FloatPairs(const float* v, const float* const* rows, int count, int n, Holes holes, PairSums* sums) {
  holes == Holes::InBoth ? PairsByCount<float, true>(v, rows, count, n, sums)
                         : PairsByCount<float, false>(v, rows, count, n, sums);
}
void DoublePairs(const double* v, const double* const* rows, int count, int n, Holes holes, PairSums* sums) {
  holes == Holes::InBoth ? PairsByCount<double, true>(v, rows, count, n, sums)
                         : PairsByCount<double, false>(v, rows, count, n, sums);
}
double FloatCountedDot(const float* a, const float* b, int n, int& pairs) { return CountedDot(a, b, n, pairs); }
double DoubleCountedDot(const double* a, const double* b, int n, int& pairs) { return CountedDot(a, b, n, pairs); }

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kalmia::simd {

HWY_EXPORT(FloatDots);
HWY_EXPORT(DoubleDots);
HWY_EXPORT(FloatDotsMasked);
HWY_EXPORT(DoubleDotsMasked);
HWY_EXPORT(FloatPairs);
HWY_EXPORT(DoublePairs);
HWY_EXPORT(FloatCountedDot);
HWY_EXPORT(DoubleCountedDot);

namespace {

template <class T>
double OneDot(const T* a, const T* b, int n) {
  double dot;
  DotRows(a, &b, 1, n, &dot);
  return dot;
}

template <class T>
double OneDotMasked(const T* a, const T* b, int n) {
  double dot;
  DotRowsMasked(a, &b, 1, n, &dot);
  return dot;
}

}  // namespace

double Dot(const float* a, const float* b, int n) { return OneDot(a, b, n); }
double Dot(const double* a, const double* b, int n) { return OneDot(a, b, n); }
double DotMasked(const float* a, const float* b, int n) { return OneDotMasked(a, b, n); }
double DotMasked(const double* a, const double* b, int n) { return OneDotMasked(a, b, n); }

double DotMasked2(const float* a, const float* b, int n, int& pairs) {
  return UsesScalarTwins() ? scalar::DotMasked2(a, b, n, pairs)
                           : HWY_DYNAMIC_DISPATCH(FloatCountedDot)(a, b, n, pairs);
}
double DotMasked2(const double* a, const double* b, int n, int& pairs) {
  return UsesScalarTwins() ? scalar::DotMasked2(a, b, n, pairs)
                           : HWY_DYNAMIC_DISPATCH(DoubleCountedDot)(a, b, n, pairs);
}

void DotRows(const float* v, const float* const* rows, int count, int n, double* dots) {
  UsesScalarTwins() ? scalar::DotRows(v, rows, count, n, dots)
                    : HWY_DYNAMIC_DISPATCH(FloatDots)(v, rows, count, n, dots);
}
void DotRows(const double* v, const double* const* rows, int count, int n, double* dots) {
  UsesScalarTwins() ? scalar::DotRows(v, rows, count, n, dots)
                    : HWY_DYNAMIC_DISPATCH(DoubleDots)(v, rows, count, n, dots);
}

void DotRowsMasked(const float* v, const float* const* rows, int count, int n, double* dots) {
  UsesScalarTwins() ? scalar::DotRowsMasked(v, rows, count, n, dots)
                    : HWY_DYNAMIC_DISPATCH(FloatDotsMasked)(v, rows, count, n, dots);
}
void DotRowsMasked(const double* v, const double* const* rows, int count, int n, double* dots) {
  UsesScalarTwins() ? scalar::DotRowsMasked(v, rows, count, n, dots)
                    : HWY_DYNAMIC_DISPATCH(DoubleDotsMasked)(v, rows, count, n, dots);
}

void PairRows(const float* v, const float* const* rows, int count, int n, Holes holes, PairSums* sums) {
  UsesScalarTwins() ? scalar::PairRows(v, rows, count, n, holes, sums)
                    : HWY_DYNAMIC_DISPATCH(FloatPairs)(v, rows, count, n, holes, sums);
}
void PairRows(const double* v, const double* const* rows, int count, int n, Holes holes, PairSums* sums) {
  UsesScalarTwins() ? scalar::PairRows(v, rows, count, n, holes, sums)
                    : HWY_DYNAMIC_DISPATCH(DoublePairs)(v, rows, count, n, holes, sums);
}

}  // namespace kalmia::simd

#endif
