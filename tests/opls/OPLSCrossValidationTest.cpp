#include "kalmia/opls/OPLSCrossValidation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "OPLSCase.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "kalmia/support/NCError.h"
#include "testing/Ints.h"
#include "testing/MessageOf.h"
#include "testing/RandomTables.h"

namespace {

using Groups = NCIntegralVector<int, -99>;


TEST(OPLSCrossValidation, CutsTheRoundsToTheObservations) {
  OPLSCrossValidation validation = Validated(RelatedTables(6, 3, 1, 0.0, 1), 1, 100, 0);
  EXPECT_EQ(validation.SizeCVRounds(), 6);
  EXPECT_EQ(validation.GetToSet()->SizeRows(), 6);
  EXPECT_EQ(validation.GetSSYcv()->GetNumMisVal(), 0);
}

TEST(OPLSCrossValidation, Q2LimitIsThatOfFewUpToOneHundredObservations) {
  EXPECT_EQ(Validated(RelatedTables(100, 3, 1, 0.0, 1), 1, 2, 0).GetQ2Lim(), 0.05F);
  EXPECT_EQ(Validated(RelatedTables(101, 3, 1, 0.0, 1), 1, 2, 0).GetQ2Lim(), 0.0F);
}

TEST(OPLSCrossValidation, CountsOrthogonalComponentsFromZero) {
  const Tables tables = RelatedTables(20, 6, 2, 0.0, 1);
  for (int o = 0; o <= 3; ++o) EXPECT_EQ(Validated(tables, 2, 3, o).SizeOComponents(), o);
}

TEST(OPLSCrossValidation, SetsOfScoresHaveARoundPerRowAndOneMatrixPerPredictiveComponentEvenWhereItWasDecidedLate) {
  for (const int asked : {0, 2}) {
    OPLSCrossValidation validation = Validated(RelatedTables(20, 6, 2, 0.0, 5), asked, 3, 1);
    ASSERT_EQ(validation.GetTSets()->size(), 2U);
    for (const NCDataMatrix<float>& set : *validation.GetTSets()) {
      EXPECT_EQ(set.SizeRows(), 3);
      EXPECT_EQ(set.SizeColumns(), 20);
      EXPECT_EQ(set.GetNumMisVal(), 0);
    }
    EXPECT_EQ(validation.GetTPred()->SizeRows(), 2);
    EXPECT_EQ(validation.GetTPred()->GetNumMisVal(), 0);
  }
}

TEST(OPLSCrossValidation, WithoutOrthogonalComponentsTheirScoresAreMissing) {
  OPLSCrossValidation validation = Validated(RelatedTables(20, 6, 2, 0.0, 1), 2, 3, 0);
  EXPECT_EQ(validation.GetToSet()->GetNumMisVal(), 3 * 20);
  EXPECT_EQ(validation.GetToPred()->GetNumMisVal(), 20);
}

TEST(OPLSCrossValidation, ResumedItHasItsResultsAtFullSizeWithoutValuesUntilItGoesOn) {
  const Tables tables = RelatedTables(20, 6, 2, 0.0, 1);
  OPLSCrossValidation fresh = Validated(tables, 2, 3, 1);
  OPLSCrossValidation resumed(&tables.X, &tables.Y, fresh.GetData(), nullptr);
  EXPECT_EQ(resumed.GetYPred()->GetNumMisVal(), 20 * 2);
  EXPECT_EQ(resumed.GetSSYcv()->GetNumMisVal(), 3);
  ASSERT_EQ(resumed.GetTSets()->size(), 2U);
  EXPECT_EQ((*resumed.GetTSets())[1].GetNumMisVal(), 3 * 20);
  EXPECT_EQ(resumed.GetTPred()->GetNumMisVal(), 2 * 20);
  EXPECT_EQ(resumed.GetQ2YVarCum()->GetNumMisVal(), 2);
}

TEST(OPLSCrossValidation, ResumedWithoutAnyModelItStartsWithTheBlock) {
  const Tables tables = RelatedTables(20, 6, 1, 0.1, 1);
  const OPLSCrossvalidationData data(4, tables.Y);
  OPLSCrossValidation resumed(&tables.X, &tables.Y, &data, nullptr);
  EXPECT_EQ(resumed.SizeOComponents(), -1);
  resumed.NextComponent(nullptr);
  OPLSCrossValidation fresh = Validated(tables, 1, 4, 0);
  EXPECT_EQ(EverythingButTrainingSS(resumed), EverythingButTrainingSS(fresh));
}

// ---- groups

TEST(OPLSCrossValidation, AnObservationOfNoRoundIsInEveryModelAndNeverPredicted) {
  const Tables tables = RelatedTables(12, 4, 2, 0.0, 1);
  Groups groups = Ints({0, 1, 2, 0, 3, -1, 2, 0, 1, 2, 0, 1});
  OPLSCrossValidation validation = Validated(tables, 1, 3, 1, &groups);
  for (int i = 1; i <= 12; ++i)
    EXPECT_EQ((*validation.GetYPred())[i].GetNumMisVal(), i == 5 || i == 6 ? 2 : 0) << i;
  EXPECT_EQ((*validation.GetToPred())[5], kMissing);
  EXPECT_EQ(validation.GetToSet()->GetNumMisVal(), 0) << "each round's model has its own score of it";
}

TEST(OPLSCrossValidation, ARoundWithoutObservationsLeavesNobodyOut) {
  const Tables tables = RelatedTables(12, 4, 1, 0.0, 1);
  Groups groups = Ints({0, 0, 0, 2, 2, 2, 0, 0, 0, 2, 2, 2});
  OPLSCrossValidation validation = Validated(tables, 1, 3, 1, &groups);
  EXPECT_EQ(validation.GetYPred()->GetNumMisVal(), 0);
  EXPECT_EQ((*validation.GetSSYcvOriginal())[2], static_cast<float>(tables.Y.GetSS()));
}

TEST(OPLSCrossValidation, RefusesGroupsAndTablesOfDifferentLengths) {
  const Tables tables = RelatedTables(12, 4, 1, 0.0, 1);
  Groups groups = GetDeafultCVGroupsVector(11, 3);
  EXPECT_EQ(MessageOf([&] { Validated(tables, 1, 3, 0, &groups); }),
            "Cross validation: there are 11 groups for 12 observations.") << "as all validations say it";
  EXPECT_THROW(Validated({tables.X, RandomMatrix<float>(11, 1, 0.0, 1)}, 1, 3, 0), NCError);
  OPLSCrossValidation fresh = Validated(tables, 1, 3, 0);
  EXPECT_THROW(OPLSCrossValidation(&tables.X, &tables.Y, fresh.GetData(), &groups), NCError);
}

TEST(OPLSCrossValidation, RefusesStoredDataOfOtherTables) {
  const Tables tables = RelatedTables(12, 4, 2, 0.0, 1);
  const OPLSCrossvalidationData good = *Validated(tables, 1, 3, 1).GetData();
  struct Lie {
    const char* what;
    void (*tell)(OPLSCrossvalidationData*);
  };
  const Lie lies[] = {
      {"a round less of P", [](auto* data) { data->PMatricesPerRound.pop_back(); }},
      {"a round less of C", [](auto* data) { data->CMatricesPerRound.pop_back(); }},
      {"a round less of WO", [](auto* data) { data->WOPerRound.pop_back(); }},
      {"a round less of PO", [](auto* data) { data->POPerRound.pop_back(); }},
      {"a round less of CO", [](auto* data) { data->COPerRound.pop_back(); }},
      {"a block less in one round", [](auto* data) { data->WMatricesPerRound[1].pop_back(); }},
      {"a block less of P", [](auto* data) { data->PMatricesPerRound[1].pop_back(); }},
      {"a block less of C", [](auto* data) { data->CMatricesPerRound[2].pop_back(); }},
      {"no row in a block", [](auto* data) { data->WMatricesPerRound[1][0].Clear(); }},
      {"a row more in a block of P", [](auto* data) { data->PMatricesPerRound[1][1].push_back(
                                         data->PMatricesPerRound[1][1][1]); }},
      {"a column less in WO", [](auto* data) { data->WOPerRound[0] = NCDataMatrix<float>(1, 3); }},
      {"no row in CO", [](auto* data) { data->COPerRound[0].Clear(); }},
      {"a Y variable less", [](auto* data) { data->SSY.Resize(1); }},
      {"more rounds than observations",
       [](auto* data) { *data = OPLSCrossvalidationData(13, NCDataMatrix<float>(1, 2)); }},
  };
  EXPECT_NO_THROW(OPLSCrossValidation(&tables.X, &tables.Y, &good, nullptr));
  for (const Lie& lie : lies) {
    OPLSCrossvalidationData data = good;
    lie.tell(&data);
    EXPECT_THROW(OPLSCrossValidation(&tables.X, &tables.Y, &data, nullptr), NCError) << lie.what;
  }
  for (const Tables& other : {RelatedTables(12, 5, 2, 0.0, 1), RelatedTables(12, 4, 3, 0.0, 1)})
    EXPECT_THROW(OPLSCrossValidation(&other.X, &other.Y, &good, nullptr), NCError);
}

// ---- Q2 without anything to judge

TEST(OPLSCrossValidation, PerfectlyPredictedYHasQ2One) {
  Tables tables = RelatedTables(12, 4, 2, 0.0, 1);
  tables.Y = NCDataMatrix<float>(12, 1, 0.0F);
  OPLSCrossValidation validation = Validated(tables, 1, 3, 0);
  EXPECT_EQ((*validation.GetQ2YVarCum())[1], 1.0F);
  EXPECT_EQ(validation.GetQ2TotCum(), 1.0F);
}

TEST(OPLSCrossValidation, AColumnOfZerosHasQ2OneInFrontOfTheErrorsAndNoNumberBehindThem) {
  Tables tables = RelatedTables(12, 4, 3, 0.0, 1);
  for (const int zero : {1, 3}) tables.Y.SetColumn(zero, 0.0F);
  OPLSCrossValidation validation = Validated(tables, 1, 3, 0);
  EXPECT_EQ((*validation.GetQ2YVarCum())[1], 1.0F);
  EXPECT_TRUE(std::isfinite((*validation.GetQ2YVarCum())[2]));
  EXPECT_TRUE(std::isnan((*validation.GetQ2YVarCum())[3]));
  EXPECT_TRUE(std::isfinite(validation.GetQ2TotCum()));
}

TEST(OPLSCrossValidation, AVariableOfYWithoutAnyValueIsInNeitherSumOfTheTotal) {
  for (const int empty : {1, 3}) {
    Tables tables = RelatedTables(12, 4, 3, 0.0, 1);
    tables.Y.SetColumn(empty, kMissing);
    OPLSCrossValidation validation = Validated(tables, 1, 3, 1);
    double press = 0.0, ss = 0.0;
    for (int j = 1; j <= 3; ++j) {
      if (j == empty) continue;
      press += static_cast<double>(validation.GetYPredResiduals().GetColumnSS(j, 0.0L));
      ss += static_cast<double>(validation.GetData()->SSY[j]);
    }
    EXPECT_EQ(validation.GetQ2TotCum(), static_cast<float>((ss - press) / ss));
    EXPECT_EQ(validation.GetData()->SSY[empty], kMissing);
    EXPECT_EQ(validation.GetYPredResiduals().GetColumnMisVal(empty), 12);
    // In front of the errors there is nothing to judge; behind them both sums of it are missing, and so are equal.
    EXPECT_EQ((*validation.GetQ2YVarCum())[empty], empty == 1 ? 1.0F : 0.0F);
  }
}

TEST(OPLSCrossValidation, OfNoVariableOfYHasQ2One) {
  const Tables tables{RandomMatrix<float>(6, 3, 0.0, 1), NCDataMatrix<float>(6, 0)};
  EXPECT_EQ(Validated(tables, 1, 3, 0).GetQ2TotCum(), 1.0F);
}

TEST(OPLSCrossValidation, NothingIsCumulatedNorLimitedAcrossSteps) {
  const Tables tables = RelatedTables(10, 12, 1, 0.0, 3);  // more variables than observations: it soon overfits
  OPLSCrossValidation validation = Validated(tables, 1, 5, 0);
  for (int o = 0; o < 4; ++o) {
    const double press = static_cast<double>(validation.GetYPredResiduals().GetColumnSS(1, 0.0L));
    const double ss = validation.GetData()->SSY[1];
    EXPECT_EQ(validation.GetQ2TotCum(), static_cast<float>((ss - press) / ss));
    validation.NextComponent(nullptr);
  }
}

TEST(OPLSCrossValidation, OfNoObservationsOrNoRoundsHasNothingToSay) {
  const Tables none{NCDataMatrix<float>(0, 3), NCDataMatrix<float>(0, 2)};
  EXPECT_EQ(Validated(none, 1, 7, 1).SizeCVRounds(), 0);
  const Tables tables = RelatedTables(6, 3, 1, 0.0, 1);
  OPLSCrossValidation validation = Validated(tables, 1, 0, 1);
  EXPECT_EQ(validation.SizeCVRounds(), 0);
  EXPECT_EQ(validation.SizeOComponents(), -1);
  EXPECT_EQ(validation.GetYPred()->GetNumMisVal(), 6);
}

}  // namespace
