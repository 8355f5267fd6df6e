#include "kalmia/analysis/table/internal/KeptIf.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kalmia::analysis {
namespace {

TEST(KeptIf, GivesTheNumberOrZeroWhateverTheNumber) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double number : {0.0, -0.5, 1e300, -kInfinity, std::nan("")}) EXPECT_EQ(KeptIf(false, number), 0.0);
  for (const double number : {0.0, -0.5, 1e300, -kInfinity}) EXPECT_EQ(KeptIf(true, number), number);
  EXPECT_TRUE(std::isnan(KeptIf(true, std::nan(""))));
}

TEST(CellOrZero, TakesTheMissingCellAloneForZero) {
  EXPECT_EQ(CellOrZero(-99.0F), 0.0F);
  for (const float cell : {99.0F, std::nextafter(-99.0F, 0.0F), 1.5F, -std::numeric_limits<float>::infinity()}) {
    EXPECT_EQ(CellOrZero(cell), cell);
  }
  EXPECT_TRUE(std::isnan(CellOrZero(std::nanf(""))));
}

}  // namespace
}  // namespace kalmia::analysis
