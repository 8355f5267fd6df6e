#include "kalmia/analysis/table/SingleCells.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kalmia/analysis/table/ColumnMoments.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

constexpr double kMostDeviations = 1000;   ///< of the mean from 0
constexpr double kRoundingNoise = 1e-13;   ///< a spread, as a share of the mean, that says nothing

/// In single precision; infinite beyond it, as a cell far from a stored shift may be.
float InSingle(double cell) {
  constexpr double kLargest = std::numeric_limits<float>::max();
  if (std::fabs(cell) <= kLargest) return static_cast<float>(cell);
  return std::copysign(std::numeric_limits<float>::infinity(), static_cast<float>(std::copysign(1.0, cell)));
}

}  // namespace

bool LosesDigits(const std::vector<double>& cells) {
  const ColumnMoments moments = MomentsOf(cells);
  if (moments.min == moments.max) return false;  // whatever the sums make of them
  const double mean = std::fabs(moments.mean);
  const double deviation = moments.standardDeviation;  // NaN, and no answer but "no", of fewer than two cells
  return mean > kMostDeviations * deviation && deviation > kRoundingNoise * mean;
}

double ShiftOf(const std::vector<double>& cells) { return LosesDigits(cells) ? MomentsOf(cells).mean : 0.0; }

void ClearZeros(std::vector<double>* shifts) {
  if (std::all_of(shifts->begin(), shifts->end(), [](double shift) { return shift == 0.0; })) shifts->clear();
}

std::vector<float> SingleCells(const std::vector<double>& cells, double shift, int* moved) {
  std::vector<float> singles(cells.size());
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (std::isnan(cells[i])) {
      singles[i] = kMissingCell<float>;
      continue;
    }
    const float rounded = InSingle(cells[i] - shift);
    singles[i] = AvoidMissingValue(rounded);
    if (IsMissing(rounded) && shift == 0.0) ++*moved;
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
  for (int c = 1; c <= matrix.SizeColumns(); ++c) {
    const std::vector<float>& cells = columns[static_cast<std::size_t>(c) - 1];
    for (int r = 1; r <= rows; ++r) matrix(r, c, cells[static_cast<std::size_t>(r) - 1]);
  }
  return matrix;
}

bool IsMissing(float cell) { return cell == kMissingCell<float>; }

bool IsConstant(const std::vector<float>& cells) {
  const auto first = std::find_if_not(cells.begin(), cells.end(), IsMissing);
  return std::none_of(first, cells.end(), [&](float cell) { return !IsMissing(cell) && cell != *first; });
}

float AvoidMissingValue(float number) {
  return IsMissing(number) ? std::nextafter(number, std::numeric_limits<float>::lowest()) : number;
}

}  // namespace kalmia::analysis
