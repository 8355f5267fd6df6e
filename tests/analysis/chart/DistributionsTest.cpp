#include "kalmia/analysis/chart/internal/Distributions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "TestTables.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {
namespace {

constexpr double kGood = 1e-11;  ///< of x, as the header promises; ten digits are shown

double QuantileOfRow(const Table& table, int row) {
  const auto number = [&](int column) { return std::strtod(std::string(table.Cell(row, column)).c_str(), nullptr); };
  const std::string name(table.Cell(row, 0));
  const Tail tail = table.Cell(row, 1) == "upper" ? Tail::Upper : Tail::Lower;
  const double share = number(2), df = number(3), df2 = number(4);
  if (name == "normal") return QuantileOfAbsoluteNormal(share, tail);
  if (name == "t") return QuantileOfAbsoluteT(share, tail, df);
  return name == "chi2" ? QuantileOfChiSquared(share, tail, df) : QuantileOfF(share, tail, df, df2);
}

TEST(Distributions, GiveTheQuantilesThatFortyDigitsGive) {  // data/quantiles.py, mpmath 1.2.1
  const Table table = CsvAt(KALMIA_ANALYSIS_DATA_DIR "/quantiles.csv");
  ASSERT_GT(table.Rows(), 90);
  for (int row = 0; row < table.Rows(); ++row) {
    // Nearest double to the forty digits: 1e-16, far below what is promised.
    const double expected = std::strtod(std::string(table.Cell(row, 5)).c_str(), nullptr);
    EXPECT_LT(std::fabs(QuantileOfRow(table, row) / expected - 1.0), kGood)
        << table.Cell(row, 0) << " " << table.Cell(row, 1) << " " << table.Cell(row, 2) << " " << table.Cell(row, 3)
        << " " << table.Cell(row, 4);
  }
}

TEST(Distributions, TailsOfOneQuantileAreEachOthersComplement) {
  // 1 - share is exact from 0.5 on, so both ask for the same number.
  for (const double share : {0.5, 0.75, 0.999, 1.0 - std::ldexp(1.0, -50)}) {
    EXPECT_EQ(QuantileOfF(share, Tail::Upper, 3, 20), QuantileOfF(1.0 - share, Tail::Lower, 3, 20));
    EXPECT_EQ(QuantileOfChiSquared(share, Tail::Lower, 7), QuantileOfChiSquared(1.0 - share, Tail::Upper, 7));
  }
}

TEST(Distributions, AreEachOthersLimitsAndSquares) {
  // T with 1 degree of freedom is Cauchy's; T squared is F; chi-square with 2 degrees is exponential, with 1 Z squared
  const double pi = std::acos(-1.0);
  for (const double share : {1e-12, 0.05, 0.5, 0.9}) {
    const double t = QuantileOfAbsoluteT(share, Tail::Upper, 9), z = QuantileOfAbsoluteNormal(share, Tail::Upper);
    EXPECT_NEAR(t * t / QuantileOfF(share, Tail::Upper, 1, 9), 1.0, kGood);
    EXPECT_NEAR(z * z / QuantileOfChiSquared(share, Tail::Upper, 1), 1.0, kGood);
    EXPECT_NEAR(-2.0 * std::log(share) / QuantileOfChiSquared(share, Tail::Upper, 2), 1.0, kGood);
    EXPECT_NEAR(QuantileOfAbsoluteT(share, Tail::Upper, 1) * std::tan(pi / 2 * share), 1.0, kGood);
  }
}

TEST(Distributions, RefuseAQuantileBeyondDoublePrecision) {
  EXPECT_THROW(QuantileOfAbsoluteT(0.99, Tail::Lower, 1e-3), Failure);
  EXPECT_THROW(QuantileOfF(1e-300, Tail::Upper, 3, 0.5), Failure);
  EXPECT_THROW(QuantileOfChiSquared(1e-10, Tail::Lower, 0.01), Failure);
}

}  // namespace
}  // namespace kalmia::analysis
