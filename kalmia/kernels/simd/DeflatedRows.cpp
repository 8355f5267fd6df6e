#include "kalmia/kernels/simd/DeflatedRows.h"

#include "kalmia/kernels/simd/ColumnSums.h"
#include "kalmia/kernels/simd/Targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kalmia/kernels/simd/DeflatedRows.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "kalmia/kernels/simd/RowSum-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {

/// The same rows from their cell j on.
struct DeflatedFrom {
  DeflatedFrom(const DeflatedRows& all, int j) : rows{row, all.factors, all.count, all.w + j, all.n - j} {
    for (int k = 0; k < all.count; ++k) row[k] = all.rows[k] + j;
  }
  const float* row[kRowsSideBySide];
  DeflatedRows rows;
};

/// kRows rows, from row `first` of those given on: so few that their numbers stay in registers across the columns.
template <int kRows, bool kStore, bool kAdd>
void Pass(const DeflatedRows& all, int first, float* const* to, const double* v, double* sums) {
  const Wide d;
  const float* const* rows = all.rows + first;
  WideVector factor[kRows], ofSum[kRows];
  for (int k = 0; k < kRows; ++k) {
    factor[k] = hn::Set(d, static_cast<double>(all.factors[first + k]));
    if constexpr (kAdd) ofSum[k] = hn::Set(d, v[first + k]);
  }
  int j = 0;
  for (; all.n - j >= kWidth; j += kWidth) {
    if (j % kCellsPerLine<float> == 0)
      for (int k = 0; k < kRows; ++k) FetchAhead(rows[k] + j);
    const WideVector w = Widen(Load(all.w + j));
    WideVector sum = hn::Zero(d);
    if constexpr (kAdd) sum = hn::LoadU(d, sums + j);
    for (int k = 0; k < kRows; ++k) {
      const NarrowVector<float> cells = SumOf<float>(Load(rows[k] + j), w, factor[k]);
      if constexpr (kStore) hn::StoreU(cells, Narrow<float>(), to[first + k] + j);
      if constexpr (kAdd) sum = AddProduct<float>(ofSum[k], Widen(cells), sum);
    }
    if constexpr (kAdd) hn::StoreU(sum, d, sums + j);
  }
  if (j == all.n) return;
  const DeflatedRows some{rows, all.factors + first, kRows, all.w, all.n};
  const DeflatedFrom rest(some, j);
  float* toRest[kRows];
  if constexpr (kStore)
    for (int k = 0; k < kRows; ++k) toRest[k] = to[first + k] + j;
  if constexpr (kStore && kAdd)
    scalar::StoreAndAddDeflated(rest.rows, toRest, v + first, sums + j);
  else if constexpr (kStore)
    scalar::StoreDeflated(rest.rows, toRest);
  else
    scalar::AddDeflated(rest.rows, v + first, sums + j);
}

/// Full steps at once, what is left over row by row.
template <bool kStore, bool kAdd>
void Passes(const DeflatedRows& all, float* const* to, const double* v, double* sums) {
  if (all.count == kRowsSideBySide) return Pass<kRowsSideBySide, kStore, kAdd>(all, 0, to, v, sums);
  for (int k = 0; k < all.count; ++k) Pass<1, kStore, kAdd>(all, k, to, v, sums);
}

void Store(const DeflatedRows& all, float* const* to) { Passes<true, false>(all, to, nullptr, nullptr); }
void Add(const DeflatedRows& all, const double* v, double* sums) { Passes<false, true>(all, nullptr, v, sums); }
void StoreAndAdd(const DeflatedRows& all, float* const* to, const double* v, double* sums) {
  Passes<true, true>(all, to, v, sums);
}

/// The sums of u with kRows deflated rows, sixteen positions at a time.
template <int kRows>
void DotsOf(const DeflatedRows& all, int first, const float* u, double* dots) {
  const float* const* rows = all.rows + first;
  WideVector factor[kRows], product[kRows][kVectors];
  for (int r = 0; r < kRows; ++r) {
    factor[r] = hn::Set(Wide(), static_cast<double>(all.factors[first + r]));
    for (int k = 0; k < kVectors; ++k) product[r][k] = hn::Zero(Wide());
  }
  int i = 0;
  for (; all.n - i >= kLanes; i += kLanes) {
    for (int r = 0; r < kRows; ++r) FetchAhead(rows[r] + i);
    for (int k = 0; k < kVectors; ++k) {
      const int at = i + k * kWidth;
      const WideVector w = Widen(Load(all.w + at)), other = Widen(Load(u + at));
      for (int r = 0; r < kRows; ++r)
        product[r][k] =
            AddProduct<float>(other, Widen(SumOf<float>(Load(rows[r] + at), w, factor[r])), product[r][k]);
    }
  }
  if (i < all.n) {  // the cells left over are formed one by one: a factor times nothing may be no zero
    float cells[kRows][kLanes], *to[kRows];
    for (int r = 0; r < kRows; ++r) to[r] = cells[r];
    const DeflatedRows some{rows, all.factors + first, kRows, all.w, all.n};
    scalar::StoreDeflated(DeflatedFrom(some, i).rows, to);
    for (int k = 0; k < kVectors; ++k) {
      const int done = k * kWidth, left = all.n - i - done;
      const WideVector other = Widen(LoadFirst(u + i + done, left));
      for (int r = 0; r < kRows; ++r)
        product[r][k] = AddProduct<float>(other, Widen(LoadFirst(cells[r] + done, left)), product[r][k]);
    }
  }
  for (int r = 0; r < kRows; ++r) dots[first + r] = Fold(product[r]);
}

void Dots(const DeflatedRows& all, const float* u, double* dots) {
  if (kVectors <= 2 && all.count == kRowsSideBySide) return DotsOf<kRowsSideBySide>(all, 0, u, dots);
  int k = 0;
  for (; all.count - k >= 2; k += 2) DotsOf<2>(all, k, u, dots);
  if (k < all.count) DotsOf<1>(all, k, u, dots);
}

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kalmia::simd {

HWY_EXPORT(Store);
HWY_EXPORT(Add);
HWY_EXPORT(StoreAndAdd);
HWY_EXPORT(Dots);

void StoreDeflated(const DeflatedRows& deflated, float* const* to) {
  UsesScalarTwins() ? scalar::StoreDeflated(deflated, to) : HWY_DYNAMIC_DISPATCH(Store)(deflated, to);
}
void AddDeflated(const DeflatedRows& deflated, const double* v, double* sums) {
  UsesScalarTwins() ? scalar::AddDeflated(deflated, v, sums) : HWY_DYNAMIC_DISPATCH(Add)(deflated, v, sums);
}
void StoreAndAddDeflated(const DeflatedRows& deflated, float* const* to, const double* v, double* sums) {
  UsesScalarTwins() ? scalar::StoreAndAddDeflated(deflated, to, v, sums)
                    : HWY_DYNAMIC_DISPATCH(StoreAndAdd)(deflated, to, v, sums);
}
void DotDeflated(const DeflatedRows& deflated, const float* u, double* dots) {
  UsesScalarTwins() ? scalar::DotDeflated(deflated, u, dots) : HWY_DYNAMIC_DISPATCH(Dots)(deflated, u, dots);
}

}  // namespace kalmia::simd

#endif
