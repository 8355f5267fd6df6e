// Models, rebuilt ones and predictions: what their matrices say of each other, to the bit.
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>

#include "OPLSCase.h"
#include "OPLSIdentities.h"
#include "kalmia/support/NCError.h"
#include "testing/RandomTables.h"
#include "testing/Threads.h"

namespace {

struct Case {
  const char* name;
  int rows, xVariables, yVariables;
  double holes;
  int predictive;
  std::function<void(Tables*)> change = [](Tables*) {};
};

class NCOPLSIdentities : public ::testing::TestWithParam<Case> {
 protected:
  NCOPLSIdentities() { GetParam().change(&tables_); }

  Tables tables_ = RelatedTables(GetParam().rows, GetParam().xVariables, GetParam().yVariables, GetParam().holes, 3);
};

const Case kCases[] = {
    {"OneY", 24, 9, 1, 0.0, 1},
    {"ThreeY", 24, 9, 3, 0.0, 2},
    {"AsManyComponentsAsY", 24, 9, 3, 0.0, 3},
    {"SizeDecidedByTheModel", 24, 9, 3, 0.0, 0},
    {"WideOfOneY", 9, 4100, 1, 0.0, 1},
    {"WideOfThreeY", 9, 4100, 3, 0.0, 3},
    {"LongOfOneY", 1000, 33, 1, 0.0, 1},
    {"LongOfThreeY", 1000, 33, 3, 0.0, 2},
    {"Holes", 24, 9, 3, 0.1, 2},
    {"HolesOfOneY", 24, 9, 1, 0.1, 1},
    {"HolesAndSizeDecidedByTheModel", 24, 9, 3, 0.1, 0},
    {"HolesOfYAlone", 24, 9, 3, 0.0, 2, [](Tables* tables) { tables->Y(3, 1, kHole<float>); }},
    {"ARowOfXWithoutAnyValue", 24, 9, 3, 0.0, 2, [](Tables* tables) { tables->X.SetRow(5, kHole<float>); }},
    {"AColumnOfXWithoutAnyValue", 24, 9, 3, 0.0, 2, [](Tables* tables) { tables->X.SetColumn(5, kHole<float>); }},
    {"AColumnOfYWithoutAnyValue", 24, 9, 3, 0.0, 1, [](Tables* tables) { tables->Y.SetColumn(2, kHole<float>); }},
    {"TwoRows", 2, 9, 1, 0.0, 1},
    {"OneVariable", 24, 1, 1, 0.0, 1},
    // The single variable has the weight 1 or -1, and so this cell, or minus it, is a score.
    {"AScoreLikeTheMissingValue", 24, 1, 1, 0.0, 1, [](Tables* tables) { tables->X(3, 1, 99.0F); }},
    {"AScoreLikeTheMissingValueTurned", 24, 1, 1, 0.0, 1,
     [](Tables* tables) {
       tables->X(3, 1, 99.0F);
       for (int i = 1; i <= 24; ++i) tables->Y(i, 1, -tables->Y[i][1]);
     }},
    {"ACellLikeTheMissingValueThatNoCountKnows", 24, 9, 2, 0.0, 1,
     [](Tables* tables) {
       tables->X(3, 3, 1.0F);
       tables->X.MultiplyRow(3, -99.0F);
     }},
};

INSTANTIATE_TEST_SUITE_P(, NCOPLSIdentities, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<Case>& info) { return info.param.name; });

TEST_P(NCOPLSIdentities, HoldForAModelAfterEachComponent) {
  for (const int threads : {1, 2}) {
    SCOPED_TRACE(std::to_string(threads) + " threads");
    const Threads team(threads);
    NCOPLS model(&tables_.X, &tables_.Y, GetParam().predictive, 200);
    for (int o = 0; o <= 3; ++o) {
      model.NextComponent(nullptr);
      EXPECT_EQ(model.SizeOrthogonalComponents(), o);
      ExpectOPLSIdentities(model, tables_);
    }
  }
}

TEST_P(NCOPLSIdentities, HoldForARebuiltModelThatGoesOnAndForThePrediction) {
  const NCOPLS stored = FittedOPLS(tables_, GetParam().predictive, /*orthogonal=*/2);
  const Tables others = RelatedTables(GetParam().rows, GetParam().xVariables, GetParam().yVariables, 0.0, 4);
  for (const int threads : {1, 2})
    for (const Tables& tables : {tables_, others}) {
      SCOPED_TRACE(std::to_string(threads) + " threads");
      const Threads team(threads);
      NCOPLS model(&tables.X, &tables.Y, stored.GetWMatrices(), stored.GetPMatrices(), stored.GetCMatrices(),
                   stored.GetWOprim(), stored.GetPOprim(), stored.GetCOprim(), 7, 200);
      ExpectOPLSIdentities(model, tables, FittedFrom{3});
      ExpectPredictionOf(model, tables.X);
      model.NextComponent(nullptr);
      EXPECT_EQ(model.SizeComponents(), stored.SizeComponents());
      ExpectOPLSIdentities(model, tables, FittedFrom{3});
    }
}

TEST(NCOPLSOfAnInfinity, HasNumbersWhereTheIdentitiesHaveThem) {
  Tables tables = RelatedTables(24, 9, 1, 0.0, 3);
  tables.X(3, 3, std::numeric_limits<float>::infinity());
  ExpectOPLSIdentities(FittedOPLS(tables, 1, 1), tables);
}

TEST(NCOPLSOfOneRow, GoesOnWithOneYAndEndsWithMore) {
  for (const int yVariables : {1, 2}) {
    const Tables tables = RelatedTables(1, 9, yVariables, 0.0, 3);
    NCOPLS model(&tables.X, &tables.Y, 1, 200);
    int steps = 0;
    try {
      for (; steps < 3; ++steps) {
        model.NextComponent(nullptr);
        ExpectOPLSIdentities(model, tables);
      }
    } catch (const NCError&) {
    }
    // The block explains all of X but rounding. With one Y no principal component is looked for; with more there is
    // none as soon as exactly nothing is left.
    if (yVariables == 1) {
      EXPECT_EQ(steps, 3);
    } else {
      EXPECT_GT(steps, 0);
      EXPECT_LT(steps, 3);
    }
  }
}

}  // namespace
