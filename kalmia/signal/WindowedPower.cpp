#include "kalmia/signal/WindowedPower.h"

#include <cmath>
#include <new>
#include <numeric>
#include <vector>

#include "kalmia/signal/internal/FourierTransform.h"

namespace kalmia {

namespace {

/// Rounding the cells to float changes the length of a transform by up to 2^-24 of the root of the whole power: a
/// smaller share of it than the square of that may be none.
constexpr double kLostShare = 0x1p-48;

struct Window {
  std::vector<double> weights;
  float sum = 0.0F, sumOfSquares = 0.0F;
};

Window MakeWindow(FFT::DataWindowMode mode, int m) {
  Window window;
  window.weights.resize(2 * static_cast<std::size_t>(m));
  for (int j = 1; j <= m; ++j) {  // every window is symmetric, and a cosine costs as much as a cell's transform
    window.weights[static_cast<std::size_t>(j) - 1] = WindowAt(mode, j, m);
    window.weights[static_cast<std::size_t>(2 * m - j)] = window.weights[static_cast<std::size_t>(j) - 1];
  }
  for (const double w : window.weights) {
    window.sum += static_cast<float>(w);
    window.sumOfSquares += static_cast<float>(w * w);
  }
  return window;
}

void Weigh(const float* segment, const std::vector<double>& weights, double* out) {
  for (std::size_t j = 0; j < weights.size(); ++j) out[j] = segment[j] * weights[j];
}

/// The power of both segments, which folding the spectrum separates from what they have in common: for real parts a
/// and b, |C(j)|^2 + |C(-j)|^2 = 2 |A(j)|^2 + 2 |B(j)|^2.
void AddPower(const double* re, const double* im, int m, double* power) {
  power[0] += re[0] * re[0] + im[0] * im[0];
  const double *mirroredRe = re + 2 * m, *mirroredIm = im + 2 * m;
  for (int j = 1; j < m; ++j)
    power[j] += re[j] * re[j] + im[j] * im[j] + (mirroredRe[-j] * mirroredRe[-j] + mirroredIm[-j] * mirroredIm[-j]);
  power[m] += re[m] * re[m] + im[m] * im[m];
}

std::vector<double> SumOfPower(const float* signal, int m, int rounds, bool overlap,
                               const std::vector<double>& weights) {
  FourierTransform transform(2 * m);
  std::vector<double> power(static_cast<std::size_t>(m) + 1);
  const int step = overlap ? m : 2 * m;
  const float* segment = signal + 1;
  for (int round = 0; round < rounds; ++round, segment += 2 * step) {
    Weigh(segment, weights, transform.Re());
    Weigh(segment + step, weights, transform.Im());
    transform.Forward(2 * m);
    AddPower(transform.Re(), transform.Im(), m, power.data());
  }
  return power;
}

}  // namespace

double WindowAt(FFT::DataWindowMode window, int j, int m) {
  const double b = 1.0 / (m + 0.5), fromMiddle = (j - 1 - (m - 0.5)) * b;
  switch (window) {
    case FFT::WindowBartlett: return 1.0 - std::abs(fromMiddle);
    case FFT::WindowHann: return (1.0 - std::cos(j * 6.283185307179586 * b * 0.5)) * 0.5;
    case FFT::WindowWelch: return 1.0 - fromMiddle * fromMiddle;
  }
  return 0.0;
}

SegmentCut CutIntoSegments(int n, int m, bool overlap) {
  const float step = static_cast<float>(m) * (overlap ? 1.0F : 2.0F);
  const double steps = std::ceil(static_cast<float>(n) / step);
  const auto rounds = static_cast<int>(overlap ? std::floor(steps * 0.5) : std::ceil(steps * 0.5));
  const std::int64_t halves = overlap ? 2 * std::int64_t{rounds} + 1 : 4 * std::int64_t{rounds};
  return {rounds, halves * m};
}

bool WindowedPower(const float* signal, int m, int rounds, bool overlap, FFT::ScalingMode scaling,
                   FFT::DataWindowMode window, float* power) try {
  const Window weights = MakeWindow(window, m);
  const std::vector<double> sums = SumOfPower(signal, m, rounds, overlap, weights.weights);
  const double sum = weights.sum, sumOfSquares = weights.sumOfSquares;
  double denominator = 2.0 * rounds * sumOfSquares;
  if (scaling == FFT::ScalingWindow) denominator *= sum * sum / sumOfSquares;
  const double whole = std::accumulate(sums.begin(), sums.end(), 0.0);
  bool normal = true;
  for (std::size_t j = 0; j < sums.size(); ++j) {
    const float value = static_cast<float>(sums[j] / denominator);
    const int kind = std::fpclassify(value);
    const bool lost = kind == FP_SUBNORMAL && sums[j] < kLostShare * whole;
    normal = normal && (kind == FP_NORMAL || kind == FP_ZERO || lost);
    power[j + 1] = lost ? 0.0F : value;
  }
  return normal;
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace kalmia
