#include "kalmia/analysis/table/internal/SingleCells.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "kalmia/analysis/table/ColumnMoments.h"
#include "kalmia/analysis/table/internal/KeptIf.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

constexpr int kRowsAtOnce = 16;  ///< that are filled from columns: the cells of a cache line
constexpr double kMostDeviations = 1000;   ///< of the mean from 0
constexpr double kRoundingNoise = 1e-13;   ///< a spread, as a share of the mean, that says nothing

/// In single precision; infinite beyond it, as a cell far from a stored shift may be.
float InSingle(double cell) {
  constexpr double kLargest = std::numeric_limits<float>::max();
  if (std::fabs(cell) <= kLargest) return static_cast<float>(cell);
  return std::copysign(std::numeric_limits<float>::infinity(), static_cast<float>(std::copysign(1.0, cell)));
}

/// See LargestRatioWithoutShift; short of it by what rounding may do.
double LargestRatio(double n) {
  constexpr double kBeyondRounding = 0.99;
  return kBeyondRounding * kMostDeviations / std::sqrt(2.0 * (n - 1.0));
}

/// Whether least and largest cell alone tell that the mean is not too many deviations from 0.
bool LiesNearZero(const std::vector<double>& cells) {
  double n = 0.0, sum = 0.0;
  double min = std::numeric_limits<double>::infinity(), max = -min;
  for (const double cell : cells) {
    const bool isPresent = !std::isnan(cell);
    n += isPresent ? 1.0 : 0.0;
    sum += KeptIf(isPresent, cell);
    min = std::min(min, cell);
    max = std::max(max, cell);
  }
  return n > 1.0 && std::fabs(sum / n) < LargestRatio(n) * (max - min);
}

/// The mean of cells that lose digits, and nothing of others.
std::optional<double> LosingMean(const std::vector<double>& cells) {
  if (LiesNearZero(cells)) return std::nullopt;
  const ColumnMoments moments = MomentsOf(cells);
  if (moments.min == moments.max) return std::nullopt;  // whatever the sums make of them
  const double mean = std::fabs(moments.mean);
  const double deviation = moments.standardDeviation;  // NaN, and no answer but "no", of fewer than two cells
  const bool loses = mean > kMostDeviations * deviation && deviation > kRoundingNoise * mean;
  return loses ? std::optional<double>(moments.mean) : std::nullopt;
}

}  // namespace

double LargestRatioWithoutShift(int cells) { return LargestRatio(std::max(2, cells)); }

bool LosesDigits(const std::vector<double>& cells) { return LosingMean(cells).has_value(); }

double ShiftOf(const std::vector<double>& cells) { return LosingMean(cells).value_or(0.0); }

void ClearZeros(std::vector<double>* shifts) {
  if (std::all_of(shifts->begin(), shifts->end(), [](double shift) { return shift == 0.0; })) shifts->clear();
}

std::vector<float> SingleCells(const std::vector<double>& cells, double shift, int* moved) {
  std::vector<float> singles(cells.size());
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const bool isThere = !std::isnan(cells[i]);
    float rounded = InSingle(KeptIf(isThere, cells[i]) - shift);
    if (rounded == kMissingCell<float>) {
      if (isThere && shift == 0.0) ++*moved;
      rounded = AvoidMissingValue(rounded);
    }
    const float choice[] = {kMissingCell<float>, rounded};
    singles[i] = choice[isThere];
  }
  return singles;
}

double InUnitsOfTable(float cell, double shift) {
  constexpr int kAllDigits = 17;
  if (shift == 0.0) return ShortestDouble(cell);
  const double sum = static_cast<double>(cell) + shift;
  for (int digits = 1; digits < kAllDigits; ++digits) {
    const double named = Rounded(sum, digits);
    if (InSingle(named - shift) == cell) return named;
  }
  return sum;
}

void NoteMovedCells(int moved, Notes* notes) {
  if (moved == 0) return;
  notes->Add(Counted(static_cast<std::size_t>(moved), "cell") + " measured as -99 " + (moved == 1 ? "is" : "are") +
             " taken as -99.0000076: -99 itself marks missing cells inside");
}

void NoteLostDigits(const std::vector<std::string>& columns, Notes* notes) {
  if (columns.empty()) return;
  notes->Add("the mean is more than 1000 standard deviations from 0, and nothing centres the column, so that "
             "single precision keeps few digits of what varies: " + Listed(columns, kColumnsNamed));
}

NCDataMatrix<float> MatrixOf(const std::vector<std::vector<float>>& columns, int rows) {
  NCDataMatrix<float> matrix(rows, static_cast<int>(columns.size()));
  if (columns.empty()) return matrix;
  std::vector<std::vector<float>> cells(kRowsAtOnce, std::vector<float>(columns.size()));
  for (int first = 0; first < rows; first += kRowsAtOnce) {
    const int count = std::min(kRowsAtOnce, rows - first);
    for (std::size_t c = 0; c < columns.size(); ++c) {
      const float* column = &columns[c][static_cast<std::size_t>(first)];
      for (int i = 0; i < count; ++i) cells[static_cast<std::size_t>(i)][c] = column[i];
    }
    for (int i = 0; i < count; ++i) {
      NCDataVector<float> row;
      row.CopyZeroBasedVector(cells[static_cast<std::size_t>(i)].data(), matrix.SizeColumns());
      matrix.SetRow(first + i + 1, row);
    }
  }
  return matrix;
}

bool IsMissing(float cell) { return cell == kMissingCell<float>; }

bool IsConstant(const std::vector<float>& cells) {
  const auto isPresent = [](float cell) { return cell != kMissingCell<float>; };
  const auto first = std::find_if(cells.begin(), cells.end(), isPresent);
  return std::none_of(first, cells.end(), [&](float cell) { return isPresent(cell) && cell != *first; });
}

float AvoidMissingValue(float number) {
  return IsMissing(number) ? std::nextafter(number, std::numeric_limits<float>::lowest()) : number;
}

}  // namespace kalmia::analysis
