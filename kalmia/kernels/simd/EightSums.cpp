#include "kalmia/kernels/simd/EightSums.h"

#include "kalmia/kernels/simd/Targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kalmia/kernels/simd/EightSums.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "kalmia/kernels/simd/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {

using Part = hn::CappedTag<double, kEight>;
using PartVector = hn::Vec<Part>;
constexpr int kPartWidth = static_cast<int>(hn::MaxLanes(Part()));
constexpr int kParts = kEight / kPartWidth;  ///< vectors that make up the eight numbers

/// Rows that are summed at once: their sums, or factors, stay in registers.
constexpr int kRowsAtOnce = kParts == 1 ? 8 : kParts == 2 ? 4 : 2;

/// Eight numbers.
struct Numbers {
  PartVector part[kParts];
};

HWY_INLINE Numbers LoadNumbers(const double* p) {
  Numbers numbers;
  for (int q = 0; q < kParts; ++q) numbers.part[q] = hn::LoadU(Part(), p + q * kPartWidth);
  return numbers;
}

HWY_INLINE void StoreNumbers(const Numbers& numbers, double* p) {
  for (int q = 0; q < kParts; ++q) hn::StoreU(numbers.part[q], Part(), p + q * kPartWidth);
}

template <int kRows>
HWY_INLINE void Dots(const float* const* rows, const double* vectors, int n, double* dots) {
  const float* row[kRows];
  Numbers sum[kRows];
  for (int r = 0; r < kRows; ++r) {
    row[r] = rows[r];
    for (int q = 0; q < kParts; ++q) sum[r].part[q] = hn::Zero(Part());
  }
  for (int k = 0; k < n; ++k) {
    const Numbers v = LoadNumbers(vectors + kEight * k);
    for (int r = 0; r < kRows; ++r) {
      const PartVector x = hn::Set(Part(), static_cast<double>(row[r][k]));
      for (int q = 0; q < kParts; ++q) sum[r].part[q] = hn::Add(sum[r].part[q], hn::Mul(x, v.part[q]));
    }
  }
  for (int r = 0; r < kRows; ++r) StoreNumbers(sum[r], dots + kEight * r);
}

template <int kRows>
HWY_INLINE void AddProducts(const float* const* rows, const double* factors, int n, double* sums) {
  const float* row[kRows];
  Numbers factor[kRows];
  for (int r = 0; r < kRows; ++r) {
    row[r] = rows[r];
    factor[r] = LoadNumbers(factors + kEight * r);
  }
  for (int k = 0; k < n; ++k) {
    Numbers sum = LoadNumbers(sums + kEight * k);
    for (int r = 0; r < kRows; ++r) {
      const PartVector x = hn::Set(Part(), static_cast<double>(row[r][k]));
      for (int q = 0; q < kParts; ++q) sum.part[q] = hn::Add(sum.part[q], hn::Mul(x, factor[r].part[q]));
    }
    StoreNumbers(sum, sums + kEight * k);
  }
}

template <int kRows>
HWY_INLINE void AddSquares(const float* const* rows, const double* weights, const double* centres, int n,
                           double* sums) {
  const float* row[kRows];
  Numbers weight[kRows];
  for (int r = 0; r < kRows; ++r) {
    row[r] = rows[r];
    weight[r] = LoadNumbers(weights + kEight * r);
  }
  for (int k = 0; k < n; ++k) {
    const Numbers centre = LoadNumbers(centres + kEight * k);
    Numbers sum = LoadNumbers(sums + kEight * k);
    for (int r = 0; r < kRows; ++r) {
      const PartVector x = hn::Set(Part(), static_cast<double>(row[r][k]));
      for (int q = 0; q < kParts; ++q) {
        const PartVector difference = hn::Sub(x, centre.part[q]);
        const PartVector square = hn::Mul(difference, difference);
        sum.part[q] = hn::Add(sum.part[q], hn::Mul(weight[r].part[q], square));
      }
    }
    StoreNumbers(sum, sums + kEight * k);
  }
}

/// Calls some(first row, number of rows as a constant) until all `count` rows are done.
template <int kRows, class Some>
HWY_INLINE void ForRuns(int first, int count, const Some& some) {
  for (; count >= kRows; first += kRows, count -= kRows) some(first, std::integral_constant<int, kRows>());
  if constexpr (kRows > 1) ForRuns<kRows / 2>(first, count, some);
}

void DotsOfLanes(const float* const* rows, int count, const double* vectors, int n, double* dots) {
  ForRuns<kRowsAtOnce>(0, count, [=](int first, auto run) HWY_ATTR {
    Dots<decltype(run)::value>(rows + first, vectors, n, dots + kEight * first);
  });
}

void ProductsOfLanes(const float* const* rows, int count, const double* factors, int n, double* sums) {
  ForRuns<kRowsAtOnce>(0, count, [=](int first, auto run) HWY_ATTR {
    AddProducts<decltype(run)::value>(rows + first, factors + kEight * first, n, sums);
  });
}

void SquaresOfLanes(const float* const* rows, int count, const double* weights, const double* centres, int n,
                    double* sums) {
  ForRuns<kRowsAtOnce>(0, count, [=](int first, auto run) HWY_ATTR {
    AddSquares<decltype(run)::value>(rows + first, weights + kEight * first, centres, n, sums);
  });
}

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kalmia::simd {

HWY_EXPORT(DotsOfLanes);
HWY_EXPORT(ProductsOfLanes);
HWY_EXPORT(SquaresOfLanes);

void EightDots(const float* const* rows, int count, const double* vectors, int n, double* dots) {
  UsesScalarTwins() ? scalar::EightDots(rows, count, vectors, n, dots)
                    : HWY_DYNAMIC_DISPATCH(DotsOfLanes)(rows, count, vectors, n, dots);
}

void AddEightProducts(const float* const* rows, int count, const double* factors, int n, double* sums) {
  UsesScalarTwins() ? scalar::AddEightProducts(rows, count, factors, n, sums)
                    : HWY_DYNAMIC_DISPATCH(ProductsOfLanes)(rows, count, factors, n, sums);
}

void AddEightSquares(const float* const* rows, int count, const double* weights, const double* centres, int n,
                     double* sums) {
  UsesScalarTwins() ? scalar::AddEightSquares(rows, count, weights, centres, n, sums)
                    : HWY_DYNAMIC_DISPATCH(SquaresOfLanes)(rows, count, weights, centres, n, sums);
}

}  // namespace kalmia::simd

#endif
