#include "app/WaveletSteps.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <numeric>

#include "app/Scaling.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/signal/Wavelet.h"

namespace kalmia::app {

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;
using Filters = std::unique_ptr<Wavelet::WaveletFilters, void (*)(Wavelet::WaveletFilters*)>;

constexpr double kDeviationsInMedian = 0.6745;  ///< the upper quartile of the standard normal distribution

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();

/// Filters that are cleaned up.
Filters Owned(const Wavelet::WaveletFilters& filters) {
  return {new Wavelet::WaveletFilters(filters), [](Wavelet::WaveletFilters* owned) {
            owned->CleanUp();
            delete owned;
          }};
}

Filters Decomposition(const Step& step) {
  return Owned(Wavelet::GetDecompositionFilter(step.Family(), step.Filter()));
}

Filters Reconstruction(const Step& step) {
  return Owned(Wavelet::GetReconstructionFilter(step.Family(), step.Filter()));
}

/// Null for a row without a cell.
std::unique_ptr<Vector> Forward(const Vector& row, const Wavelet::WaveletFilters& filters) {
  long double mean = 0;
  long double slope = 0;
  return std::unique_ptr<Vector>(
      Wavelet::ForwardTransform(&row, filters, Wavelet::DetrendNone, mean, slope, nullptr, true));
}

Vector Backward(const Vector& coefficients, const Wavelet::WaveletFilters& filters, int channels) {
  const std::unique_ptr<Vector> signal(
      Wavelet::BackwardTransform(&coefficients, filters, Wavelet::DetrendNone, channels, 0.0, 0.0, nullptr));
  return *signal;
}

NCIntegralVector<int, -99> Indices(const std::vector<int>& positions) {
  NCIntegralVector<int, -99> indices;
  for (const int position : positions) indices.push_back(position);
  return indices;
}

/// Sums of large cells may go beyond the floats.
bool AreFinite(const Vector& coefficients) {
  return std::all_of(coefficients.begin(), coefficients.end(), [](float cell) { return std::isfinite(cell); });
}

/// The median of |d| over the finest details of the channels: those of the padding are no noise.
double MedianOfFinest(const Vector& coefficients, int channels) {
  const int half = coefficients.Size() / 2;
  Vector finest;
  for (int i = 1; i <= channels / 2; ++i) finest.push_back(std::fabs(coefficients[half + i]));
  return static_cast<double>(finest.GetMedian());
}

/// The first coefficient is no detail and stays.
void Soften(int channels, Vector* coefficients) {
  const int n = coefficients->Size();
  (*coefficients)(1, UnlessMissing((*coefficients)[1]));
  if (channels < 2) return;
  const double threshold =
      MedianOfFinest(*coefficients, channels) / kDeviationsInMedian * std::sqrt(2.0 * std::log(channels));
  for (int i = 2; i <= n; ++i) {
    const double detail = (*coefficients)[i];
    const double left = std::max(0.0, std::fabs(detail) - threshold);
    (*coefficients)(i, UnlessMissing(static_cast<float>(std::copysign(left, detail))));
  }
}

}  // namespace

int Coefficients(int channels) {
  int cells = 1;
  while (cells < channels) cells *= 2;
  return cells;
}

std::vector<int> LargestCoefficients(const Step& step, const Matrix& signals) {
  const Filters filters = Decomposition(step);
  std::vector<double> squares(static_cast<std::size_t>(Coefficients(signals.SizeColumns())), 0.0);
  for (const Vector& row : signals) {
    const std::unique_ptr<Vector> coefficients = Forward(row, *filters);
    if (!coefficients) continue;
    for (std::size_t i = 0; i < squares.size(); ++i) {
      const double cell = (*coefficients)[static_cast<int>(i) + 1];
      squares[i] += std::isfinite(cell) ? cell * cell : kInfinity;  // kept, and refused for it
    }
  }
  std::vector<int> positions(squares.size());
  std::iota(positions.begin(), positions.end(), 1);
  std::stable_sort(positions.begin(), positions.end(), [&squares](int a, int b) {
    return squares[static_cast<std::size_t>(a) - 1] > squares[static_cast<std::size_t>(b) - 1];
  });
  positions.resize(static_cast<std::size_t>(step.Whole(0)));
  std::sort(positions.begin(), positions.end());
  return positions;
}

std::vector<std::string> CoefficientNames(const LearntStep& compress) {
  const NCIntegralVector<int, -99> indices = Indices(compress.positions);
  const std::unique_ptr<NCStringVector> names(Wavelet::MakeVarNames("wavelet", &indices));
  std::vector<std::string> result;
  for (int i = 1; i <= names->Size(); ++i) result.emplace_back((*names)[i]);
  return result;
}

Matrix Compressed(const LearntStep& compress, const Matrix& signals) {
  const Filters filters = Decomposition(compress.step);
  const auto kept = static_cast<int>(compress.positions.size());
  Matrix result(signals.SizeRows(), kept);
  for (int r = 1; r <= signals.SizeRows(); ++r) {
    const std::unique_ptr<Vector> coefficients = Forward(signals[r], *filters);
    if (!coefficients) continue;
    for (int c = 1; c <= kept; ++c) {
      result(r, c, UnlessMissing((*coefficients)[compress.positions[static_cast<std::size_t>(c) - 1]]));
    }
  }
  return result;
}

Matrix Restored(const LearntStep& compress, int channels, const Matrix& coefficients) {
  const Filters filters = Reconstruction(compress.step);
  const NCIntegralVector<int, -99> indices = Indices(compress.positions);
  Matrix result(coefficients.SizeRows(), channels);
  for (int r = 1; r <= coefficients.SizeRows(); ++r) {
    const Vector& row = coefficients[r];
    if (row.GetNumMisVal() == row.Size()) continue;
    const std::unique_ptr<Vector> whole(Wavelet::UncompressVector(&row, &indices, channels, nullptr, true));
    const Vector signal = Backward(*whole, *filters, channels);
    for (int c = 1; c <= channels; ++c) result(r, c, UnlessMissing(signal[c]));
  }
  return result;
}

Matrix Denoised(const Step& step, const Matrix& signals) {
  const Filters forward = Decomposition(step);
  const Filters backward = Reconstruction(step);
  const int channels = signals.SizeColumns();
  Matrix result(signals.SizeRows(), channels);
  for (int r = 1; r <= signals.SizeRows(); ++r) {
    const std::unique_ptr<Vector> coefficients = Forward(signals[r], *forward);
    if (!coefficients) continue;
    const bool isFinite = AreFinite(*coefficients);
    if (isFinite) Soften(channels, coefficients.get());
    const Vector signal = Backward(*coefficients, *backward, channels);
    for (int c = 1; c <= channels; ++c) {
      if (signals[r][c] != kMissingCell<float>) result(r, c, isFinite ? UnlessMissing(signal[c]) : kNoNumber);
    }
  }
  return result;
}

}  // namespace kalmia::app
