#include "kalmia/kernels/simd/Butterflies.h"

#include "kalmia/kernels/simd/Targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kalmia/kernels/simd/Butterflies.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "kalmia/kernels/simd/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {

struct Complex {
  WideVector re, im;
};

HWY_INLINE Complex Add(Complex a, Complex b) { return {hn::Add(a.re, b.re), hn::Add(a.im, b.im)}; }
HWY_INLINE Complex Sub(Complex a, Complex b) { return {hn::Sub(a.re, b.re), hn::Sub(a.im, b.im)}; }
HWY_INLINE Complex AddTimesI(Complex a, Complex b) { return {hn::Sub(a.re, b.im), hn::Add(a.im, b.re)}; }
HWY_INLINE Complex SubTimesI(Complex a, Complex b) { return {hn::Add(a.re, b.im), hn::Sub(a.im, b.re)}; }
HWY_INLINE Complex Mul(Complex a, Complex b) {
  return {hn::Sub(hn::Mul(a.re, b.re), hn::Mul(a.im, b.im)), hn::Add(hn::Mul(a.re, b.im), hn::Mul(a.im, b.re))};
}

HWY_INLINE Complex LoadAt(const double* re, const double* im, int i) { return {Load(re + i), Load(im + i)}; }
HWY_INLINE void StoreAt(Complex c, double* re, double* im, int i) {
  hn::StoreU(c.re, Wide(), re + i);
  hn::StoreU(c.im, Wide(), im + i);
}

/// kWidth fours side by side; the roots and their products as in the twin.
HWY_INLINE void CombineFours(const FourierPass& pass, Complex one, Complex two, Complex three, int from, int read,
                             int to, int write) {
  const Complex a = LoadAt(pass.xRe, pass.xIm, from), b = Mul(one, LoadAt(pass.xRe, pass.xIm, from + read));
  const Complex c = Mul(two, LoadAt(pass.xRe, pass.xIm, from + 2 * read));
  const Complex d = Mul(three, LoadAt(pass.xRe, pass.xIm, from + 3 * read));
  const Complex evenSum = Add(a, c), evenGap = Sub(a, c), oddSum = Add(b, d), oddGap = Sub(b, d);
  StoreAt(Add(evenSum, oddSum), pass.yRe, pass.yIm, to);
  StoreAt(AddTimesI(evenGap, oddGap), pass.yRe, pass.yIm, to + write);
  StoreAt(Sub(evenSum, oddSum), pass.yRe, pass.yIm, to + 2 * write);
  StoreAt(SubTimesI(evenGap, oddGap), pass.yRe, pass.yIm, to + 3 * write);
}

void SideBySide(const FourierPass& pass) {
  const int quarter = pass.count / 4;
  if (quarter < kWidth) return scalar::CombineSideBySide(pass);
  const Wide wide;
  for (int j = 0; j < pass.length; ++j) {
    const int atOne = 2 * pass.length + j, atTwo = pass.length + j;
    const Complex one = {hn::Set(wide, pass.rootRe[atOne]), hn::Set(wide, pass.rootIm[atOne])};
    const Complex two = {hn::Set(wide, pass.rootRe[atTwo]), hn::Set(wide, pass.rootIm[atTwo])};
    const Complex three = Mul(one, two);
    for (int p = 0; p < quarter; p += kWidth)
      CombineFours(pass, one, two, three, j * pass.count + p, quarter, j * quarter + p, pass.length * quarter);
  }
}

void InRows(const FourierPass& pass) {
  if (pass.length < kWidth) return scalar::CombineInRows(pass);
  const int quarter = pass.count / 4;
  for (int p = 0; p < quarter; ++p)
    for (int j = 0; j < pass.length; j += kWidth) {
      const Complex one = LoadAt(pass.rootRe, pass.rootIm, 2 * pass.length + j);
      const Complex two = LoadAt(pass.rootRe, pass.rootIm, pass.length + j);
      CombineFours(pass, one, two, Mul(one, two), p * pass.length + j, quarter * pass.length, 4 * p * pass.length + j,
                   pass.length);
    }
}

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kalmia::simd {

HWY_EXPORT(SideBySide);
HWY_EXPORT(InRows);

void CombineSideBySide(const FourierPass& pass) {
  UsesScalarTwins() ? scalar::CombineSideBySide(pass) : HWY_DYNAMIC_DISPATCH(SideBySide)(pass);
}
void CombineInRows(const FourierPass& pass) {
  UsesScalarTwins() ? scalar::CombineInRows(pass) : HWY_DYNAMIC_DISPATCH(InRows)(pass);
}

}  // namespace kalmia::simd

#endif
