#pragma once

#include <cstddef>
#include <vector>

#include "kalmia/statistics/internal/Apportionment.h"
#include "kalmia/statistics/internal/LogFactorials.h"
#include "kalmia/statistics/internal/PartialTable.h"

namespace kalmia {

/// What the completions of a partial table come to: ln of the product of 1 / x! over their cells.
class CompletionBounds {
 public:
  CompletionBounds(std::size_t mostRows, const LogFactorials& logFactorial);

  /// ln of the products' sum over all completions.
  double GetTotal(const PartialTable& table) const;
  /// No completion is above it; quick, and above the best completion by a little.
  double GetUpperBound(const PartialTable& table);
  /// No completion is below it; quick.
  double GetLowerBound(const PartialTable& table) const;
  /// The largest of all completions itself. A few times the price of the bound.
  double GetLargest(const PartialTable& table);

 private:
  double LogFactorialOfFilling(int amount, const int* bins, std::size_t count) const;
  void FillColumns(const PartialTable& table);
  void MoveOneCount(const PartialTable& table);
  void RelaxMove(std::size_t from, std::size_t to, const PartialTable& table);

  const LogFactorials& logFactorial_;
  Apportionment apportionment_;
  std::vector<int> counts_;         ///< of a column, or column after column
  std::vector<double> logWeight_;

  std::vector<int> surplus_;        ///< of a row: how far its counts are above its margin
  struct Step {
    double cost;                    ///< of the cheapest way here from a row with a surplus
    std::size_t from, column;       ///< its last move
  };
  std::vector<Step> steps_;
};

}  // namespace kalmia
