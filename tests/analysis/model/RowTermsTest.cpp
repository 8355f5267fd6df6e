#include "kalmia/analysis/model/RowTerms.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsNan;

RowTerms TermsOf(std::size_t rows, std::size_t components) {
  RowTerms terms;
  terms.scores.rows = rows;
  terms.scores.means.assign(components, 0.0);
  terms.scores.variances.assign(components, 1.0);
  return terms;
}

TEST(RowTerms, OfSixtyRowsAndThreeComponentsGiveTheLimitsOfScipy) {  // left_out_gasoline.py, scipy 1.10.1
  const RowTerms terms = TermsOf(60, 3);
  EXPECT_NEAR(*LimitsOfTrainingRows(terms).t2.at95, 7.495, 5e-4);  // to the digits that are printed
  EXPECT_NEAR(*LimitsOfTrainingRows(terms).t2.at99, 10.556, 5e-4);
  EXPECT_NEAR(*LimitsOfNewRows(terms, 3).t2.at95, 8.734, 5e-4);
  EXPECT_NEAR(*LimitsOfNewRows(terms, 3).t2.at99, 13.086, 5e-4);
}

TEST(RowTerms, HaveALimitForNewRowsByLeftOutRowsWhereThereAreAny) {
  RowTerms terms = TermsOf(20, 3);
  terms.distances = DistanceMoments{20, 0.9, 8.0};
  const double training = *LimitsOfTrainingRows(terms).distance.at95;
  EXPECT_DOUBLE_EQ(training, DistanceLimit(*terms.distances, 0.95));
  EXPECT_DOUBLE_EQ(*LimitsOfNewRows(terms, 3).distance.at95, *DistanceLimitWithoutRefits(training, 20, 3));
  terms.leftOut = DistanceMoments{20, 1.4, 5.0};
  EXPECT_DOUBLE_EQ(*LimitsOfNewRows(terms, 3).distance.at99, DistanceLimit(*terms.leftOut, 0.99));
  EXPECT_DOUBLE_EQ(*LimitsOfTrainingRows(terms).distance.at95, training);
}

TEST(RowTerms, HaveNoLimitWhereNothingGivesOne) {
  const RowTerms terms = TermsOf(4, 3);  // N <= A + 1; no distances
  EXPECT_FALSE(LimitsOfTrainingRows(terms).t2.at95);
  EXPECT_TRUE(LimitsOfNewRows(terms, 3).t2.at95);
  EXPECT_FALSE(LimitsOfNewRows(TermsOf(3, 3), 3).t2.at95);
  EXPECT_FALSE(LimitsOfNewRows(TermsOf(60, 0), 0).t2.at95);
  EXPECT_FALSE(LimitsOfTrainingRows(terms).distance.at95);
  EXPECT_FALSE(LimitsOfNewRows(terms, 3).distance.at99);
}

TEST(LimitsPassed, AreNamed) {
  RowLimits limits;
  limits.t2 = {2.0, 3.0};
  limits.distance.at95 = 1.5;
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_THAT(LimitsPassed(limits, 2.0, 1.5), IsEmpty());
  EXPECT_THAT(LimitsPassed(limits, 2.5, 1.0), ElementsAre("T2 95 %"));
  EXPECT_THAT(LimitsPassed(limits, 3.5, 9.0), ElementsAre("T2 95 %", "T2 99 %", "distance 95 %"));
  EXPECT_THAT(LimitsPassed(limits, kNotANumber, infinity), ElementsAre("distance 95 %"));
  EXPECT_THAT(LimitsPassed({}, 9.0, 9.0), IsEmpty());
}

TEST(T2OfRow, IsNoneWithoutScoresOrMoments) {
  EXPECT_EQ(T2OfRow(TermsOf(9, 2).scores, {3.0, 4.0}), 25.0);
  EXPECT_THAT(T2OfRow(TermsOf(9, 2).scores, {}), IsNan());
  EXPECT_THAT(T2OfRow(TermsOf(9, 0).scores, {}), IsNan());
  EXPECT_THAT(T2OfRow(TermsOf(9, 0).scores, {1.0, 2.0}), IsNan());
}

}  // namespace
}  // namespace kalmia::analysis
