#include "kalmia/kernels/simd/ColumnSums.h"

#include "kalmia/kernels/simd/Targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kalmia/kernels/simd/ColumnSums.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "kalmia/kernels/simd/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {

/// Runs step(j) for every whole vector of columns, then hands the columns that are left to the twin.
template <class Step, class Rest>
HWY_INLINE void AcrossColumns(int n, const Step& step, const Rest& rest) {
  int j = 0;
  for (; n - j >= kWidth; j += kWidth) step(j);
  if (j < n) rest(j, n - j);
}

/// The rows from column j on.
template <class T>
struct RowsFrom {
  RowsFrom(const T* const* rows, int count, int j) {
    for (int k = 0; k < count; ++k) row[k] = rows[k] + j;
  }
  const T* row[kRowsPerStep];
};

template <class T>
void Products(const T* const* rows, const double* v, int count, int n, double* sums) {
  const Wide d;
  const auto step = [=](int j) HWY_ATTR {
    WideVector sum = hn::LoadU(d, sums + j);
    for (int k = 0; k < count; ++k) sum = AddProduct<T>(hn::Set(d, v[k]), Load(rows[k] + j), sum);
    hn::StoreU(sum, d, sums + j);
  };
  AcrossColumns(n, step, [=](int j, int left) {
    scalar::AddRows(RowsFrom<T>(rows, count, j).row, v, count, left, sums + j);
  });
}

template <class T>
void MaskedProducts(const T* const* rows, const double* v, const double* w, int count, int n, const T* hole,
                    double* sums, double* weights) {
  const Wide d;
  const auto step = [=](int j) HWY_ATTR {
    WideVector sum = hn::LoadU(d, sums + j), weight = hn::LoadU(d, weights + j);
    const WideVector none = Load(hole + j);
    for (int k = 0; k < count; ++k) {
      const WideVector x = Load(rows[k] + j);
      const WideMask present = Differ(x, none);
      sum = hn::IfThenElse(present, AddProduct<T>(hn::Set(d, v[k]), x, sum), sum);
      weight = hn::IfThenElse(present, hn::Add(weight, hn::Set(d, w[k])), weight);
    }
    hn::StoreU(sum, d, sums + j);
    hn::StoreU(weight, d, weights + j);
  };
  AcrossColumns(n, step, [=](int j, int left) {
    scalar::AddRowsMasked(RowsFrom<T>(rows, count, j).row, v, w, count, left, hole + j, sums + j, weights + j);
  });
}

template <class T>
void MaskedSquares(const T* const* rows, int count, int n, const T* hole, double* sums) {
  const Wide d;
  const auto step = [=](int j) HWY_ATTR {
    WideVector sum = hn::LoadU(d, sums + j);
    const WideVector none = Load(hole + j);
    for (int k = 0; k < count; ++k) {
      const WideVector x = Load(rows[k] + j);
      sum = hn::IfThenElse(Differ(x, none), AddProduct<T>(x, x, sum), sum);
    }
    hn::StoreU(sum, d, sums + j);
  };
  AcrossColumns(n, step, [=](int j, int left) {
    scalar::AddSquaresMasked(RowsFrom<T>(rows, count, j).row, count, left, hole + j, sums + j);
  });
}

void FloatProducts(const float* const* rows, const double* v, int count, int n, double* sums) {
  Products(rows, v, count, n, sums);
}
void DoubleProducts(const double* const* rows, const double* v, int count, int n, double* sums) {
  Products(rows, v, count, n, sums);
}
void FloatMaskedProducts(const float* const* rows, const double* v, const double* w, int count, int n,
                         const float* hole, double* sums, double* weights) {
  MaskedProducts(rows, v, w, count, n, hole, sums, weights);
}
void DoubleMaskedProducts(const double* const* rows, const double* v, const double* w, int count, int n,
                          const double* hole, double* sums, double* weights) {
  MaskedProducts(rows, v, w, count, n, hole, sums, weights);
}
void FloatMaskedSquares(const float* const* rows, int count, int n, const float* hole, double* sums) {
  MaskedSquares(rows, count, n, hole, sums);
}
void DoubleMaskedSquares(const double* const* rows, int count, int n, const double* hole, double* sums) {
  MaskedSquares(rows, count, n, hole, sums);
}

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kalmia::simd {

HWY_EXPORT(FloatProducts);
HWY_EXPORT(DoubleProducts);
HWY_EXPORT(FloatMaskedProducts);
HWY_EXPORT(DoubleMaskedProducts);
HWY_EXPORT(FloatMaskedSquares);
HWY_EXPORT(DoubleMaskedSquares);

void AddRows(const float* const* rows, const double* v, int count, int n, double* sums) {
  UsesScalarTwins() ? scalar::AddRows(rows, v, count, n, sums)
                    : HWY_DYNAMIC_DISPATCH(FloatProducts)(rows, v, count, n, sums);
}
void AddRows(const double* const* rows, const double* v, int count, int n, double* sums) {
  UsesScalarTwins() ? scalar::AddRows(rows, v, count, n, sums)
                    : HWY_DYNAMIC_DISPATCH(DoubleProducts)(rows, v, count, n, sums);
}

void AddRowsMasked(const float* const* rows, const double* v, const double* w, int count, int n, const float* hole,
                   double* sums, double* weights) {
  UsesScalarTwins() ? scalar::AddRowsMasked(rows, v, w, count, n, hole, sums, weights)
                    : HWY_DYNAMIC_DISPATCH(FloatMaskedProducts)(rows, v, w, count, n, hole, sums, weights);
}
void AddRowsMasked(const double* const* rows, const double* v, const double* w, int count, int n, const double* hole,
                   double* sums, double* weights) {
  UsesScalarTwins() ? scalar::AddRowsMasked(rows, v, w, count, n, hole, sums, weights)
                    : HWY_DYNAMIC_DISPATCH(DoubleMaskedProducts)(rows, v, w, count, n, hole, sums, weights);
}

void AddSquaresMasked(const float* const* rows, int count, int n, const float* hole, double* sums) {
  UsesScalarTwins() ? scalar::AddSquaresMasked(rows, count, n, hole, sums)
                    : HWY_DYNAMIC_DISPATCH(FloatMaskedSquares)(rows, count, n, hole, sums);
}
void AddSquaresMasked(const double* const* rows, int count, int n, const double* hole, double* sums) {
  UsesScalarTwins() ? scalar::AddSquaresMasked(rows, count, n, hole, sums)
                    : HWY_DYNAMIC_DISPATCH(DoubleMaskedSquares)(rows, count, n, hole, sums);
}

}  // namespace kalmia::simd

#endif
