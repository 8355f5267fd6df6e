#include "kalmia/analysis/validation/internal/SignFlips.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/validation/RandomDraws.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kUnitsOfAWord = 64;
constexpr double kEqualSums = 1e-12;  ///< of the sum of sizes: some thousand roundings of double

/// Adds the units from `first` to before `last`, signed by the bits of the word, to the sums of all columns.
void AddSigned(const RealMatrix& differences, std::size_t first, std::size_t last, std::uint64_t word, double* sums) {
  for (std::size_t i = first; i < last; ++i, word >>= 1) {
    const double sign = (word & 1U) != 0 ? -1.0 : 1.0;
    const double* row = &differences.cells[i * differences.columns];
    for (std::size_t c = 0; c < differences.columns; ++c) sums[c] += sign * row[c];
  }
}

/// The sums of each flip, flips x columns.
RealMatrix SumsOfFlips(const RealMatrix& differences, std::size_t flips, std::uint64_t seed, NCProgress* progress) {
  WorkProgress work(progress);
  RandomDraws draws(seed, RandomUse::SignFlips);
  RealMatrix sums(flips, differences.columns);
  for (std::size_t first = 0; first < differences.rows; first += kUnitsOfAWord) {
    const std::size_t last = std::min(differences.rows, first + kUnitsOfAWord);
    for (std::size_t f = 0; f < flips; ++f) {
      if (f % 1024 == 0) work.Ask();
      AddSigned(differences, first, last, draws.Word(), &sums.cells[f * differences.columns]);
    }
  }
  return sums;
}

}  // namespace

std::vector<double> SignFlipPValues(const RealMatrix& differences, FlipSide side, int flips, std::uint64_t seed,
                                    NCProgress* progress) {
  const RealMatrix sums = SumsOfFlips(differences, static_cast<std::size_t>(flips), seed, progress);
  std::vector<double> pValues;
  for (std::size_t c = 0; c < differences.columns; ++c) {
    double found = 0.0, sizes = 0.0;
    for (std::size_t i = 0; i < differences.rows; ++i) {
      found += differences(i, c);
      sizes += std::fabs(differences(i, c));
    }
    const bool inSize = side == FlipSide::AtLeastInSize;
    const double least = (inSize ? std::fabs(found) : found) - kEqualSums * sizes;
    int count = 0;
    for (std::size_t f = 0; f < sums.rows; ++f) {
      if ((inSize ? std::fabs(sums(f, c)) : sums(f, c)) >= least) ++count;
    }
    pValues.push_back((1.0 + count) / (flips + 1.0));
  }
  return pValues;
}

RealMatrix ErrorsOfUnits(const RealMatrix& rowErrors, const std::vector<int>* groupOfRow) {
  std::size_t groups = rowErrors.rows;
  if (groupOfRow != nullptr) {
    groups = 0;
    for (const int group : *groupOfRow) groups = std::max(groups, static_cast<std::size_t>(group) + 1);
  }
  RealMatrix sums(groups, rowErrors.columns);
  std::vector<int> rowsOfUnit(groups, 0);
  for (std::size_t i = 0; i < rowErrors.rows; ++i) {
    if (rowErrors.columns == 0 || std::isnan(rowErrors(i, 0))) continue;
    const std::size_t unit = groupOfRow == nullptr ? i : static_cast<std::size_t>((*groupOfRow)[i]);
    ++rowsOfUnit[unit];
    for (std::size_t c = 0; c < rowErrors.columns; ++c) sums(unit, c) += rowErrors(i, c);
  }
  RealMatrix units(0, rowErrors.columns);
  for (std::size_t u = 0; u < groups; ++u) {
    if (rowsOfUnit[u] == 0) continue;
    ++units.rows;
    for (std::size_t c = 0; c < sums.columns; ++c) units.cells.push_back(sums(u, c) / rowsOfUnit[u]);
  }
  return units;
}

}  // namespace kalmia::analysis
