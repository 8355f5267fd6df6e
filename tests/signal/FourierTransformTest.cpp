#include "kalmia/signal/internal/FourierTransform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

#include "signal/PlainFourier.h"

using kalmia::FourierTransform;

namespace {

struct Cells {
  std::vector<double> re, im;
};

Cells SomeCells(int n) {
  const std::vector<float> re = Signal(n, 1), im = Signal(n, 2);
  return {{re.begin(), re.end()}, {im.begin(), im.end()}};
}

void Put(const Cells& cells, FourierTransform* transform) {
  std::copy(cells.re.begin(), cells.re.end(), transform->Re());
  std::copy(cells.im.begin(), cells.im.end(), transform->Im());
}

/// The length of all cells, sqrt(sum |x|^2).
double Length(const Cells& cells) {
  double squares = 0;
  for (const std::vector<double>* part : {&cells.re, &cells.im})
    for (const double cell : *part) squares += cell * cell;
  return std::sqrt(squares);
}

TEST(FourierTransform, IsTheSumOfItsDefinitionAtEverySize) {
  FourierTransform transform(512);  // one object for all sizes
  for (int n = 1; n <= 512; n *= 2) {
    const Cells x = SomeCells(n);
    Put(x, &transform);
    transform.Forward(n);
    // Roots that go on by increments are off by a few roundings a step, some n 2^-53 at the end; so is each cell, of
    // the length of all of them.
    const double off = n * 4 * 0x1p-53 * Length(x) * std::sqrt(n);
    for (int k = 0; k < n; ++k) {
      std::complex<long double> sum = 0;
      for (int j = 0; j < n; ++j)
        sum += std::complex<long double>(x.re[j], x.im[j]) * std::polar(1.0L, 2 * std::acos(-1.0L) * (j * k % n) / n);
      EXPECT_NEAR(transform.Re()[k], sum.real(), off) << n << ", " << k;
      EXPECT_NEAR(transform.Im()[k], sum.imag(), off) << n << ", " << k;
    }
  }
}

TEST(FourierTransform, ComesBackToItsSizeTimesWhatWasThere) {
  for (int n = 1; n <= 1 << 15; n *= 2) {
    const Cells x = SomeCells(n);
    FourierTransform transform(n);
    Put(x, &transform);
    transform.Forward(n);
    transform.Backward(n);
    const double off = n * 4 * 0x1p-53 * Length(x);  // as above, and length n / sqrt(n) of them fall on a cell
    for (int j = 0; j < n; ++j) {
      ASSERT_NEAR(transform.Re()[j] / n, x.re[j], off) << n << ", " << j;
      ASSERT_NEAR(transform.Im()[j] / n, x.im[j], off) << n << ", " << j;
    }
  }
}

TEST(FourierTransform, KnowsTheRootsOfUnityOfEverySize) {
  const FourierTransform transform(1024);
  for (int size = 2; size <= 1024; size *= 2)
    for (int k = 0; k < size / 2; ++k) {
      EXPECT_NEAR(transform.RootRe(k, size), std::cos(2 * std::acos(-1.0L) * k / size), size * 4 * 0x1p-53);
      EXPECT_NEAR(transform.RootIm(k, size), std::sin(2 * std::acos(-1.0L) * k / size), size * 4 * 0x1p-53);
    }
}

}  // namespace
