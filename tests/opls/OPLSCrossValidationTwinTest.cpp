// Cross-validations against a twin in double, against models and predictions made by hand, and against themselves.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "OplsCase.h"
#include "PlainOpls.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

using Groups = NCIntegralVector<int, -99>;

constexpr float kMissing = kHole<float>;

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

}  // namespace
