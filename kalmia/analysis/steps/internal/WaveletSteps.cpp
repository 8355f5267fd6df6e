#include "kalmia/analysis/steps/internal/WaveletSteps.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <utility>

#include "kalmia/analysis/steps/internal/RowByRow.h"
#include "kalmia/signal/SignalLength.h"
#include "kalmia/signal/Wavelet.h"
#include "kalmia/signal/WaveletTaps.h"

namespace kalmia::analysis {

namespace {

using Cells = std::vector<double>;

constexpr double kDeviationsInMedian = 0.6745;  ///< the upper quartile of the standard normal distribution

constexpr std::size_t kLeastDetails = 4;  ///< a median of fewer is that of one or two cells

WaveletTaps Decomposition(const Step& step) { return DecompositionTaps(step.Family(), step.Filter()); }

WaveletTaps Reconstruction(const Step& step) { return ReconstructionTaps(step.Family(), step.Filter()); }

/// The cells with holes filled along straight lines, flat at both ends; one cell at least is there.
Cells Filled(const double* row, int columns) {
  Cells cells(row, row + columns);
  const auto n = cells.size();
  std::size_t left = n;  // the last present cell so far
  for (std::size_t i = 0; i < n; ++i) {
    if (std::isnan(row[i])) continue;
    const std::size_t from = left == n ? 0 : left + 1;
    for (std::size_t k = from; k < i; ++k) {
      const double share = left == n ? 1.0 : static_cast<double>(k - left) / static_cast<double>(i - left);
      cells[k] = left == n ? row[i] : row[left] + share * (row[i] - row[left]);
    }
    left = i;
  }
  std::fill(cells.begin() + static_cast<std::ptrdiff_t>(left), cells.end(), row[left]);
  return cells;
}

/// Extends the cells by a ramp from their end back to their start, see PadBackToStart.
void Pad(std::size_t length, Cells* cells) {
  const double first = cells->front();
  const double last = cells->back();
  const std::size_t padding = length - cells->size();
  if (padding == 1) cells->push_back((last - first) / 2.0);
  for (std::size_t t = 0; padding > 1 && t < padding; ++t) {
    cells->push_back(last - static_cast<double>(t) * (last - first) / static_cast<double>(padding - 1));
  }
}

/// Cells with their periodic continuation: so many more in front and behind.
Cells Continued(const double* cells, std::size_t n, std::size_t margin) {
  Cells continued(n + 2 * margin);
  const std::size_t start = n - margin % n;
  for (std::size_t i = 0; i < continued.size(); ++i) continued[i] = cells[(start + i) % n];
  return continued;
}

/// One level of the periodic transform, in place: see Wavelet. Of a block of n = 2 h cells, indices modulo n,
///   low[k] = sum over i of lowPass[i] block[2 k + L - 1 - i],  high[k] = sum over i of highPass[i] block[2 k + 1 - i].
void ForwardLevel(const WaveletTaps& taps, std::size_t n, double* block) {
  const std::size_t length = taps.lowPass.size();
  const Cells cells = Continued(block, n, length);
  for (std::size_t k = 0; k < n / 2; ++k) {
    double low = 0.0;
    double high = 0.0;
    for (std::size_t i = 0; i < length; ++i) {
      low += taps.lowPass[i] * cells[length + 2 * k + length - 1 - i];
      high += taps.highPass[i] * cells[length + 2 * k + 1 - i];
    }
    block[k] = low;
    block[n / 2 + k] = high;
  }
}

/// Its inverse, over the taps i whose parity is that of j, indices modulo h:
///   block[j] = sum of lowPass[i] low[(j - i) / 2] + highPass[i] high[(j - i) / 2 + L / 2 - 1].
void BackwardLevel(const WaveletTaps& taps, std::size_t n, double* block) {
  const std::size_t length = taps.lowPass.size();
  const Cells low = Continued(block, n / 2, length);
  const Cells high = Continued(block + n / 2, n / 2, length);
  for (std::size_t j = 0; j < n; ++j) {
    double sum = 0.0;
    for (std::size_t i = j % 2; i < length; i += 2) {
      const std::size_t place = (2 * length + j - i) / 2;
      sum += taps.lowPass[i] * low[place] + taps.highPass[i] * high[place + length / 2 - 1];
    }
    block[j] = sum;
  }
}

/// The coefficients of a row.
Cells Forward(const double* row, int columns, const WaveletTaps& taps) {
  Cells cells = Filled(row, columns);
  Pad(static_cast<std::size_t>(kalmia::PowerLength(columns)), &cells);
  for (std::size_t n = cells.size(); n > 1; n /= 2) ForwardLevel(taps, n, cells.data());
  return cells;
}

/// The first `channels` cells of the signal with these coefficients, a power of two of them.
Cells Backward(Cells coefficients, const WaveletTaps& taps, int channels) {
  for (std::size_t n = 2; n <= coefficients.size(); n *= 2) BackwardLevel(taps, n, coefficients.data());
  coefficients.resize(static_cast<std::size_t>(channels));
  return coefficients;
}

NCIntegralVector<int, -99> Indices(const std::vector<int>& positions) {
  NCIntegralVector<int, -99> indices;
  for (const int position : positions) indices.push_back(position);
  return indices;
}

/// Whether all taps that make the finest detail `which`, from 0, fall on present cells of the row. Where they go beyond
/// the row they fall on padding, and where that is none, on its beginning again.
bool IsOfCells(const Cells& highPass, const double* row, int columns, int length, int which) {
  for (std::size_t i = 0; i < highPass.size(); ++i) {
    if (highPass[i] == 0.0) continue;
    const int place = (2 * which + 1 - static_cast<int>(i)) % length;
    const int cell = place < 0 ? place + length : place;
    if (cell >= columns || std::isnan(row[cell])) return false;
  }
  return true;
}

/// The mean of the two middle ones where their number is even.
double MedianOf(Cells cells) {
  std::sort(cells.begin(), cells.end());
  const std::size_t half = cells.size() / 2;
  return cells.size() % 2 == 1 ? cells[half] : (cells[half - 1] + cells[half]) / 2.0;
}

/// The noise of the cells, by the median of the finest details: see Denoised.
double NoiseOf(const double* row, int columns, const Cells& highPass, const Cells& coefficients) {
  const std::size_t half = coefficients.size() / 2;
  Cells finest;
  for (std::size_t i = 0; i < half; ++i) {
    if (!IsOfCells(highPass, row, columns, static_cast<int>(coefficients.size()), static_cast<int>(i))) continue;
    finest.push_back(std::fabs(coefficients[half + i]));
  }
  return finest.size() < kLeastDetails ? 0.0 : MedianOf(finest) / kDeviationsInMedian;
}

/// The first coefficient is no detail and stays.
void Soften(double threshold, Cells* coefficients) {
  for (std::size_t i = 1; i < coefficients->size(); ++i) {
    double& detail = (*coefficients)[i];
    detail = std::copysign(std::max(0.0, std::fabs(detail) - threshold), detail);
  }
}

}  // namespace

std::vector<int> LargestCoefficients(const Step& step, const CellRows& signals, WorkProgress* progress) {
  const WaveletTaps taps = Decomposition(step);
  Cells squares(static_cast<std::size_t>(kalmia::PowerLength(signals.Columns())), 0.0);
  RowByRow(signals, /*columns=*/0, progress, [&](int /*r*/, const double* row) {
    const Cells coefficients = Forward(row, signals.Columns(), taps);
    for (std::size_t i = 0; i < squares.size(); ++i) squares[i] += coefficients[i] * coefficients[i];
    return Cells();
  });
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

CellRows Compressed(const LearntStep& compress, const CellRows& signals, WorkProgress* progress) {
  const WaveletTaps taps = Decomposition(compress.step);
  const auto kept = static_cast<int>(compress.positions.size());
  return RowByRow(signals, kept, progress, [&](int /*r*/, const double* row) {
    const Cells coefficients = Forward(row, signals.Columns(), taps);
    Cells cells;
    for (const int position : compress.positions) cells.push_back(coefficients[static_cast<std::size_t>(position) - 1]);
    return cells;
  });
}

CellRows Restored(const LearntStep& compress, int channels, const CellRows& coefficients, WorkProgress* progress) {
  const WaveletTaps taps = Reconstruction(compress.step);
  return RowByRow(coefficients, channels, progress, [&](int /*r*/, const double* row) {
    Cells whole(static_cast<std::size_t>(kalmia::PowerLength(channels)), 0.0);
    for (std::size_t k = 0; k < compress.positions.size(); ++k) {
      if (!std::isnan(row[k])) whole[static_cast<std::size_t>(compress.positions[k]) - 1] = row[k];
    }
    return Backward(std::move(whole), taps, channels);
  });
}

CellRows Denoised(const Step& step, const CellRows& signals, WorkProgress* progress) {
  const WaveletTaps forward = Decomposition(step);
  const WaveletTaps backward = Reconstruction(step);
  const int channels = signals.Columns();
  return RowByRow(signals, channels, progress, [&](int /*r*/, const double* row) {
    Cells coefficients = Forward(row, channels, forward);
    const double noise = NoiseOf(row, channels, forward.highPass, coefficients);
    Soften(noise * std::sqrt(2.0 * std::log(channels)), &coefficients);
    Cells cells = Backward(std::move(coefficients), backward, channels);
    for (std::size_t c = 0; c < cells.size(); ++c) {
      if (std::isnan(row[c])) cells[c] = row[c];
    }
    return cells;
  });
}

}  // namespace kalmia::analysis
