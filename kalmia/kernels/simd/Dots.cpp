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
    for (; n - i >= kLanes; i += kLanes) {
      for (int r = 0; r < kRows; ++r)
        for (int line = 0; line < kLanes; line += kCellsPerLine<T>) FetchAhead(rows_[r] + i + line);
      Step([i](const T* p, int k) HWY_ATTR { return Load(p + i + k * kWidth); });
    }
    if (i < n)
      Step([i, n](const T* p, int k) HWY_ATTR { return LoadFirst(p + i + k * kWidth, n - i - k * kWidth); });
  }

  HWY_INLINE double Product(int r) { return Fold(product_[r]); }
  HWY_INLINE double Square(int r) { return Fold(square_[r]); }

 private:
  template <class LoadCells>
  HWY_INLINE void Step(const LoadCells& load) {
    for (int k = 0; k < kVectors; ++k) {
      const NarrowVector<T> cellsOfV = load(v_, k);
      const WideVector v = Widen(cellsOfV);
      const WideVector vv = hn::Mul(v, v);
      for (int r = 0; r < kRows; ++r) {
        const NarrowVector<T> x = load(rows_[r], k);
        const WideVector sum = AddProduct<T>(v, Widen(x), product_[r][k]);
        if constexpr (kHolesInRows) {
          WideMask present = Present<T>(x);
          if constexpr (kHolesInV) present = hn::And(present, Present<T>(cellsOfV));
          product_[r][k] = hn::IfThenElse(present, sum, product_[r][k]);
          square_[r][k] = hn::IfThenElse(present, hn::Add(square_[r][k], vv), square_[r][k]);
        } else if constexpr (kHolesInV) {
          product_[r][k] = hn::IfThenElse(Present<T>(cellsOfV), sum, product_[r][k]);
        } else {
          product_[r][k] = sum;
        }
      }
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

/// Rows whose accumulators are held at once. Only the widest machine has registers for all of them.
constexpr int kMostRows = kVectors <= 2 ? kRowsSideBySide : 2;

/// Calls some(first, number of rows as a constant) for runs of kRows, then of half as many and so on, until all `count`
/// rows are done.
template <int kRows, class Some>
HWY_INLINE void ForRuns(int first, int count, const Some& some) {
  for (; count >= kRows; first += kRows, count -= kRows) some(first, std::integral_constant<int, kRows>());
  if constexpr (kRows > 1) ForRuns<kRows / 2>(first, count, some);
}

template <class T, bool kHolesInV>
void DotsByCount(const T* v, const T* const* rows, int count, int n, double* dots) {
  ForRuns<kMostRows>(0, count, [=](int first, auto run) {
    Dots<T, decltype(run)::value, kHolesInV>(v, rows + first, n, dots + first);
  });
}

template <class T, bool kHolesInV>
void PairsByCount(const T* v, const T* const* rows, int count, int n, PairSums* sums) {
  ForRuns<kMostRows>(0, count, [=](int first, auto run) {
    Pairs<T, decltype(run)::value, kHolesInV>(v, rows + first, n, sums + first);
  });
}

template <class T>
double CountedDot(const T* a, const T* b, int n, int& pairs) {
  const Wide d;
  WideVector lane[kVectors];
  for (int k = 0; k < kVectors; ++k) lane[k] = hn::Zero(d);
  std::size_t found = 0;
  const auto step = [&](NarrowVector<T> x, NarrowVector<T> y, WideMask inside, WideVector& sum) HWY_ATTR {
    const WideMask present = hn::And(inside, hn::And(Present<T>(x), Present<T>(y)));
    sum = hn::IfThenElse(present, AddProduct<T>(Widen(x), Widen(y), sum), sum);
    found += hn::CountTrue(d, present);
  };
  const WideMask all = hn::FirstN(d, static_cast<std::size_t>(kWidth));
  int i = 0;
  for (; n - i >= kLanes; i += kLanes)
    for (int k = 0; k < kVectors; ++k) step(Load(a + i + k * kWidth), Load(b + i + k * kWidth), all, lane[k]);
  for (int k = 0; i + k * kWidth < n; ++k) {
    const int at = i + k * kWidth, left = n - at;
    step(LoadFirst(a + at, left), LoadFirst(b + at, left), hn::FirstN(d, static_cast<std::size_t>(left)), lane[k]);
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
