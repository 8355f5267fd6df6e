#include "kalmia/analysis/steps/internal/WaveletSteps.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <numeric>

#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/steps/internal/RowByRow.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/signal/SignalLength.h"
#include "kalmia/signal/Wavelet.h"

namespace kalmia::analysis {

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;
using Cells = std::vector<float>;

constexpr double kDeviationsInMedian = 0.6745;  ///< the upper quartile of the standard normal distribution

constexpr int kLeastDetails = 4;  ///< a median of fewer is that of one or two cells

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();

/// Filters that are cleaned up.
class Filters {
 public:
  explicit Filters(const Wavelet::WaveletFilters& filters) : filters_(filters) {}
  ~Filters() { filters_.CleanUp(); }
  Filters(const Filters&) = delete;
  Filters& operator=(const Filters&) = delete;

  const Wavelet::WaveletFilters& operator*() const { return filters_; }
  const Wavelet::WaveletFilters* operator->() const { return &filters_; }

 private:
  Wavelet::WaveletFilters filters_;
};

Filters Decomposition(const Step& step) {
  return Filters(Wavelet::GetDecompositionFilter(step.Family(), step.Filter()));
}

Filters Reconstruction(const Step& step) {
  return Filters(Wavelet::GetReconstructionFilter(step.Family(), step.Filter()));
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

/// Whether all taps that make the finest detail `which`, from 1, fall on present cells of the row. Where they go beyond
/// the row they fall on padding, and where that is none, on its beginning again.
bool IsOfCells(const Vector& highPass, const Vector& row, int length, int which) {
  for (int i = 1; i <= highPass.Size(); ++i) {
    if (highPass[i] == 0.0F) continue;
    const int place = (2 * which - i) % length;
    const int cell = (place < 0 ? place + length : place) + 1;
    if (cell > row.Size() || row[cell] == kMissingCell<float>) return false;
  }
  return true;
}

/// The noise of the cells, by the median of the finest details: see Denoised.
double NoiseOf(const Vector& row, const Vector& highPass, const Vector& coefficients) {
  const int half = coefficients.Size() / 2;
  Vector finest;
  for (int i = 1; i <= half; ++i) {
    if (IsOfCells(highPass, row, coefficients.Size(), i)) finest.push_back(std::fabs(coefficients[half + i]));
  }
  return finest.Size() < kLeastDetails ? 0.0 : static_cast<double>(finest.GetMedian()) / kDeviationsInMedian;
}

/// The first coefficient is no detail and stays.
void Soften(double threshold, Vector* coefficients) {
  (*coefficients)(1, AvoidMissingValue((*coefficients)[1]));
  for (int i = 2; i <= coefficients->Size(); ++i) {
    const double detail = (*coefficients)[i];
    const double left = std::max(0.0, std::fabs(detail) - threshold);
    (*coefficients)(i, AvoidMissingValue(static_cast<float>(std::copysign(left, detail))));
  }
}

}  // namespace

std::vector<int> LargestCoefficients(const Step& step, const Matrix& signals, WorkProgress* progress) {
  const Filters filters = Decomposition(step);
  std::vector<double> squares(static_cast<std::size_t>(kalmia::PowerLength(signals.SizeColumns())), 0.0);
  for (int r = 1; r <= signals.SizeRows(); ++r) {
    progress->MoveToPart(r, signals.SizeRows());
    const std::unique_ptr<Vector> coefficients = Forward(signals[r], *filters);
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

Matrix Compressed(const LearntStep& compress, const Matrix& signals, WorkProgress* progress) {
  const Filters filters = Decomposition(compress.step);
  const auto kept = static_cast<int>(compress.positions.size());
  return RowByRow(signals, kept, progress, [&](int /*r*/, const Vector& row) {
    const std::unique_ptr<Vector> coefficients = Forward(row, *filters);
    Cells cells;
    for (const int position : compress.positions) cells.push_back(AvoidMissingValue((*coefficients)[position]));
    return cells;
  });
}

Matrix Restored(const LearntStep& compress, int channels, const Matrix& coefficients, WorkProgress* progress) {
  const Filters filters = Reconstruction(compress.step);
  const NCIntegralVector<int, -99> indices = Indices(compress.positions);
  return RowByRow(coefficients, channels, progress, [&](int /*r*/, const Vector& row) {
    const std::unique_ptr<Vector> whole(Wavelet::UncompressVector(&row, &indices, channels, nullptr, true));
    const Vector signal = Backward(*whole, *filters, channels);
    Cells cells(signal.begin(), signal.end());
    for (float& cell : cells) cell = AvoidMissingValue(cell);
    return cells;
  });
}

Matrix Denoised(const Step& step, const Matrix& signals, WorkProgress* progress) {
  const Filters forward = Decomposition(step);
  const Filters backward = Reconstruction(step);
  const int channels = signals.SizeColumns();
  return RowByRow(signals, channels, progress, [&](int /*r*/, const Vector& row) {
    const std::unique_ptr<Vector> coefficients = Forward(row, *forward);
    const bool isFinite = AreFinite(*coefficients);
    const double noise = NoiseOf(row, *forward->highPass, *coefficients);
    if (isFinite) Soften(noise * std::sqrt(2.0 * std::log(channels)), coefficients.get());
    const Vector signal = Backward(*coefficients, *backward, channels);
    Cells cells(row.begin(), row.end());
    for (int c = 1; c <= channels; ++c) {
      float& cell = cells[static_cast<std::size_t>(c) - 1];
      if (cell != kMissingCell<float>) cell = isFinite ? AvoidMissingValue(signal[c]) : kNoNumber;
    }
    return cells;
  });
}

}  // namespace kalmia::analysis
