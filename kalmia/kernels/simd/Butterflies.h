#pragma once

/// The passes of a Fourier transform that combine four partial transforms into one. All products and sums are rounded
/// to double one by one, never fused: lanes and twins give the same bits.
namespace kalmia::simd {

/// One pass over `count` transforms of `length` cells each, x, that makes count / 4 of 4 length cells out of them, y.
/// Real and imaginary parts lie apart, each in an array from its first cell on; no two of the arrays overlap. Cell j of
/// a transform is turned by the power j of the root of unity of the combined one before it is added:
///   y_p[j + q length] = sum over t = 0..3 of i^(q t) w^(t j) x_(p + t count / 4)[j],   w = e^(2 pi i / (4 length)).
/// `length` and `count` are powers of two, count >= 4. The roots of size s stand at s / 2 + k, 0 <= k < s / 2.
struct FourierPass {
  const double *xRe, *xIm;
  double *yRe, *yIm;
  const double *rootRe, *rootIm;
  int length, count;
};

/// Cell j of transform p stands at j count + p, before; at j count / 4 + p, afterwards.
void CombineSideBySide(const FourierPass& pass);
/// Cell j of transform p stands at p length + j, before; at p 4 length + j, afterwards.
void CombineInRows(const FourierPass& pass);

/// The twins.
namespace scalar {
void CombineSideBySide(const FourierPass& pass);
void CombineInRows(const FourierPass& pass);
}  // namespace scalar

}  // namespace kalmia::simd
