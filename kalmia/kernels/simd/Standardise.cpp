#include "kalmia/kernels/simd/Standardise.h"

#include "kalmia/kernels/simd/Targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kalmia/kernels/simd/Standardise.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "kalmia/kernels/simd/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {

/// Calls visit(cells, i, k, taking) for the vectors of cells in turn: i is the position of the vector's first cell, k
/// its place among the sixteen lanes, and `taking` chooses among numbers those of cells that take part, zeros instead
/// of the others.
template <class T, bool kHoles, class Visit>
HWY_INLINE void ForVectors(const T* x, int n, const Visit& visit) {
  const Wide d;
  int i = 0;
  for (; n - i >= kLanes; i += kLanes)
    for (int k = 0; k < kVectors; ++k) {
      const NarrowVector<T> cells = Load(x + i + k * kWidth);
      if constexpr (kHoles) {
        const WideMask present = Present<T>(cells);
        visit(Widen(cells), i + k * kWidth, k,
              [present](WideVector v) HWY_ATTR { return hn::IfThenElseZero(present, v); });
      } else {
        visit(Widen(cells), i + k * kWidth, k, [](WideVector v) HWY_ATTR { return v; });
      }
    }
  for (int k = 0; i + k * kWidth < n; ++k) {
    const int at = i + k * kWidth;
    const NarrowVector<T> cells = LoadFirst(x + at, n - at);
    WideMask inside = hn::FirstN(d, static_cast<std::size_t>(n - at));
    if constexpr (kHoles) inside = hn::And(inside, Present<T>(cells));
    visit(Widen(cells), at, k, [inside](WideVector v) HWY_ATTR { return hn::IfThenElseZero(inside, v); });
  }
}

template <int kPower>
HWY_INLINE WideVector PowerOf(WideVector z) {
  if constexpr (kPower == 1) return z;
  const WideVector square = hn::Mul(z, z);
  if constexpr (kPower == 2) return square;
  if constexpr (kPower == 3) return hn::Mul(square, z);
  return hn::Mul(square, square);
}

template <class T, bool kHoles, int kPower>
double PowerSumOf(const T* x, double centre, double factor, int n) {
  const Wide d;
  const WideVector c = hn::Set(d, centre), f = hn::Set(d, factor);
  WideVector lane[kVectors];
  for (int k = 0; k < kVectors; ++k) lane[k] = hn::Zero(d);
  ForVectors<T, kHoles>(x, n, [&](WideVector cells, int, int k, const auto& taking) HWY_ATTR {
    lane[k] = hn::Add(lane[k], taking(PowerOf<kPower>(hn::Mul(hn::Sub(cells, c), f))));
  });
  return Fold(lane);
}

template <class T, bool kHoles>
double PowerSumBy(int power, const T* x, double centre, double factor, int n) {
  switch (power) {
    case 1: return PowerSumOf<T, kHoles, 1>(x, centre, factor, n);
    case 2: return PowerSumOf<T, kHoles, 2>(x, centre, factor, n);
    case 3: return PowerSumOf<T, kHoles, 3>(x, centre, factor, n);
    default: return PowerSumOf<T, kHoles, 4>(x, centre, factor, n);
  }
}

struct TwoVectors {
  WideVector first, second;
};

/// The sums of terms(i - x0, y), two for each cell.
template <class T, bool kHoles, class Terms>
HWY_INLINE TwoSums SumTwo(const T* y, double x0, int n, const Terms& terms) {
  const Wide d;
  const WideVector fromOrigin = hn::Sub(hn::Iota(d, 0.0), hn::Set(d, x0));
  WideVector a[kVectors], b[kVectors];
  for (int k = 0; k < kVectors; ++k) a[k] = b[k] = hn::Zero(d);
  ForVectors<T, kHoles>(y, n, [&](WideVector cells, int i, int k, const auto& taking) HWY_ATTR {
    const TwoVectors two = terms(hn::Add(hn::Set(d, static_cast<double>(i)), fromOrigin), cells);
    a[k] = hn::Add(a[k], taking(two.first));
    b[k] = hn::Add(b[k], taking(two.second));
  });
  return {Fold(a), Fold(b)};
}

template <class T, bool kHoles>
TwoSums PositionSums(const T* y, double x0, int n) {
  return SumTwo<T, kHoles>(
      y, x0, n, [](WideVector dx, WideVector) HWY_ATTR { return TwoVectors{dx, hn::Mul(dx, dx)}; });
}

template <class T, bool kHoles>
TwoSums MomentSums(const T* y, double x0, double y0, int n) {
  const WideVector origin = hn::Set(Wide(), y0);
  return SumTwo<T, kHoles>(y, x0, n, [origin](WideVector dx, WideVector cells) HWY_ATTR {
    const WideVector dy = hn::Sub(cells, origin);
    return TwoVectors{dy, hn::Mul(dx, dy)};
  });
}

/// out[i] = map(x[i], i); whether any cell of `out` is -99 now.
template <class T, bool kHoles, class MapVector>
HWY_INLINE bool MapVectors(const T* x, int n, T* out, const MapVector& map) {
  const Narrow<T> d;
  const NarrowVector<T> hole = hn::Set(d, kMissingCell<T>);
  const auto mapped = [&map, hole](NarrowVector<T> cells, int i) HWY_ATTR {
    const NarrowVector<T> numbers = Narrowed<T>(map(Widen(cells), i));
    return kHoles ? hn::IfThenElse(hn::Eq(cells, hole), hole, numbers) : numbers;
  };
  auto found = hn::FirstN(d, 0);
  int i = 0;
  for (; n - i >= kWidth; i += kWidth) {
    const NarrowVector<T> cells = mapped(Load(x + i), i);
    found = hn::Or(found, hn::Eq(cells, hole));
    hn::StoreU(cells, d, out + i);
  }
  bool foundInLast = false;
  HWY_ALIGN T last[kWidth];
  hn::Store(mapped(LoadFirst(x + i, n - i), i), d, last);
  for (int k = 0; i < n; ++i, ++k) foundInLast |= (out[i] = last[k]) == kMissingCell<T>;
  return foundInLast || !hn::AllFalse(d, found);
}

template <class T, bool kHoles>
bool Standardised(const T* x, double centre, double factor, int n, T* out) {
  const WideVector c = hn::Set(Wide(), centre), f = hn::Set(Wide(), factor);
  return MapVectors<T, kHoles>(x, n, out,
                        [c, f](WideVector cells, int) HWY_ATTR { return hn::Mul(hn::Sub(cells, c), f); });
}

template <class T, bool kHoles>
bool WithoutLine(const T* y, double intercept, double slope, int n, T* out) {
  const Wide d;
  const WideVector b = hn::Set(d, intercept), m = hn::Set(d, slope);
  return MapVectors<T, kHoles>(y, n, out, [=](WideVector cells, int i) HWY_ATTR {
    return hn::Sub(cells, hn::Add(hn::Mul(hn::Iota(d, i + 1.0), m), b));
  });
}

double FloatPowerSum(int power, const float* x, double centre, double factor, int n, bool holes) {
  return holes ? PowerSumBy<float, true>(power, x, centre, factor, n)
               : PowerSumBy<float, false>(power, x, centre, factor, n);
}
double DoublePowerSum(int power, const double* x, double centre, double factor, int n, bool holes) {
  return holes ? PowerSumBy<double, true>(power, x, centre, factor, n)
               : PowerSumBy<double, false>(power, x, centre, factor, n);
}
TwoSums FloatPositions(const float* y, double x0, int n, bool holes) {
  return holes ? PositionSums<float, true>(y, x0, n) : PositionSums<float, false>(y, x0, n);
}
TwoSums DoublePositions(const double* y, double x0, int n, bool holes) {
  return holes ? PositionSums<double, true>(y, x0, n) : PositionSums<double, false>(y, x0, n);
}
TwoSums FloatMoments(const float* y, double x0, double y0, int n, bool holes) {
  return holes ? MomentSums<float, true>(y, x0, y0, n) : MomentSums<float, false>(y, x0, y0, n);
}
TwoSums DoubleMoments(const double* y, double x0, double y0, int n, bool holes) {
  return holes ? MomentSums<double, true>(y, x0, y0, n) : MomentSums<double, false>(y, x0, y0, n);
}
bool FloatStandardise(const float* x, double centre, double factor, int n, bool holes, float* out) {
  return holes ? Standardised<float, true>(x, centre, factor, n, out)
               : Standardised<float, false>(x, centre, factor, n, out);
}
bool DoubleStandardise(const double* x, double centre, double factor, int n, bool holes, double* out) {
  return holes ? Standardised<double, true>(x, centre, factor, n, out)
               : Standardised<double, false>(x, centre, factor, n, out);
}
bool FloatSubtractLine(const float* y, double intercept, double slope, int n, bool holes, float* out) {
  return holes ? WithoutLine<float, true>(y, intercept, slope, n, out)
               : WithoutLine<float, false>(y, intercept, slope, n, out);
}
bool DoubleSubtractLine(const double* y, double intercept, double slope, int n, bool holes, double* out) {
  return holes ? WithoutLine<double, true>(y, intercept, slope, n, out)
               : WithoutLine<double, false>(y, intercept, slope, n, out);
}

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kalmia::simd {

HWY_EXPORT(FloatPowerSum);
HWY_EXPORT(DoublePowerSum);
HWY_EXPORT(FloatPositions);
HWY_EXPORT(DoublePositions);
HWY_EXPORT(FloatMoments);
HWY_EXPORT(DoubleMoments);
HWY_EXPORT(FloatStandardise);
HWY_EXPORT(DoubleStandardise);
HWY_EXPORT(FloatSubtractLine);
HWY_EXPORT(DoubleSubtractLine);

double PowerSum(int power, const float* x, double centre, double factor, int n, bool holes) {
  return UsesScalarTwins() ? scalar::PowerSum(power, x, centre, factor, n, holes)
                           : HWY_DYNAMIC_DISPATCH(FloatPowerSum)(power, x, centre, factor, n, holes);
}
double PowerSum(int power, const double* x, double centre, double factor, int n, bool holes) {
  return UsesScalarTwins() ? scalar::PowerSum(power, x, centre, factor, n, holes)
                           : HWY_DYNAMIC_DISPATCH(DoublePowerSum)(power, x, centre, factor, n, holes);
}

TwoSums SumPositions(const float* y, double x0, int n, bool holes) {
  return UsesScalarTwins() ? scalar::SumPositions(y, x0, n, holes)
                           : HWY_DYNAMIC_DISPATCH(FloatPositions)(y, x0, n, holes);
}
TwoSums SumPositions(const double* y, double x0, int n, bool holes) {
  return UsesScalarTwins() ? scalar::SumPositions(y, x0, n, holes)
                           : HWY_DYNAMIC_DISPATCH(DoublePositions)(y, x0, n, holes);
}
TwoSums SumMoments(const float* y, double x0, double y0, int n, bool holes) {
  return UsesScalarTwins() ? scalar::SumMoments(y, x0, y0, n, holes)
                           : HWY_DYNAMIC_DISPATCH(FloatMoments)(y, x0, y0, n, holes);
}
TwoSums SumMoments(const double* y, double x0, double y0, int n, bool holes) {
  return UsesScalarTwins() ? scalar::SumMoments(y, x0, y0, n, holes)
                           : HWY_DYNAMIC_DISPATCH(DoubleMoments)(y, x0, y0, n, holes);
}

bool Standardise(const float* x, double centre, double factor, int n, bool holes, float* out) {
  return UsesScalarTwins() ? scalar::Standardise(x, centre, factor, n, holes, out)
                           : HWY_DYNAMIC_DISPATCH(FloatStandardise)(x, centre, factor, n, holes, out);
}
bool Standardise(const double* x, double centre, double factor, int n, bool holes, double* out) {
  return UsesScalarTwins() ? scalar::Standardise(x, centre, factor, n, holes, out)
                           : HWY_DYNAMIC_DISPATCH(DoubleStandardise)(x, centre, factor, n, holes, out);
}

bool SubtractLine(const float* y, double intercept, double slope, int n, bool holes, float* out) {
  return UsesScalarTwins() ? scalar::SubtractLine(y, intercept, slope, n, holes, out)
                           : HWY_DYNAMIC_DISPATCH(FloatSubtractLine)(y, intercept, slope, n, holes, out);
}
bool SubtractLine(const double* y, double intercept, double slope, int n, bool holes, double* out) {
  return UsesScalarTwins() ? scalar::SubtractLine(y, intercept, slope, n, holes, out)
                           : HWY_DYNAMIC_DISPATCH(DoubleSubtractLine)(y, intercept, slope, n, holes, out);
}

}  // namespace kalmia::simd

#endif
