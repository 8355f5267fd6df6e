// Fisher's exact test of 2 x 2 tables.

#include "kalmia/analysis/chart/internal/FourfoldTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using kalmia::analysis::FourfoldProbability;

struct Judged {
  int a, b, c, d;
  Sta::SidedNess side;
  double probability;
};

// By mpmath 1.2.1 with 40 digits: hypergeometric probabilities from log gammas, added one by one.
const Judged kJudged[] = {
    {3, 1, 3, 160, Sta::LeftSided, 0.999999520100664},
    {50, 3, 75, 120, Sta::LeftSided, 0.999999999999999},
    {12, 5, 29, 2, Sta::RightSided, 0.994525206021882},
    {30, 30, 30, 30, Sta::TwoSided, 1.0},
    {300, 300, 310, 290, Sta::TwoSided, 0.603299992580362},
    {10000, 10000, 10100, 9900, Sta::TwoSided, 0.322168090507054},
    {100000, 100000, 100100, 100000, Sta::LeftSided, 0.438452952549535},
    {20, 1000000, 5, 1000000, Sta::TwoSided, 0.00407709368595948},
    {2, 1000000, 5, 1000000, Sta::RightSided, 0.937499835937992},
    {1000000, 1000100, 1000000, 1000000, Sta::TwoSided, 0.960919784837138},
    {3000000, 3001000, 3000000, 3000000, Sta::LeftSided, 0.386649744065464},
    {500000000, 500000000, 500030000, 500000000, Sta::RightSided, 0.74884196107223},
    {0, 100, 100, 0, Sta::TwoSided, 2.2087606931995e-59},
};

TEST(FourfoldProbability, AgreesWithSumsInFortyDigitsUpToTwoThousandMillionCounts) {
  for (const Judged& table : kJudged) {
    SCOPED_TRACE(testing::Message() << table.a << " " << table.b << " / " << table.c << " " << table.d);
    // A weight is a product of at most 2e5 ratios, each rounded three times: 2e5 * 3 * 2^-53 < 1e-10 at the very worst;
    // the roundings are independent, so 1e-12 is some twenty standard deviations.
    EXPECT_NEAR(FourfoldProbability(table.a, table.b, table.c, table.d, table.side) / table.probability, 1.0, 1e-12);
  }
}

/// n over k, exact for n <= 50.
double Binomial(int n, int k) {
  double value = 1;
  for (int i = 1; i <= k; ++i) value = value * (n - k + i) / i;
  return value;
}

/// The same by its definition: every table of the same sums, with whole numbers of ways.
double PlainProbability(int a, int b, int c, int d, Sta::SidedNess side) {
  const auto ways = [&](int x) { return Binomial(a + b, x) * Binomial(c + d, a + c - x); };
  double counted = 0;
  for (int x = std::max(0, a - d); x <= std::min(a + b, a + c); ++x) {
    const bool counts = side == Sta::LeftSided ? x <= a : side == Sta::RightSided ? x >= a : ways(x) <= ways(a);
    if (counts) counted += ways(x);
  }
  return counted / Binomial(a + b + c + d, a + c);
}

TEST(FourfoldProbability, IsTheShareOfTheWaysOfEverySmallTable) {
  for (int a = 0; a <= 6; ++a)
    for (int b = 0; b <= 6; ++b)
      for (int c = 0; c <= 6; ++c)
        for (int d = 0; d <= 6; ++d)
          for (const Sta::SidedNess side : {Sta::LeftSided, Sta::RightSided, Sta::TwoSided}) {
            // At most 12 steps from the most probable table: some 40 roundings.
            ASSERT_NEAR(FourfoldProbability(a, b, c, d, side), PlainProbability(a, b, c, d, side), 1e-14)
                << a << " " << b << " / " << c << " " << d << ", side " << side;
          }
}

TEST(FourfoldProbability, NeverExceedsOne) {
  for (const int n : {1, 30, 1000, 1000000, 500000000})
    for (const Sta::SidedNess side : {Sta::LeftSided, Sta::RightSided, Sta::TwoSided})
      EXPECT_LE(FourfoldProbability(n, n, n, n, side), 1.0) << n;
}

TEST(FourfoldProbability, IsZeroWhereADoubleCannotTellIt) {
  EXPECT_EQ(FourfoldProbability(0, 100000, 100000, 0, Sta::TwoSided), 0.0);
  EXPECT_EQ(FourfoldProbability(0, 1000000000, 1000000000, 0, Sta::LeftSided), 0.0);
}

}  // namespace
