#include "kalmia/kernels/simd/Quotients.h"

#include <limits>

#include "kalmia/kernels/simd/Targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kalmia/kernels/simd/Quotients.cpp"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "kalmia/kernels/simd/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kalmia::simd::HWY_NAMESPACE {

bool FloatQuotients(const double* numerators, double divisor, int n, float* cells) {
  const Wide d;
  const hn::Rebind<std::uint64_t, Wide> bitsOf;
  const WideVector by = hn::Set(d, divisor), zero = hn::Zero(d);
  const WideVector smallest = hn::Set(d, static_cast<double>(std::numeric_limits<float>::min()));
  const auto below = hn::Set(bitsOf, std::uint64_t{kBitsBelowFloat});
  const auto border = hn::Set(bitsOf, std::uint64_t{kBorderOfFloats});
  WideMask doubt = hn::FirstN(d, 0);
  int j = 0;
  for (; n - j >= kWidth; j += kWidth) {
    const WideVector quotient = hn::Div(hn::LoadU(d, numerators + j), by);
    hn::StoreU(Narrowed<float>(quotient), Narrow<float>(), cells + j);
    const auto onBorder = hn::RebindMask(d, hn::Eq(hn::And(hn::BitCast(bitsOf, quotient), below), border));
    const WideMask small = hn::AndNot(hn::Eq(quotient, zero), hn::Lt(hn::Abs(quotient), smallest));
    doubt = hn::Or(doubt, hn::Or(onBorder, small));
  }
  const bool rest = scalar::DivideToFloat(numerators + j, divisor, n - j, cells + j);
  return rest && hn::AllFalse(d, doubt);
}

}  // namespace kalmia::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kalmia::simd {

HWY_EXPORT(FloatQuotients);

bool DivideToFloat(const double* numerators, double divisor, int n, float* cells) {
  return UsesScalarTwins() ? scalar::DivideToFloat(numerators, divisor, n, cells)
                           : HWY_DYNAMIC_DISPATCH(FloatQuotients)(numerators, divisor, n, cells);
}

}  // namespace kalmia::simd

#endif
