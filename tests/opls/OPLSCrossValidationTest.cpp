#include "kalmia/opls/OPLSCrossValidation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "OplsCase.h"
#include "PlainOpls.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "kalmia/support/NCError.h"
#include "testing/Ints.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

using Groups = NCIntegralVector<int, -99>;

constexpr float kMissing = kHole<float>;

OPLSCrossValidation Validated(const Tables& tables, int predictive, int rounds, int orthogonal,
                              Groups* groups = nullptr) {
  OPLSCrossValidation validation(&tables.X, &tables.Y, predictive, rounds, nullptr, groups);
  for (int o = 0; o < orthogonal; ++o) validation.NextComponent(nullptr);
  return validation;
}

struct Shape {
  const char* name;
  int rows, xVariables, yVariables;
  double holes;
  int predictive;
};

class OPLSCrossValidationOnTables : public ::testing::TestWithParam<Shape> {
 protected:
  const Tables tables_ = RelatedTables(GetParam().rows, GetParam().xVariables, GetParam().yVariables,
                                       GetParam().holes, 27);
};

const Shape kShapes[] = {{"OneY", 24, 6, 1, 0.0, 1},           {"ThreeY", 24, 6, 3, 0.0, 2},
                         {"Wide", 18, 40, 2, 0.0, 2},          {"OneYWithHoles", 24, 6, 1, 0.1, 1},
                         {"ThreeYWithHoles", 24, 6, 3, 0.1, 2}};

INSTANTIATE_TEST_SUITE_P(, OPLSCrossValidationOnTables, ::testing::ValuesIn(kShapes),
                         [](const ::testing::TestParamInfo<Shape>& info) { return info.param.name; });

/// The rows whose group is `group`, or all others.
plain::Table RowsOf(const plain::Table& table, const Groups& groups, int group, bool leftOut) {
  plain::Table rows;
  for (std::size_t i = 0; i < table.size(); ++i)
    if ((groups[static_cast<int>(i) + 1] == group) == leftOut) rows.push_back(table[i]);
  return rows;
}

TEST_P(OPLSCrossValidationOnTables, Q2IsThatOfATwinInDoubleThatLeavesEachGroupOut) {
  const Shape& shape = GetParam();
  const int rounds = 5;
  const Groups groups = GetDeafultCVGroupsVector(shape.rows, rounds);
  const plain::Table X = plain::TableOf(tables_.X), Y = plain::TableOf(tables_.Y);
  OPLSCrossValidation validation = Validated(tables_, shape.predictive, rounds, 0);
  for (int o = 0; o <= 2; ++o) {
    SCOPED_TRACE(std::to_string(o) + " orthogonal components");
    plain::Table errors = Y;
    for (int group = 0; group < rounds; ++group) {
      const plain::Opls model(RowsOf(X, groups, group, false), RowsOf(Y, groups, group, false), shape.predictive, o,
                              /*rounds=*/1000, /*passes=*/200);
      plain::Table predicted = model.Predict(RowsOf(X, groups, group, true));
      auto row = predicted.begin();
      for (std::size_t i = 0; i < errors.size(); ++i) {
        if (groups[static_cast<int>(i) + 1] != group) continue;
        for (std::size_t j = 0; j < errors[i].size(); ++j) errors[i][j] -= (*row)[j];
        ++row;
      }
    }
    // Principal components end when their scores move by 1e-5 of their length, which leaves some 1e-4 to go where the
    // next one is as large but for a tenth; float cells add 1e-5. Q2 changes by twice as much at most.
    const double tolerance = 2e-3;
    for (std::size_t j = 0; j < errors[0].size(); ++j) {
      const double q2 =
          1.0 - plain::SquaresOf(plain::Transposed(errors)[j]) / plain::SquaresOf(plain::Transposed(Y)[j]);
      EXPECT_NEAR((*validation.GetQ2YVarCum())[static_cast<int>(j) + 1], q2, tolerance) << j;
    }
    EXPECT_NEAR(validation.GetQ2TotCum(), 1.0 - plain::SquaresOf(errors) / plain::SquaresOf(Y), tolerance);
    validation.NextComponent(nullptr);
  }
}

/// The tables without a group, and the group.
struct Division {
  Tables kept;
  NCDataMatrix<float> leftOut;
  std::vector<int> keptRows, leftOutRows;
};

Division Divide(const Tables& tables, const Groups& groups, int group) {
  Division division;
  for (int i = 1; i <= tables.X.SizeRows(); ++i) {
    const bool out = groups[i] == group;
    (out ? division.leftOut : division.kept.X).push_back(tables.X[i]);
    (out ? division.leftOutRows : division.keptRows).push_back(i);
    if (!out) division.kept.Y.push_back(tables.Y[i]);
  }
  return division;
}

/// Turns the newest components of a round along those of the first.
void Align(NCOPLS* model, const NCOPLS& first) {
  for (int a = 1; a <= model->SizeComponents(); ++a)
    if ((*model->GetWprim())[a] * (*first.GetWprim())[a] < 0.0L) model->NegatePredictiveComp(a);
  const int o = model->SizeOrthogonalComponents();
  if (o > 0 && (*model->GetWOprim())[o] * (*first.GetWOprim())[o] < 0.0L) model->NegateOComp(o);
}

TEST_P(OPLSCrossValidationOnTables, RoundsAreModelsOfTheRestAndPredictionsOfTheGroupToTheBit) {
  const Shape& shape = GetParam();
  const int rounds = 4, orthogonal = 2, A = shape.predictive;
  const Groups groups = GetDeafultCVGroupsVector(shape.rows, rounds);
  OPLSCrossValidation validation = Validated(tables_, A, rounds, orthogonal);
  std::vector<NCOPLS> models;
  for (int group = 0; group < rounds; ++group) {
    SCOPED_TRACE("group " + std::to_string(group));
    const Division division = Divide(tables_, groups, group);
    NCOPLS model = FittedOpls(division.kept, A, -1);
    for (int o = 0; o <= orthogonal; ++o) {
      model.NextComponent(nullptr);
      if (group > 0) Align(&model, FittedOpls(Divide(tables_, groups, 0).kept, A, o));
    }
    const auto g = static_cast<std::size_t>(group);
    const int row = group + 1;
    const OPLSCrossvalidationData& data = *validation.GetData();
    for (std::size_t o = 0; o <= orthogonal; ++o) {
      EXPECT_EQ(StreamOf(data.WMatricesPerRound[g][o]), StreamOf((*model.GetWMatrices())[o]));
      EXPECT_EQ(StreamOf(data.PMatricesPerRound[g][o]), StreamOf((*model.GetPMatrices())[o]));
      EXPECT_EQ(StreamOf(data.CMatricesPerRound[g][o]), StreamOf((*model.GetCMatrices())[o]));
    }
    EXPECT_EQ(StreamOf(data.WOPerRound[g]), StreamOf(*model.GetWOprim()));
    EXPECT_EQ(StreamOf(data.POPerRound[g]), StreamOf(*model.GetPOprim()));
    EXPECT_EQ(StreamOf(data.COPerRound[g]), StreamOf(*model.GetCOprim()));
    EXPECT_EQ((*validation.GetSSYcv())[row], static_cast<float>(model.GetYResiduals().GetSS()));
    EXPECT_EQ((*validation.GetSSYcvOriginal())[row], static_cast<float>(division.kept.Y.GetSS()));

    NCOPLSPred prediction = PredictedBy(&model, division.leftOut);
    for (std::size_t k = 0; k < division.keptRows.size(); ++k) {
      const int i = division.keptRows[k], at = static_cast<int>(k) + 1;
      for (int a = 1; a <= A; ++a)
        EXPECT_EQ((*validation.GetTSets())[static_cast<std::size_t>(a - 1)][row][i], (*model.GetTprim())[a][at]);
      EXPECT_EQ((*validation.GetToSet())[row][i], (*model.GetTOprim())[orthogonal][at]);
    }
    for (std::size_t k = 0; k < division.leftOutRows.size(); ++k) {
      const int i = division.leftOutRows[k], at = static_cast<int>(k) + 1;
      for (int a = 1; a <= A; ++a) {
        EXPECT_EQ((*validation.GetTSets())[static_cast<std::size_t>(a - 1)][row][i], (*prediction.GetTPred())[a][at]);
        EXPECT_EQ((*validation.GetTPred())[a][i], (*prediction.GetTPred())[a][at]);
      }
      EXPECT_EQ((*validation.GetToSet())[row][i], (*prediction.GetTOPred())[orthogonal][at]);
      EXPECT_EQ((*validation.GetToPred())[i], (*prediction.GetTOPred())[orthogonal][at]);
      EXPECT_EQ(CellsOf((*validation.GetYPred())[i]), CellsOf((*prediction.GetYPred())[at]));
    }
  }
  EXPECT_EQ(StreamOf(validation.GetYPredResiduals()), StreamOf(tables_.Y - *validation.GetYPred()));
}

TEST_P(OPLSCrossValidationOnTables, StoredAndResumedAfterEachComponentItEqualsTheUninterruptedOneToTheBit) {
  const int rounds = 4;
  OPLSCrossValidation uninterrupted = Validated(tables_, GetParam().predictive, rounds, 0);
  for (int o = 1; o <= 3; ++o) {
    OPLSCrossvalidationData data;
    std::istringstream stream(Everything(*uninterrupted.GetData()));
    ASSERT_TRUE(data.ReadObject(stream));
    OPLSCrossValidation resumed(&tables_.X, &tables_.Y, &data, nullptr);
    EXPECT_EQ(resumed.SizeOComponents(), o - 1);
    for (OPLSCrossValidation* either : {&uninterrupted, &resumed}) either->NextComponent(nullptr);
    EXPECT_EQ(Everything(resumed), Everything(uninterrupted));
    EXPECT_EQ(resumed.GetSSYcvOriginal()->GetNumMisVal(), rounds) << "training Y is not looked at again";
    EXPECT_EQ(uninterrupted.GetSSYcvOriginal()->GetNumMisVal(), 0);
  }
}

TEST_P(OPLSCrossValidationOnTables, CopiesAreValidationsOfTheirOwnAndTheTablesAreLeftAlone) {
  const auto x = CellsOf(tables_.X);
  OPLSCrossValidation validation = Validated(tables_, GetParam().predictive, 4, 1);
  const std::string before = Everything(validation);
  OPLSCrossValidation copy(validation), assigned = Validated(RelatedTables(8, 3, 1, 0.0, 1), 1, 2, 0);
  assigned = validation;
  assigned = *&assigned;
  for (OPLSCrossValidation* other : {&copy, &assigned}) {
    EXPECT_EQ(Everything(*other), before);
    other->NextComponent(nullptr);
    EXPECT_EQ(Everything(validation), before);
  }
  EXPECT_EQ(Everything(copy), Everything(assigned));
  EXPECT_EQ(CellsOf(tables_.X), x);
}

// ---- sizes and limits

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
  EXPECT_EQ(Everything(resumed), Everything(fresh));
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
  EXPECT_THROW(Validated(tables, 1, 3, 0, &groups), NCError);
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

// ---- rounds that carry nothing

TEST(OPLSCrossValidation, HopelessRoundsEndInAnErrorOrInMissingValuesButNeverInACrash) {
  Groups groups = Ints({0, 0, 0, 0, 1, 1, 1, 1});
  const NCDataMatrix<float> X = RandomMatrix<float>(8, 3, 0.0, 1);
  for (const int yVariables : {1, 2}) {
    Tables emptied{X, RandomMatrix<float>(8, yVariables, 0.0, 2)}, withoutY = emptied, withoutVariance = emptied;
    for (int i = 1; i <= 4; ++i) {
      emptied.X(i, 2, kMissing);
      for (int j = 1; j <= yVariables; ++j) {
        withoutY.Y(i, j, kMissing);
        withoutVariance.Y(i, j, 0.0F);
      }
    }
    const Tables empty{NCDataMatrix<float>(8, 3), emptied.Y};
    for (const Tables& tables : {emptied, withoutY, withoutVariance, empty})
      for (const int rounds : {1, 2}) {  // with one round the second group is in its model
        try {
          OPLSCrossValidation validation = Validated(tables, yVariables, rounds, 2, &groups);
          EXPECT_TRUE(HasExactCounts(*validation.GetYPred()));
          EXPECT_EQ(validation.SizeOComponents(), 2);
        } catch (const NCError& error) {
          EXPECT_STREQ(error.GetMessage(), "PCA component could not be computed.");
        }
      }
    Groups one = Ints({0, 0, 0, 0, 0, 0, 0, 0});
    try {
      OPLSCrossValidation validation = Validated(emptied, 1, 1, 2, &one);
      EXPECT_TRUE(HasExactCounts(*validation.GetYPred()));
    } catch (const NCError& error) {
      EXPECT_STREQ(error.GetMessage(), "PCA component could not be computed.");
    }
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
