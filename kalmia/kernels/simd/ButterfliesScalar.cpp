#include "kalmia/kernels/simd/Butterflies.h"

namespace kalmia::simd {
namespace scalar {
namespace {

struct Complex {
  double re, im;
};

Complex operator+(Complex a, Complex b) { return {a.re + b.re, a.im + b.im}; }
Complex operator-(Complex a, Complex b) { return {a.re - b.re, a.im - b.im}; }
Complex operator*(Complex a, Complex b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
Complex TimesI(Complex a) { return {-a.im, a.re}; }

Complex Root(const FourierPass& pass, int k, int halfSize) {
  return {pass.rootRe[halfSize + k], pass.rootIm[halfSize + k]};
}

/// The four cells from x[from] on, `read` apart, become the four from y[to] on, `write` apart.
void CombineFour(const FourierPass& pass, int j, int from, int read, int to, int write) {
  const auto cell = [&](int t) { return Complex{pass.xRe[from + t * read], pass.xIm[from + t * read]}; };
  const auto put = [&](int q, Complex c) {
    pass.yRe[to + q * write] = c.re;
    pass.yIm[to + q * write] = c.im;
  };
  const Complex one = Root(pass, j, 2 * pass.length), two = Root(pass, j, pass.length), three = one * two;
  const Complex a = cell(0), b = one * cell(1), c = two * cell(2), d = three * cell(3);
  const Complex evenSum = a + c, evenGap = a - c, oddSum = b + d, oddGap = TimesI(b - d);
  put(0, evenSum + oddSum);
  put(1, evenGap + oddGap);
  put(2, evenSum - oddSum);
  put(3, evenGap - oddGap);
}

}  // namespace

void CombineSideBySide(const FourierPass& pass) {
  const int quarter = pass.count / 4;
  for (int j = 0; j < pass.length; ++j)
    for (int p = 0; p < quarter; ++p)
      CombineFour(pass, j, j * pass.count + p, quarter, j * quarter + p, pass.length * quarter);
}

void CombineInRows(const FourierPass& pass) {
  const int quarter = pass.count / 4;
  for (int p = 0; p < quarter; ++p)
    for (int j = 0; j < pass.length; ++j)
      CombineFour(pass, j, p * pass.length + j, quarter * pass.length, 4 * p * pass.length + j, pass.length);
}

}  // namespace scalar
}  // namespace kalmia::simd
