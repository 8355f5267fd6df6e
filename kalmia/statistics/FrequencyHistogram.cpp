#include "kalmia/statistics/FrequencyHistogram.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

#include "kalmia/support/CompareWithTolerance.h"

namespace {

using kalmia::kMissingCell;

constexpr double kLimitTolerance = 5e-6;                     ///< how near a value is on a bin's limit
constexpr double kDigitTolerance = 1.1920928955078125e-7;    // 2^-23, the spacing of floats at 1

bool AreEqual(double a, double b, double tolerance) { return CompareWithTolerance(a, b, tolerance) == 0; }

/// The cells that have a place in an order: neither holes nor NaNs.
std::vector<float> OrderedCells(const NCDataVector<float>& data) {
  std::vector<float> cells;
  cells.reserve(static_cast<std::size_t>(data.Size() - data.GetNumMisVal()));
  std::copy_if(data.begin(), data.end(), std::back_inserter(cells),
               [](float x) { return x != kMissingCell<float> && !std::isnan(x); });
  return cells;
}

/// Second smallest distinct value minus the smallest; -1 without two distinct values.
double FirstGap(const std::vector<float>& cells) {
  if (cells.empty()) return -1;
  const float smallest = *std::min_element(cells.begin(), cells.end());
  float second = std::numeric_limits<float>::infinity();
  for (const float x : cells)
    if (x > smallest && x < second) second = x;
  return std::isinf(second) ? -1 : static_cast<double>(second) - smallest;
}

/// The smallest gap between neighbouring distinct values, the one behind the second left out; the search ends once a
/// gap is not above `width`.
double SmallestGap(std::vector<float> cells, double width) {
  std::sort(cells.begin(), cells.end());
  cells.erase(std::unique(cells.begin(), cells.end()), cells.end());
  double smallest = static_cast<double>(cells[1]) - cells[0];
  for (std::size_t i = 2; i + 1 < cells.size() && smallest > width; ++i)
    smallest = std::min(smallest, static_cast<double>(cells[i + 1]) - cells[i]);
  return smallest;
}

/// Down to one significant digit, or one and a half.
double RoundWidth(double width) {
  const double exponent = std::floor(std::log10(width));
  const double toUnits = std::pow(10.0, -exponent);
  const double lead = std::floor(width * toUnits);
  const double base = std::pow(10.0, exponent);
  const double half = base * 0.5;
  const bool belowHalf = AreEqual(std::floor((half + width) * toUnits), lead, kDigitTolerance);
  return belowHalf ? base * lead : base * lead + half;
}

/// By truncation; numbers that no int holds go to the nearest one that is an index, a NaN to 0.
int ToIndex(double bin) {
  constexpr double kLargest = std::numeric_limits<int>::max();
  return std::isnan(bin) ? 0 : static_cast<int>(std::clamp(bin, -kLargest, kLargest));
}

/// The power of ten that widens a range below 1 to at least 1.
double ScaleOf(float minimum, float maximum) {
  if (!(minimum < maximum)) return 1.0;
  const auto magnitude = static_cast<float>(std::log10(maximum - minimum));
  return magnitude < 0 ? std::pow(10.0, std::ceil(std::fabs(magnitude))) : 1.0;
}

}  // namespace

double FrequencyHistogram::binwidth(double minimum, double maximum, const NCDataVector<float>& data) const {
  if (minimum == maximum) return 1.0;
  const int present = data.Size() - data.GetNumMisVal();
  double width = (maximum - minimum) / std::sqrt(present);
  if (data.Size() > 1) {
    const std::vector<float> cells = OrderedCells(data);
    const double firstGap = FirstGap(cells);
    if (firstGap > 0 && firstGap > width) width = std::max(width, SmallestGap(cells, width));
  }
  return width > 0 && std::isfinite(width) ? RoundWidth(width) : width;
}

int FrequencyHistogram::bindex(double value, double minimum, double width, int maximumIndex) const {
  if (AreEqual(value, minimum, kLimitTolerance)) return 0;
  const double ratio = (value - minimum) / width;
  const bool onNextLimit = AreEqual(std::ceil(ratio), ratio, kLimitTolerance);
  const int bin = ToIndex(onNextLimit ? std::ceil(ratio) : std::floor(ratio));
  if (maximumIndex >= 0) return std::min(bin, maximumIndex);
  const double multiple = value / width;
  const bool onLimit = AreEqual(std::floor(ratio), ratio, kLimitTolerance) && multiple == std::floor(multiple);
  return onLimit ? bin - 1 : bin;
}

void FrequencyHistogram::CreateHistogram(const NCDataVector<float>& data, HistogramInfo& info) {
  const bool isFinite = std::all_of(data.begin(), data.end(), [](float x) { return std::isfinite(x); });
  float smallest = kMissingCell<float>, largest = kMissingCell<float>;
  if (isFinite) data.GetMinMax(smallest, largest);
  const double scale = ScaleOf(smallest, largest);
  const double maximum = largest * scale;
  const double minimum = std::floor(smallest * scale);
  const double width = binwidth(minimum, maximum, data);
  const int last = bindex(maximum, minimum, width, -1);
  const int bins = last + 1;
  // Aside from `info`, whose own vectors `data` may be.
  HistogramInfo found{NCDataVector<float>(bins, 0.0F), NCDataVector<float>(bins, 0.0F), {}};
  found.members.resize(static_cast<std::size_t>(bins));
  std::vector<std::vector<int>> positions(static_cast<std::size_t>(bins));
  for (int p = 1; isFinite && p <= data.Size(); ++p) {
    if (data[p] == kMissingCell<float>) continue;
    positions[static_cast<std::size_t>(bindex(data[p] * scale, minimum, width, last))].push_back(p);
  }
  // Bin after bin, so that the nodes of a set lie beside each other; positions ascend.
  for (int i = 1; i <= bins; ++i) {
    const auto bin = static_cast<std::size_t>(i - 1);
    found.centres(i, static_cast<float>((i - 0.5) * (width / scale) + minimum / scale));
    found.counts(i, static_cast<float>(positions[bin].size()));
    found.members[bin].insert(positions[bin].begin(), positions[bin].end());
  }
  info = std::move(found);
}
