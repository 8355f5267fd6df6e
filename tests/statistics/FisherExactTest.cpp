#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "FisherHybridReference.h"
#include "FisherReference.h"
#include "kalmia/statistics/Sta.h"
#include "kalmia/support/NCError.h"
#include "testing/AllocationMeter.h"

namespace {

using Cells = std::vector<int>;

float ExactP(const Cells& cells, int rows, int columns, bool hybrid = false, int workspace = 0) {
  return Sta::GetFisherExactProbability(cells.data(), rows, columns, hybrid, Sta::TwoSided, workspace);
}

std::string FailureOf(const Cells& cells, int rows, int columns, int workspace = 0, bool hybrid = false) {
  try {
    ExactP(cells, rows, columns, hybrid, workspace);
  } catch (const NCError& error) {
    return static_cast<const char*>(error.GetMessage());
  }
  return "no failure";
}

Cells CellsOf(const char* text) {
  std::istringstream in(text);
  Cells cells;
  for (int x; in >> x;) cells.push_back(x);
  return cells;
}

double LogFactorial(int n) { return std::lgamma(n + 1.0); }

/// The test by walking all tables of the same margins, cell after cell.
class Enumeration {
 public:
  Enumeration(const Cells& cells, int rows, int columns)
      : rowsLeft_(static_cast<std::size_t>(rows)), columnsLeft_(static_cast<std::size_t>(columns)) {
    double margins = 0;
    int n = 0;
    for (std::size_t i = 0; i < rowsLeft_.size(); ++i)
      for (std::size_t j = 0; j < columnsLeft_.size(); ++j) {
        const int x = cells[i * columnsLeft_.size() + j];
        rowsLeft_[i] += x;
        columnsLeft_[j] += x;
        n += x;
        observed_ -= LogFactorial(x);
      }
    for (const int r : rowsLeft_) margins += LogFactorial(r);
    for (const int c : columnsLeft_) margins += LogFactorial(c);
    scale_ = margins - LogFactorial(n);
    Place(0, 0, 0);
  }
  double Probability() const { return sum_; }
  double All() const { return all_; }

 private:
  void Place(std::size_t i, std::size_t j, double product) {
    if (i + 1 == rowsLeft_.size()) {
      for (const int c : columnsLeft_) product -= LogFactorial(c);
      const double p = std::exp(product + scale_);
      all_ += p;
      if (product <= observed_ + 1e-7) sum_ += p;
      return;
    }
    if (j + 1 == columnsLeft_.size()) {
      const int x = rowsLeft_[i];
      if (x > columnsLeft_[j]) return;
      columnsLeft_[j] -= x;
      Place(i + 1, 0, product - LogFactorial(x));
      columnsLeft_[j] += x;
      return;
    }
    for (int x = 0; x <= std::min(rowsLeft_[i], columnsLeft_[j]); ++x) {
      rowsLeft_[i] -= x;
      columnsLeft_[j] -= x;
      Place(i, j + 1, product - LogFactorial(x));
      rowsLeft_[i] += x;
      columnsLeft_[j] += x;
    }
  }

  Cells rowsLeft_, columnsLeft_;
  double observed_ = 0, scale_ = 0, sum_ = 0, all_ = 0;
};

Cells RandomCells(int rows, int columns, int total, std::mt19937* random) {
  Cells cells(static_cast<std::size_t>(rows * columns), 0);
  for (int k = 0; k < total; ++k) ++cells[(*random)() % cells.size()];
  return cells;
}

// ---- Two by two

struct Sided {
  double left, right, both;
};

Sided EnumerateFour(int a, int b, int c, int d) {
  const auto p = [&](int x) {
    return std::exp(LogFactorial(a + b) + LogFactorial(c + d) + LogFactorial(a + c) + LogFactorial(b + d) -
                    LogFactorial(a + b + c + d) - LogFactorial(x) - LogFactorial(a + b - x) - LogFactorial(a + c - x) -
                    LogFactorial(d - a + x));
  };
  Sided sums{0, 0, 0};
  for (int x = std::max(0, a - d); x <= std::min(a + b, a + c); ++x) {
    if (x <= a) sums.left += p(x);
    if (x >= a) sums.right += p(x);
    if (p(x) <= p(a) * (1 + 1e-6)) sums.both += p(x);
  }
  return sums;
}

TEST(FisherExact, TwoByTwoTablesOfEachSideAddUpAsEnumerated) {
  for (int a = 0; a <= 6; ++a)
    for (int b = 0; b <= 5; ++b)
      for (int c = 0; c <= 4; ++c)
        for (int d = 0; d <= 6; ++d) {
          const Cells cells{a, b, c, d};
          const Sided exact = EnumerateFour(a, b, c, d);
          // Nine log gammas of at most ln 20! = 42.4, each rounded to 2^-24 of itself and with a series good to 2e-8.
          const double error = 9 * (42.4 * 0x1p-24 + 2e-8) + 0x1p-24;
          EXPECT_NEAR(Sta::GetFisherExactProbability(cells.data(), 2, 2, false, Sta::LeftSided, 0), exact.left, error);
          EXPECT_NEAR(Sta::GetFisherExactProbability(cells.data(), 2, 2, true, Sta::RightSided, 0), exact.right, error);
          EXPECT_NEAR(ExactP(cells, 2, 2), exact.both, error) << a << b << c << d;
        }
}

TEST(FisherExact, TablesOfEqualProbabilityCountOnBothSides) {
  EXPECT_NEAR(ExactP({3, 1, 1, 3}, 2, 2), 34.0 / 70.0, 1e-5) << "the mirrored table (1 3 / 3 1) is one of them";
  EXPECT_NEAR(ExactP({4, 0, 0, 4}, 2, 2), 2.0 / 70.0, 1e-6);
  EXPECT_NEAR(ExactP({9, 2, 3, 8}, 2, 2), EnumerateFour(9, 2, 3, 8).both, 1e-5);
}

TEST(FisherExact, RowOfZerosLeavesOneTable) {
  for (const auto side : {Sta::LeftSided, Sta::RightSided, Sta::TwoSided}) {
    const Cells cells{0, 0, 3, 5};
    EXPECT_NEAR(Sta::GetFisherExactProbability(cells.data(), 2, 2, true, side, -1), 1.0F, 1e-5F);
  }
}

TEST(FisherExact, TwoByTwoMarginsBeyondIntAreWalkedWithoutOverflow) {
  // Log gamma of 2^31 has steps of 4096 in float, so that nothing can be said of the probability itself; but a count
  // that wraps to below 0 has no logarithm and makes it NaN.
  const int most = std::numeric_limits<int>::max();
  for (const auto side : {Sta::LeftSided, Sta::RightSided, Sta::TwoSided}) {
    for (const Cells& cells : {Cells{1, most, 0, 1}, Cells{most, 1, 1, 0}, Cells{1, 0, most, 1}})
      EXPECT_FALSE(std::isnan(Sta::GetFisherExactProbability(cells.data(), 2, 2, false, side, 0)));
  }
}

TEST(FisherExact, WorkspaceAndHybridPlayNoPartInTwoByTwo) {
  EXPECT_EQ(ExactP({3, 1, 1, 3}, 2, 2, true, 1), ExactP({3, 1, 1, 3}, 2, 2, false, 0));
}

TEST(FisherExact, TableProbabilityIsHypergeometric) {
  EXPECT_NEAR(static_cast<double>(Sta::GetTableProbability(3, 1, 1, 3)), 16.0 / 70.0, 1e-6);
  EXPECT_EQ(Sta::GetTableProbability(3, 1, 1, 3), Sta::GetTableProbability(1, 3, 3, 1));
}

// ---- Larger tables

/// Float rounding of the result; sums of logarithms near 1e2 in double add 1e-13, tables within 1e-7 count as equal.
double Tolerance(double p) { return 2e-7 * p; }

/// Hybrid values are a sum of chi-square tails good to 1e-12, but R pools paths that differ by less than its own
/// tolerance, about 1e-7 of the logarithm, and takes this from the observed table: a few 1e-6 of p.
double HybridTolerance(double p) { return 5e-6 * p; }

TEST(FisherExact, LargerTablesGiveTheProbabilitiesOfR) {
  for (const FisherReference& known : kFisherReferences) {
    const Cells cells = CellsOf(known.cells);
    ASSERT_EQ(cells.size(), static_cast<std::size_t>(known.rows * known.columns));
    const double tolerance = known.rows == 2 && known.columns == 2 ? 1e-5 * known.p : Tolerance(known.p);
    EXPECT_NEAR(ExactP(cells, known.rows, known.columns), known.p, tolerance)
        << known.rows << " x " << known.columns << ": " << known.cells;
  }
}

class FisherExactRandom : public ::testing::TestWithParam<int> {};

TEST_P(FisherExactRandom, TablesGiveTheProbabilityOfTheEnumeration) {
  std::mt19937 random(static_cast<unsigned>(GetParam()));
  for (const auto& [rows, columns, total] :
       {std::tuple(2, 3, 14), std::tuple(3, 2, 15), std::tuple(3, 3, 12), std::tuple(4, 3, 9), std::tuple(2, 6, 10)}) {
    const Cells cells = RandomCells(rows, columns, total, &random);
    const Enumeration exact(cells, rows, columns);
    ASSERT_NEAR(exact.All(), 1.0, 1e-9);
    EXPECT_NEAR(ExactP(cells, rows, columns), exact.Probability(), Tolerance(exact.Probability()));
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, FisherExactRandom, ::testing::Range(1, 31));

TEST(FisherExact, OrderOfRowsAndColumnsAndTranspositionChangeNothing) {
  const Cells cells{3, 0, 2, 5, 1, 4, 0, 6, 2, 2, 1, 7};          // 3 x 4
  const Cells swapped{2, 2, 1, 7, 1, 4, 0, 6, 3, 0, 2, 5};        // rows the other way round
  const Cells transposed{3, 1, 2, 0, 4, 2, 2, 0, 1, 5, 6, 7};     // 4 x 3
  const double p = ExactP(cells, 3, 4);
  EXPECT_NEAR(ExactP(swapped, 3, 4), p, Tolerance(p));
  EXPECT_NEAR(ExactP(transposed, 4, 3), p, Tolerance(p));
}

TEST(FisherExact, EmptyRowsAndColumnsTakeNoPart) {
  const double p = ExactP({3, 0, 2, 1, 4, 6}, 2, 3);
  EXPECT_NEAR(ExactP({3, 0, 2, 0, 0, 0, 1, 4, 6}, 3, 3), p, Tolerance(p));
  EXPECT_NEAR(ExactP({3, 0, 0, 2, 1, 0, 4, 6}, 2, 4), p, Tolerance(p));
  EXPECT_EQ(ExactP({3, 5, 2, 0, 0, 0}, 2, 3), 1.0F) << "one table only";
  EXPECT_EQ(ExactP({3, 0, 5, 0, 2, 0}, 3, 2), 1.0F);
  EXPECT_EQ(ExactP({3, 5, 2}, 3, 1), 1.0F) << "one column";
}

TEST(FisherExact, TableOfIndependentCountsHasProbabilityOne) {
  EXPECT_FLOAT_EQ(ExactP({2, 4, 6, 1, 2, 3, 3, 6, 9}, 3, 3), 1.0F) << "the most probable table: all others count";
}

// ---- Hybrid

TEST(FisherExact, HybridTakesChiSquareWhereExpectedCountsAreLargeAndIsExactElsewhere) {
  const Cells sparse{3, 0, 2, 1, 4, 1};
  EXPECT_EQ(ExactP(sparse, 2, 3, true), ExactP(sparse, 2, 3, false)) << "expected counts of 2.2: no approximation";
  // Chi-square is the limit of the exact distribution: with expected counts near 20, 5 degrees of freedom and a p in
  // the middle, lattice and skewness leave some per cent.
  const Cells large{22, 18, 25, 15, 20, 20, 17, 23, 18, 24, 19, 19};
  const double exact = ExactP(large, 2, 6), hybrid = ExactP(large, 2, 6, true);
  EXPECT_NE(hybrid, exact);
  EXPECT_NEAR(hybrid, exact, 0.08 * exact);
}

TEST(FisherExact, HybridJudgesTheRestOnceTheSmallestColumnIsOutAndNeverTheWhole) {
  struct { const char* cells; int rows, columns; double hybrid, exact; } const known[] = {  // R 4.2.2, fisher.test
      {"8 10 9  11 11 3", 2, 3, 0.183456505698, 0.186662115864},
      {"2 17 4 7  11 17 6 11", 2, 4, 0.192627229919, 0.195740212104},
      {"8 8 3 7  10 18 11 0  16 3 5 16", 3, 4, 3.00363475626e-06, 1.96081252629e-06},
      {"9 2 10  6 4 3  6 0 4", 3, 3, 0.245487727476, 0.245241601821}};  // its parts meet the conditions, not the whole
  for (const auto& table : known) {
    const Cells cells = CellsOf(table.cells);
    EXPECT_NEAR(ExactP(cells, table.rows, table.columns, true), table.hybrid, HybridTolerance(table.hybrid));
    EXPECT_NEAR(ExactP(cells, table.rows, table.columns), table.exact, Tolerance(table.exact));
  }
}

TEST(FisherExact, HybridGivesTheProbabilitiesOfR) {
  int approximated = 0;
  for (const FisherHybridReference& known : kFisherHybridReferences) {
    const Cells cells = CellsOf(known.cells);
    ASSERT_EQ(cells.size(), static_cast<std::size_t>(known.rows * known.columns));
    if (std::fabs(known.hybrid - known.exact) > 2 * HybridTolerance(known.exact)) ++approximated;
    EXPECT_NEAR(ExactP(cells, known.rows, known.columns, true), known.hybrid, HybridTolerance(known.hybrid))
        << known.rows << " x " << known.columns << ": " << known.cells;
    EXPECT_NEAR(ExactP(cells, known.rows, known.columns), known.exact, Tolerance(known.exact));
  }
  EXPECT_GE(approximated, 75) << "tables that tell the approximation from the exact test";
}

TEST(FisherExact, HybridOfATableWithASideLongerThanTheOtherIsThatOfItsTranspose) {
  for (const FisherHybridReference& known : kFisherHybridReferences) {
    if (known.rows == known.columns) continue;
    const Cells cells = CellsOf(known.cells);
    Cells turned;
    for (int j = 0; j < known.columns; ++j)
      for (int i = 0; i < known.rows; ++i) turned.push_back(cells[static_cast<std::size_t>(i * known.columns + j)]);
    const double p = ExactP(cells, known.rows, known.columns, true);
    // The same network; only the observed table's logarithms are added in another order.
    EXPECT_NEAR(ExactP(turned, known.columns, known.rows, true), p, Tolerance(p)) << known.cells;
  }
}

TEST(FisherExact, HybridAsksForExpectedCountsAboveOneAndOfFiveInFourFifthsOfTheCells) {
  // A column of 2 out, the part (21 21) has 2 of 10 expected counts of exactly 1 and 8 of 5 or more: not enough.
  // p of R 4.2.2, whose value for conditions met there as well would be 0.89965.
  const Cells one = CellsOf("1 1 7 5 7 5  1 1 5 7 5 7");
  EXPECT_NEAR(ExactP(one, 2, 6, true), 0.924063453977, HybridTolerance(0.924063453977));
  EXPECT_NE(ExactP(one, 2, 6, true), ExactP(one, 2, 6)) << "other parts are approximated";
}

TEST(FisherExact, HybridOfASquareTableTakesItsColumnsOutAndOfAnotherTheLongerSide) {
  const Cells square{9, 2, 10, 6, 4, 3, 6, 0, 4}, turned{9, 6, 6, 2, 4, 0, 10, 3, 4};
  EXPECT_NEAR(ExactP(square, 3, 3, true), 0.245487727476, HybridTolerance(0.245487727476));  // R 4.2.2
  EXPECT_NEAR(ExactP(turned, 3, 3, true), 0.245241601821, HybridTolerance(0.245241601821));
  EXPECT_EQ(ExactP({8, 10, 9, 11, 11, 3}, 2, 3, true), ExactP({8, 11, 10, 11, 9, 3}, 3, 2, true));
}

// ---- Failures

TEST(FisherExact, SaysWhatIsWrongWithATable) {
  struct { const char* what; Cells cells; int rows, columns; const char* text; } const failures[] = {
      {"one row", {1, 2, 3}, 1, 3, "NCOL must be at least 2"},
      {"no row", {}, 0, 3, "NCOL must be at least 2"},
      {"no column", {}, 3, 0, "All elements of TABLE are zero.\nPRT and PRE are set to missing values."},
      {"a negative number of columns", {}, 3, -1,
       "All elements of TABLE are zero.\nPRT and PRE are set to missing values."},
      {"nothing but zeros", Cells(6, 0), 2, 3,
       "All elements of TABLE are zero.\nPRT and PRE are set to missing values."},
      {"a negative cell", {1, 2, -1, 4, 5, 6}, 2, 3, "All elements of TABLE may not be negative."},
      {"margins beyond the keys", {100000, 1, 2, 100000, 5, 70000}, 2, 3,
       "The hash table key cannot be computed because the largest key\nis larger than the largest representable "
       "int.\nThe algorithm cannot proceed.\nReduce the workspace size or use another algorithm."},
      {"a sum beyond int", {2147483647, 2147483647, 2147483647, 2147483647, 1, 1}, 2, 3,
       "The hash table key cannot be computed because the largest key\nis larger than the largest representable "
       "int.\nThe algorithm cannot proceed.\nReduce the workspace size or use another algorithm."}};
  for (const auto& failure : failures)
    EXPECT_EQ(FailureOf(failure.cells, failure.rows, failure.columns), std::string("Error in fexact.\n") + failure.text)
        << failure.what;
}

TEST(FisherExact, SaysThatAWorkspaceIsTooSmallForItsNodesOrPaths) {
  std::mt19937 random(4);
  const Cells manyNodes = RandomCells(4, 6, 40, &random);
  EXPECT_EQ(FailureOf(manyNodes, 4, 6, 1),
            "Error in fexact.\nLDKEY is too small for this problem.\nTry increasing the size of the workspace.");
  // Two rows have at most 51 nodes at a time, of which each is reached by many different products.
  random.seed(4);
  const Cells manyPaths = RandomCells(2, 12, 200, &random);
  EXPECT_EQ(FailureOf(manyPaths, 2, 12, 20000),
            "Error in fexact.\nLDSTP is too small for this problem.\nTry increasing the size of the workspace.");
  for (const int workspace : {4000000, 0, -1}) {
    EXPECT_EQ(FailureOf(manyNodes, 4, 6, workspace), "no failure");
    EXPECT_EQ(FailureOf(manyPaths, 2, 12, workspace), "no failure");
  }
}

// ---- Memory

/// The peak of a test beside the workspace told in bytes.
struct MemoryUse {
  double share;
  std::string failure;
};

MemoryUse UseOf(const Cells& cells, int rows, int columns, int megabytes, bool hybrid) {
  const PeakBytesDuring peak;
  const std::string failure = FailureOf(cells, rows, columns, megabytes * 250000, hybrid);
  return {static_cast<double>(peak.GetBytes()) / (megabytes * 1e6), failure};
}

TEST(FisherExact, MemoryStaysWithinOneAndAHalfTimesTheWorkspace) {
  // Few nodes with many paths each, many nodes with few paths, and something between: all outgrow what they are told.
  // Hybrid ones of low expected counts, so that few of their parts are approximated.
  struct { int rows, columns, total, megabytes; bool hybrid; } const hungry[] = {
      {2, 14, 400, 1, false}, {2, 14, 400, 8, false}, {2, 14, 400, 20, false}, {3, 10, 200, 1, false},
      {5, 6, 100, 1, false}, {2, 14, 3000, 80, false}, {2, 30, 200, 1, true}, {5, 8, 150, 8, true}};
  for (const auto& table : hungry) {
    std::mt19937 random(4);
    const Cells cells = RandomCells(table.rows, table.columns, table.total, &random);
    const MemoryUse use = UseOf(cells, table.rows, table.columns, table.megabytes, table.hybrid);
    SCOPED_TRACE(::testing::Message() << table.rows << " x " << table.columns << ", " << table.megabytes << " MB"
                                      << (table.hybrid ? ", hybrid" : ""));
    EXPECT_EQ(use.failure,
              "Error in fexact.\nLDSTP is too small for this problem.\nTry increasing the size of the workspace.");
    EXPECT_LT(use.share, 1.5);
    EXPECT_GT(use.share, 0.9) << "it is of use, too";
  }
}

}  // namespace
