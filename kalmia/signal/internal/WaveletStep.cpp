#include "kalmia/signal/internal/WaveletStep.h"

#include <algorithm>
#include <cstddef>

#include "kalmia/kernels/simd/TapSums.h"

namespace kalmia {
namespace {

constexpr int kFirst = 0, kSecond = 1;  ///< the two sequences

int TapsOf(const std::vector<double>& filter) { return static_cast<int>(filter.size()); }

std::size_t Room(int cells) { return static_cast<std::size_t>(cells); }

/// index / 2 towards minus infinity.
int HalfBelow(int index) { return (index - (index & 1)) / 2; }

}  // namespace

WaveletStep::WaveletStep(const NCDataVector<float>& lowPass, const NCDataVector<float>& highPass)
    : low_(lowPass.begin(), lowPass.end()),
      high_(highPass.begin(), highPass.end()),
      margin_(std::max(TapsOf(low_), TapsOf(high_)) / 2 + 1) {}

double* WaveletStep::Cell(int sequence, int index) {
  const std::ptrdiff_t length = std::ptrdiff_t{half_} + 2 * margin_;
  return sequences_.get() + sequence * length + margin_ + index;
}

void WaveletStep::Prepare(int half) {
  half_ = half;
  if (half > room_) {
    sequences_.reset(new double[2 * (Room(half) + 2 * Room(margin_))]);
    results_.reset(new float[2 * Room(half)]);
    room_ = half;
  }
  from_.clear();
  taps_.clear();
}

/// A filter may be longer than the sequence: the continuation goes on from cells of itself.
void WaveletStep::Continue(int sequence) {
  double* cells = Cell(sequence, 0);
  for (int i = 1; i <= margin_; ++i) cells[-i] = cells[half_ - i];
  for (int i = 0; i < margin_; ++i) cells[half_ + i] = cells[i];
}

void WaveletStep::Forward(const float* block, float* low, float* high, int n) {
  Prepare(n / 2);
  double* even = Cell(kFirst, 0);
  double* odd = Cell(kSecond, 0);
  for (int k = 0; k < half_; ++k) {
    even[k] = static_cast<double>(block[2 * k]);
    odd[k] = static_cast<double>(block[2 * k + 1]);
  }
  Continue(kFirst);
  Continue(kSecond);

  for (int i = 0; i < TapsOf(low_); ++i) {
    const int index = TapsOf(low_) - 1 - i;
    from_.push_back(Cell(index & 1, HalfBelow(index)));
  }
  simd::SumTaps(from_.data(), low_.data(), TapsOf(low_), low, half_);
  from_.clear();
  for (int i = 0; i < TapsOf(high_); ++i) from_.push_back(Cell((1 - i) & 1, HalfBelow(1 - i)));
  simd::SumTaps(from_.data(), high_.data(), TapsOf(high_), high, half_);
}

void WaveletStep::Backward(const float* low, const float* high, float* block, int n) {
  Prepare(n / 2);
  std::copy_n(low, half_, Cell(kFirst, 0));
  std::copy_n(high, half_, Cell(kSecond, 0));
  Continue(kFirst);
  Continue(kSecond);

  const int shift = HalfBelow(TapsOf(high_)) - 1;
  for (int parity = 0; parity <= 1; ++parity) {
    from_.clear();
    taps_.clear();
    for (int i = parity; i < std::max(TapsOf(low_), TapsOf(high_)); i += 2) {
      const int back = i / 2;
      if (i < TapsOf(low_)) {
        from_.push_back(Cell(kFirst, -back));
        taps_.push_back(low_[Room(i)]);
      }
      if (i < TapsOf(high_)) {
        from_.push_back(Cell(kSecond, shift - back));
        taps_.push_back(high_[Room(i)]);
      }
    }
    simd::SumTaps(from_.data(), taps_.data(), TapsOf(taps_), results_.get() + parity * half_, half_);
  }
  const float* even = results_.get();
  const float* odd = even + half_;
  for (int k = 0; k < half_; ++k) {
    block[2 * k] = even[k];
    block[2 * k + 1] = odd[k];
  }
}

}  // namespace kalmia
