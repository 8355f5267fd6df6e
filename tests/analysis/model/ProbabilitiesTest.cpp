#include "kalmia/analysis/model/internal/Probabilities.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include "TestTables.h"

namespace kalmia::analysis {
namespace {

double Computed(const std::string& what, double argument, double a, double b) {
  if (what == "beta") return BetaQuantile(argument, a, b);
  if (what == "f") return FisherQuantile(argument, a, b);
  if (what == "t") return QuantileOfAbsoluteStudent(argument, a);
  if (what == "chi2") return ChiSquareQuantile(argument, a);
  return what == "above f" ? ShareAboveFisher(argument, a, b) : ShareBeyondStudent(argument, a);
}

TEST(Probabilities, AreThoseOfFortyDigits) {  // data/probabilities.py, mpmath 1.2.1
  const Table table = CsvAt(KALMIA_ANALYSIS_DATA_DIR "/probabilities.csv");
  ASSERT_EQ(table.Rows(), 100);
  for (int row = 0; row < table.Rows(); ++row) {
    const auto number = [&](int column) { return std::strtod(std::string(table.Cell(row, column)).c_str(), nullptr); };
    const std::string what(table.Cell(row, 0));
    const bool isShare = what == "above f" || what == "beyond t";
    const double promised = isShare ? 1e-12 : 1e-10;
    EXPECT_NEAR(Computed(what, number(1), number(2), number(3)) / number(4), 1.0, promised)
        << what << " " << number(1) << " " << number(2) << " " << number(3);
  }
}

TEST(Probabilities, OfManyValuesAreThoseOfSingleOnes) {  // by two series and Boost, whichever is quick
  for (const double df : {1.0, 2.0, 6.0, 9.0, 59.0, 999.0, 1000.0, 1e5}) {
    const StudentShares shares(df);
    for (double t = 1e-3; t < 1e6; t *= 1.3) {  // of smaller ones Boost loses digits
      const double expected = ShareBeyondStudent(t, df);
      if (expected < 1e-300) break;
      EXPECT_NEAR(shares.Beyond(t) / expected, 1.0, 2e-12) << t << " " << df;  // 1e-12 of either
      EXPECT_EQ(shares.Beyond(-t), shares.Beyond(t));
    }
    EXPECT_EQ(shares.Beyond(0.0), 1.0);
    EXPECT_EQ(shares.Beyond(std::numeric_limits<double>::infinity()), 0.0);
  }
}

TEST(Probabilities, OfManyDegreesGoOnWithoutAStep) {
  // (chi2 - df) / sqrt(2 df) tends to 1.6448536269514722, the normal quantile, as 1 / sqrt(df): by the expansion of
  // Cornish and Fisher it is that + (z^2 - 1) sqrt(2) / (3 sqrt(df)).
  constexpr double z = 1.6448536269514722;
  for (const double df : {9.9e8, 1.1e9, 1e12, 1e15}) {
    const double expected = z + (z * z - 1.0) * std::sqrt(2.0) / (3.0 * std::sqrt(df));
    const double found = (ChiSquareQuantile(0.95, df) - df) / std::sqrt(2.0 * df);
    EXPECT_NEAR(found, expected, 1e-9 + 1e-15 * std::sqrt(df));  // the next term, 1 / df; digits that cancel
  }
  EXPECT_DOUBLE_EQ(ChiSquareQuantile(0.99, 1e300), 1e300);
}

TEST(Probabilities, OfSharesHaveTheirEnds) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(ShareAboveFisher(0.0, 2, 3), 1.0);
  EXPECT_EQ(ShareAboveFisher(-5.0, 2, 3), 1.0);
  EXPECT_EQ(ShareAboveFisher(infinity, 2, 3), 0.0);
  EXPECT_EQ(ShareBeyondStudent(infinity, 3), 0.0);
  EXPECT_EQ(ShareBeyondStudent(-infinity, 3), 0.0);
}

}  // namespace
}  // namespace kalmia::analysis
