#include "kalmia/statistics/internal/CompletionBounds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <vector>

namespace {

using kalmia::CompletionBounds;
using kalmia::LogFactorials;
using kalmia::PartialTable;

double LogFactorial(int n) { return std::lgamma(n + 1.0); }

/// All completions, cell after cell.
class Enumeration {
 public:
  Enumeration(std::vector<int> rows, const std::vector<int>& columns) : rows_(std::move(rows)), columns_(columns) {
    Place(0, 0, columns_[0], 0);
  }
  double largest = -std::numeric_limits<double>::infinity(), smallest = std::numeric_limits<double>::infinity();
  double sum = 0;

 private:
  void Place(std::size_t i, std::size_t j, int left, double product) {
    if (i == rows_.size()) {
      if (left > 0) return;
      if (j + 1 < columns_.size()) return Place(0, j + 1, columns_[j + 1], product);
      largest = std::max(largest, product);
      smallest = std::min(smallest, product);
      sum += std::exp(product);
      return;
    }
    for (int x = 0; x <= std::min(left, rows_[i]); ++x) {
      rows_[i] -= x;
      Place(i + 1, j, left - x, product - LogFactorial(x));
      rows_[i] += x;
    }
  }

  std::vector<int> rows_, columns_;
};

std::vector<int> RandomMargins(std::size_t count, int sum, std::mt19937* random) {
  std::vector<int> margins(count, 1);
  for (int k = static_cast<int>(count); k < sum; ++k) ++margins[(*random)() % ((*random)() % count + 1)];
  std::sort(margins.begin(), margins.end(), std::greater<>());
  return margins;
}

TEST(CompletionBounds, LargestAndTotalAreThoseOfAllCompletionsAndTheBoundsEncloseThem) {
  std::mt19937 random(3);
  int looseBounds = 0;
  for (const auto& [rows, columns, sum] :
       {std::tuple(2, 3, 30), std::tuple(3, 2, 25), std::tuple(3, 3, 17), std::tuple(4, 2, 20), std::tuple(2, 5, 20),
        std::tuple(4, 3, 12), std::tuple(5, 2, 18)})
    for (int repeat = 0; repeat < 20; ++repeat) {
      const std::vector<int> r = RandomMargins(static_cast<std::size_t>(rows), sum, &random);
      const std::vector<int> c = RandomMargins(static_cast<std::size_t>(columns), sum, &random);
      const PartialTable table{r.data(), r.size(), c.data(), c.size(), 1.0 * sum};
      const Enumeration all(r, c);
      const LogFactorials logFactorial(sum);
      CompletionBounds bounds(r.size(), logFactorial);
      constexpr double kRounding = 1e-12;  // of sums of some ten logarithms of factorials, each below 75
      EXPECT_NEAR(bounds.GetLargest(table), all.largest, kRounding);
      EXPECT_NEAR(bounds.GetTotal(table), std::log(all.sum), kRounding);
      EXPECT_GE(bounds.GetUpperBound(table), all.largest - kRounding);
      EXPECT_LE(bounds.GetLowerBound(table), all.smallest + kRounding);
      if (bounds.GetUpperBound(table) > all.largest + 1e-6) ++looseBounds;
    }
  EXPECT_GT(looseBounds, 20) << "margins for which the bound alone would not do";
}

}  // namespace
