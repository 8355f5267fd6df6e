#include "kalmia/analysis/validation/PairedTest.h"

#include <cmath>

#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/internal/SignFlips.h"

namespace kalmia::analysis {

namespace {

/// Both errors and their difference, of rows that have both.
RealMatrix PairsOf(const std::vector<double>& errors, const std::vector<double>& others) {
  RealMatrix pairs(errors.size(), 3, kNotANumber);
  for (std::size_t i = 0; i < errors.size(); ++i) {
    if (std::isnan(errors[i]) || std::isnan(others[i])) continue;
    pairs(i, 0) = errors[i];
    pairs(i, 1) = others[i];
    pairs(i, 2) = errors[i] - others[i];
  }
  return pairs;
}

double ColumnMean(const RealMatrix& units, std::size_t column) {
  double sum = 0.0;
  for (std::size_t i = 0; i < units.rows; ++i) sum += units(i, column);
  return units.rows > 0 ? sum / static_cast<double>(units.rows) : kNotANumber;
}

}  // namespace

PairedTest ComparePaired(const std::vector<double>& rowErrors, const std::vector<double>& otherRowErrors,
                         const std::vector<int>* groupOfRow, int flips, std::uint64_t seed, NCProgress* progress) {
  if (flips < 1) throw BadRequest("a randomisation takes one run or more");
  const RealMatrix units = ErrorsOfUnits(PairsOf(rowErrors, otherRowErrors), groupOfRow);
  RealMatrix differences(units.rows, 1);
  for (std::size_t i = 0; i < units.rows; ++i) differences(i, 0) = units(i, 2);
  PairedTest test;
  test.units = units.rows;
  test.meanError = ColumnMean(units, 0);
  test.otherMeanError = ColumnMean(units, 1);
  test.difference = ColumnMean(units, 2);
  test.p = SignFlipPValues(differences, FlipSide::AtLeastInSize, flips, seed, progress).front();
  return test;
}

}  // namespace kalmia::analysis
