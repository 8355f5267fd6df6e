#include "kalmia/signal/internal/FourierTransform.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "kalmia/kernels/simd/Butterflies.h"

namespace kalmia {

namespace {

/// More partial transforms than this lie cell beside cell; from here on they are laid out one behind the other, so that
/// the inner loops of all passes stay long.
constexpr int kSideBySide = 16;

/// Cells between the buffers: at distances of powers of two all of them would fight for the same lines of the cache.
constexpr int kApart = 128;

/// Cells of the smallest block of memory, 256 KiB. The common C library hands a block above 128 KiB back when it is
/// freed for the first time; from then on it keeps what is at most that large.
constexpr std::size_t kSmallestBlock = 1 << 15;

std::unique_ptr<double[]> Block(std::size_t cells) {
  return std::unique_ptr<double[]>(new double[std::max(cells, kSmallestBlock)]);
}

/// Pairs of single cells become transforms of two.
void CombineTwos(const double* x, double* y, int half) {
  for (int i = 0; i < half; ++i) {
    const double a = x[i], b = x[i + half];
    y[i] = a + b;
    y[i + half] = a - b;
  }
}

/// `rows` rows of `columns` cells become `columns` rows.
void Transpose(const double* x, double* y, int rows, int columns) {
  for (int c = 0; c < columns; ++c)
    for (int r = 0; r < rows; ++r) y[c * rows + r] = x[r * columns + c];
}

/// The powers of e^(pi i / half), one after the other, by increments: with 1 - cos(theta) from the sine of half the
/// angle no digits are lost.
class TurningRoot {
 public:
  explicit TurningRoot(std::size_t half) {
    const double theta = 6.28318530717959 / static_cast<double>(2 * half), sineOfHalf = std::sin(0.5 * theta);
    stepRe_ = -2.0 * sineOfHalf * sineOfHalf;
    stepIm_ = std::sin(theta);
  }

  void PutAndTurn(double* re, double* im) {
    *re = re_;
    *im = im_;
    const double old = re_;
    re_ += re_ * stepRe_ - im_ * stepIm_;
    im_ += im_ * stepRe_ + old * stepIm_;
  }

 private:
  double re_ = 1.0, im_ = 0.0;
  double stepRe_, stepIm_;
};

bool IsOddPowerOfTwo(int size) {
  bool odd = false;
  for (; size > 1; size /= 2) odd = !odd;
  return odd;
}

}  // namespace

FourierTransform::FourierTransform(int largest)
    : cells_(Block(6 * (static_cast<std::size_t>(largest) + kApart))),
      re_(cells_.get()),
      im_(re_ + largest + kApart),
      nextRe_(im_ + largest + kApart),
      nextIm_(nextRe_ + largest + kApart),
      rootRe_(nextIm_ + largest + kApart),
      rootIm_(rootRe_ + largest + kApart) {
  if (largest < 2) return;
  // Each root waits for the one before it: those of the largest size and those of all others, which are as many, are
  // made side by side.
  const auto half = static_cast<std::size_t>(largest) / 2;
  TurningRoot ofLargest(half), ofOthers(1);
  for (std::size_t i = 0; i < half; ++i) {
    if (i > 0 && (i & (i - 1)) == 0) ofOthers = TurningRoot(i);  // where the roots of size 2 i begin
    ofOthers.PutAndTurn(rootRe_ + i, rootIm_ + i);
    ofLargest.PutAndTurn(rootRe_ + half + i, rootIm_ + half + i);
  }
}

void FourierTransform::SwapBuffers() {
  std::swap(re_, nextRe_);
  std::swap(im_, nextIm_);
}

// Before every pass there are `count` transforms of `length` cells each: the transform number p is that of the cells
// p, p + count, p + 2 count, ... of what was given.
void FourierTransform::Forward(int size) {
  int length = 1, count = size;
  if (IsOddPowerOfTwo(size)) {
    CombineTwos(re_, nextRe_, size / 2);
    CombineTwos(im_, nextIm_, size / 2);
    SwapBuffers();
    length = 2;
    count = size / 2;
  }
  const auto pass = [&] {
    return simd::FourierPass{re_, im_, nextRe_, nextIm_, rootRe_, rootIm_, length, count};
  };
  for (; count > kSideBySide; length *= 4, count /= 4) {
    simd::CombineSideBySide(pass());
    SwapBuffers();
  }
  if (length > 1 && count > 1) {
    Transpose(re_, nextRe_, length, count);
    Transpose(im_, nextIm_, length, count);
    SwapBuffers();
  }
  for (; count > 1; length *= 4, count /= 4) {
    simd::CombineInRows(pass());
    SwapBuffers();
  }
}

void FourierTransform::Backward(int size) {  // i z is what the exchange of the parts makes of the conjugate of z
  std::swap(re_, im_);
  Forward(size);
  std::swap(re_, im_);
}

}  // namespace kalmia
