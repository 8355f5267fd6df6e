// Cross-validations with rounds whose tables carry nothing: what each leads to.
#include <gtest/gtest.h>

#include "OPLSCase.h"
#include "kalmia/support/NCError.h"
#include "testing/Ints.h"
#include "testing/RandomTables.h"

namespace {

constexpr int kRows = 8, kGroup = 4, kOrthogonal = 2;  // the first group is the first four observations

void Nothing(Tables*) {}
void EmptyXColumnOfTheFirstGroup(Tables* tables) {
  for (int i = 1; i <= kGroup; ++i) tables->X(i, 2, kHole<float>);
}
void EmptyX(Tables* tables) { tables->X.SetAllValues(kHole<float>); }
void SetYOfTheFirstGroup(Tables* tables, float value) {
  for (int i = 1; i <= kGroup; ++i)
    for (int j = 1; j <= tables->Y.SizeColumns(); ++j) tables->Y(i, j, value);
}
void EmptyYOfTheFirstGroup(Tables* tables) { SetYOfTheFirstGroup(tables, kHole<float>); }
void FlatYOfTheFirstGroup(Tables* tables) { SetYOfTheFirstGroup(tables, 0.0F); }

struct Degenerate {
  const char* name;
  void (*spoil)(Tables*);
  int rounds;
  bool oneGroup;       ///< of all observations; otherwise there are two, the second of which needs a second round
  int predicted;       ///< observations with a prediction, the first ones, where Y is one variable
  bool severalYFails;  ///< some round's Y'X has no principal component
};

const Degenerate kDegenerate[] = {
    {"AColumnOfXIsEmptyInARound", EmptyXColumnOfTheFirstGroup, 2, false, kRows, false},
    {"AColumnOfXIsEmptyWhereItIsLeftOut", EmptyXColumnOfTheFirstGroup, 1, false, kGroup, false},
    {"YIsEmptyInARound", EmptyYOfTheFirstGroup, 2, false, kGroup, true},
    {"YIsEmptyWhereItIsLeftOut", EmptyYOfTheFirstGroup, 1, false, kGroup, false},
    {"YHasNoVarianceInARound", FlatYOfTheFirstGroup, 2, false, kGroup, true},
    {"YHasNoVarianceWhereItIsLeftOut", FlatYOfTheFirstGroup, 1, false, kGroup, false},
    {"XIsEmpty", EmptyX, 2, false, 0, true},
    {"NobodyIsLeftForTheModel", Nothing, 1, true, 0, true},
};

class OPLSCrossValidationDegenerate : public ::testing::TestWithParam<Degenerate> {
 protected:
  Tables SpoiltTables(int yVariables) const {
    Tables tables{RandomMatrix<float>(kRows, 3, 0.0, 1), RandomMatrix<float>(kRows, yVariables, 0.0, 2)};
    GetParam().spoil(&tables);
    return tables;
  }
  OPLSCrossValidation ValidatedWithGroups(const Tables& tables) const {
    NCIntegralVector<int, -99> groups =
        GetParam().oneGroup ? Ints({0, 0, 0, 0, 0, 0, 0, 0}) : Ints({0, 0, 0, 0, 1, 1, 1, 1});
    return Validated(tables, tables.Y.SizeColumns(), GetParam().rounds, kOrthogonal, &groups);
  }
  static void ExpectPredictions(const OPLSCrossValidation& validation, int predicted) {
    for (int i = 1; i <= kRows; ++i) {
      const NCDataVector<float> y = (*validation.GetYPred())[i];
      EXPECT_EQ(y.GetNumMisVal(), i <= predicted ? 0 : y.Size()) << i;
    }
    EXPECT_TRUE(HasExactCounts(*validation.GetYPred()));
  }
};

INSTANTIATE_TEST_SUITE_P(, OPLSCrossValidationDegenerate, ::testing::ValuesIn(kDegenerate),
                         [](const ::testing::TestParamInfo<Degenerate>& info) { return info.param.name; });

TEST_P(OPLSCrossValidationDegenerate, OfOneYGoesOnWithoutTheScoresAndPredictionsOfTheSpoiltRound) {
  OPLSCrossValidation validation = ValidatedWithGroups(SpoiltTables(1));
  EXPECT_EQ(validation.SizeOComponents(), kOrthogonal);
  ExpectPredictions(validation, GetParam().predicted);
  for (int round = 1; round <= GetParam().rounds; ++round) {
    const bool spoilt = GetParam().predicted < kGroup * round;
    EXPECT_EQ(validation.GetTSets()->front()[round].GetNumMisVal(), spoilt ? kRows : 0) << round;
    EXPECT_EQ((*validation.GetToSet())[round].GetNumMisVal(), spoilt ? kRows : 0) << round;
  }
  if (GetParam().predicted == 0) {
    EXPECT_EQ(validation.GetQ2TotCum(), 1.0F) << "nothing to judge";
  }
}

TEST_P(OPLSCrossValidationDegenerate, OfTwoYFailsWhereTheSpoiltRoundHasNoPrincipalComponent) {
  const Tables tables = SpoiltTables(2);
  if (!GetParam().severalYFails) {
    ExpectPredictions(ValidatedWithGroups(tables), GetParam().predicted);
    return;
  }
  try {
    ValidatedWithGroups(tables);
    ADD_FAILURE() << "went on";
  } catch (const NCError& error) {
    EXPECT_STREQ(error.GetMessage(), "PCA component could not be computed.");
  }
}

}  // namespace
