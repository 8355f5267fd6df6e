#include "kalmia/kernels/simd/SquareSums.h"

#include "kalmia/kernels/simd/Targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kalmia/kernels/simd/SquareSums.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "kalmia/kernels/simd/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {

#if HWY_TARGET != HWY_EMU128 && HWY_TARGET != HWY_SCALAR

/// The squared difference, rounded to float before it is added to anything.
template <Square kSquare>
HWY_INLINE WideVector SquareOf(WideVector a, WideVector b) {
  const WideVector difference = hn::Sub(a, b);
  WideVector square = hn::Mul(difference, difference);
  if constexpr (kSquare == Square::Half) square = hn::Mul(square, hn::Set(Wide(), 0.5));
  return Widen(Narrowed<float>(square));
}

/// kRows rows against the tile, whose cells are widened once for all of them.
template <Square kSquare, int kRows, bool kHoles>
void TileSums(const float* const* rows, const float* tile, int columns, double* sums, double* common) {
  const Wide d;
  // As many vectors of the tile at once as leave registers for the rest.
  constexpr int kAtOnce = kVectors < 4 ? kVectors : (kHoles ? 1 : 2);
  for (int first = 0; first < kVectors; first += kAtOnce) {
    WideVector sum[kRows][kAtOnce], both[kRows][kAtOnce];
    for (int r = 0; r < kRows; ++r)
      for (int k = 0; k < kAtOnce; ++k) sum[r][k] = both[r][k] = hn::Zero(d);
    const float* cells = tile + first * kWidth;
    for (int c = 0; c < columns; ++c, cells += kTileRows) {
      for (int k = 0; k < kAtOnce; ++k) {
        const NarrowVector<float> b = Load(cells + k * kWidth);
        for (int r = 0; r < kRows; ++r) {
          const WideVector a = hn::Set(d, static_cast<double>(rows[r][c]));
          WideVector square = SquareOf<kSquare>(a, Widen(b));
          if constexpr (kHoles) {
            const WideMask present = hn::And(Present<float>(b), Present<float>(hn::Set(Narrow<float>(), rows[r][c])));
            square = hn::IfThenElseZero(present, square);
            both[r][k] = hn::Add(both[r][k], hn::IfThenElseZero(present, hn::Set(d, 1.0)));
          }
          sum[r][k] = hn::Add(sum[r][k], square);
        }
      }
    }
    for (int r = 0; r < kRows; ++r)
      for (int k = 0; k < kAtOnce; ++k) {
        const int at = r * kTileRows + (first + k) * kWidth;
        hn::StoreU(sum[r][k], d, sums + at);
        if constexpr (kHoles) hn::StoreU(both[r][k], d, common + at);
      }
  }
}

template <Square kSquare, bool kHoles>
void SumsByCount(const float* const* rows, int count, const float* tile, int columns, double* sums, double* common) {
  if (count == kRowsBesideTile) return TileSums<kSquare, kRowsBesideTile, kHoles>(rows, tile, columns, sums, common);
  for (int r = 0; r < count; ++r) {
    double* const counts = kHoles ? common + r * kTileRows : nullptr;
    TileSums<kSquare, 1, kHoles>(rows + r, tile, columns, sums + r * kTileRows, counts);
  }
}

#else

// Where vectors are only emulated g++ 12 makes its own of them, in which the rounding to float between two doubles is
// lost.
template <Square kSquare, bool kHoles>
void SumsByCount(const float* const* rows, int count, const float* tile, int columns, double* sums, double* common) {
  kHoles ? scalar::SquareSumsMasked(kSquare, rows, count, tile, columns, sums, common)
         : scalar::SquareSums(kSquare, rows, count, tile, columns, sums);
}

#endif

void PlainTileSums(Square square, const float* const* rows, int count, const float* tile, int columns, double* sums) {
  square == Square::Half ? SumsByCount<Square::Half, false>(rows, count, tile, columns, sums, nullptr)
                         : SumsByCount<Square::Whole, false>(rows, count, tile, columns, sums, nullptr);
}

void TileSumsMasked(Square square, const float* const* rows, int count, const float* tile, int columns, double* sums,
                double* common) {
  square == Square::Half ? SumsByCount<Square::Half, true>(rows, count, tile, columns, sums, common)
                         : SumsByCount<Square::Whole, true>(rows, count, tile, columns, sums, common);
}

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kalmia::simd {

HWY_EXPORT(PlainTileSums);
HWY_EXPORT(TileSumsMasked);

void SquareSums(Square square, const float* const* rows, int count, const float* tile, int columns, double* sums) {
  UsesScalarTwins() ? scalar::SquareSums(square, rows, count, tile, columns, sums)
                    : HWY_DYNAMIC_DISPATCH(PlainTileSums)(square, rows, count, tile, columns, sums);
}

void SquareSumsMasked(Square square, const float* const* rows, int count, const float* tile, int columns, double* sums,
                      double* common) {
  UsesScalarTwins() ? scalar::SquareSumsMasked(square, rows, count, tile, columns, sums, common)
                    : HWY_DYNAMIC_DISPATCH(TileSumsMasked)(square, rows, count, tile, columns, sums, common);
}

}  // namespace kalmia::simd

#endif
