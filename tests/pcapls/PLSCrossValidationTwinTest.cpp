// Cross-validation against a twin in double that leaves groups out, and against the same made of the public parts.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "CrossValidationCase.h"
#include "PlainPLS.h"
#include "kalmia/pcapls/NCPLSPred.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "kalmia/pcapls/PLSCrossValidation.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

using Groups = NCIntegralVector<int, -99>;


struct Shape {
  const char* name;
  int rows, xVariables, yVariables;
  double holes;
};

class PLSCrossValidationOnTables : public ::testing::TestWithParam<Shape> {};

const Shape kShapes[] = {{"OneY", 20, 5, 1, 0.0},          {"ThreeY", 20, 5, 3, 0.0},
                         {"Wide", 15, 40, 2, 0.0},         {"OneYWithHoles", 25, 6, 1, 0.15},
                         {"ThreeYWithHoles", 25, 6, 3, 0.15}, {"WideWithHoles", 15, 40, 2, 0.15}};

INSTANTIATE_TEST_SUITE_P(, PLSCrossValidationOnTables, ::testing::ValuesIn(kShapes),
                         [](const ::testing::TestParamInfo<Shape>& info) { return info.param.name; });

/// The prediction errors of one component, all in double. Each round runs exactly `roundsOfLoop` rounds.
plain::Table ErrorsOfTwin(const plain::Table& X, const plain::Table& Y, const plain::Vector& w, const Groups& groups,
                          int rounds, int roundsOfLoop) {
  plain::Table errors = Y;
  for (int group = 0; group < rounds; ++group) {
    plain::Table keptX, keptY;
    for (std::size_t i = 0; i < X.size(); ++i)
      if (groups[static_cast<int>(i) + 1] != group) {
        keptX.push_back(X[i]);
        keptY.push_back(Y[i]);
      }
    const plain::Component component = plain::Fit(keptX, keptY, &w, roundsOfLoop);
    for (std::size_t i = 0; i < X.size(); ++i)
      if (groups[static_cast<int>(i) + 1] == group) {
        const double t = plain::RegressRows({X[i]}, component.w).front();
        for (std::size_t j = 0; j < Y[i].size(); ++j)
          if (!std::isnan(t)) errors[i][j] = Y[i][j] - t * component.c[j];
      }
  }
  return errors;
}

TEST_P(PLSCrossValidationOnTables, Q2IsThatOfTheTwinInDoubleOverSeveralComponents) {
  const Shape& shape = GetParam();
  CrossValidationCase data(shape.rows, shape.xVariables, shape.yVariables, shape.holes);
  // Two rounds of a loop that needs more, so that both sides do the same number; with one Y variable one is all.
  data.maxIterations = 2;
  const int roundsOfLoop = shape.yVariables == 1 ? 1 : 2;
  data.Restart();
  const int rounds = 7;
  const Groups groups = GetDeafultCVGroupsVector(shape.rows, rounds);
  PLSCrossValidation validation(data.model.get(), rounds, nullptr);
  plain::Vector unexplained(static_cast<std::size_t>(shape.yVariables), 1.0);
  double unexplainedTotal = 1.0;
  for (int a = 1; a <= 3; ++a) {
    SCOPED_TRACE("component " + std::to_string(a));
    data.AddComponent();
    data.Validate(&validation);
    const plain::Table Y = plain::TableOf(*data.model->GetYResiduals());
    const plain::Table errors = ErrorsOfTwin(plain::TableOf(*data.model->GetXResiduals()), Y,
                                             plain::VectorOf(data.Weights()), groups, rounds, roundsOfLoop);
    const plain::Table found = plain::TableOf(*validation.GetYPredResiduals());
    // A prediction is off by the roundings of w, t and c (see NCPLSTest), 16 times 2^-24 of what the table has; an
    // error of that size in each cell changes press / ss by twice as much, relative to ss.
    const double tolerance = 32 * 0x1p-24;
    EXPECT_LT(plain::RelativeGap(plain::Transposed(found).front(), plain::Transposed(errors).front()), tolerance);
    for (std::size_t j = 0; j < unexplained.size(); ++j) {
      const double ratio = plain::SquaresOf(plain::Transposed(errors)[j]) / plain::SquaresOf(plain::Transposed(Y)[j]);
      unexplained[j] *= std::min(ratio, 1.1);
      EXPECT_NEAR((*validation.GetQ2YVar())[static_cast<int>(j) + 1], 1.0 - ratio, tolerance * std::max(ratio, 1.0));
      EXPECT_NEAR((*validation.GetQ2YVarCum())[static_cast<int>(j) + 1], 1.0 - unexplained[j], a * tolerance);
    }
    const double ratio = plain::SquaresOf(errors) / plain::SquaresOf(Y);
    unexplainedTotal *= std::min(ratio, 1.1);
    EXPECT_NEAR(validation.GetQ2Tot(), 1.0 - ratio, tolerance * std::max(ratio, 1.0));
    EXPECT_NEAR(validation.GetQ2TotCum(), 1.0 - unexplainedTotal, a * tolerance);
    data.model->CalculateResiduals();
  }
}

TEST_P(PLSCrossValidationOnTables, RoundsAreModelsOfTheRestAndPredictionsOfTheGroupToTheBit) {
  const Shape& shape = GetParam();
  CrossValidationCase data(shape.rows, shape.xVariables, shape.yVariables, shape.holes);
  const int rounds = 4;
  const Groups groups = GetDeafultCVGroupsVector(shape.rows, rounds);
  PLSCrossValidation validation(data.model.get(), rounds, &groups);
  data.AddComponent();
  data.Validate(&validation);
  for (int group = 0; group < rounds; ++group) {
    SCOPED_TRACE("group " + std::to_string(group));
    NCDataMatrix<float> keptX, keptY, leftOut;
    std::vector<int> kept, left;
    for (int i = 1; i <= shape.rows; ++i) {
      (groups[i] == group ? leftOut : keptX).push_back(data.X[i]);
      (groups[i] == group ? left : kept).push_back(i);
      if (groups[i] != group) keptY.push_back(data.Y[i]);
    }
    NCPLS round(&keptX, &keptY, data.maxIterations);
    round.NextComponent(nullptr, &data.Weights(), /*quiet=*/true, /*strict=*/false);
    round.CalculateResiduals();
    NCPLSPred prediction(leftOut, *round.GetWprim(), *round.GetPprim(), *round.GetCprim(), 0.9999F);
    prediction.CalcNextComponent();

    const bool turned = (*round.GetWprim())[1] * data.Weights() < 0.0L;
    for (std::size_t k = 0; k < left.size(); ++k) {
      const float t = (*prediction.GetTPred())[static_cast<int>(k) + 1];
      EXPECT_EQ((*validation.GetTPred())[left[k]], t) << "with the sign of its round";
      EXPECT_EQ((*validation.GetTSet())[group + 1][left[k]], turned && t != kMissing ? -t : t);
      for (int j = 1; j <= shape.yVariables; ++j) {
        const float y = data.Y[left[k]][j];
        const float expected = y == kMissing ? y : y - (*prediction.GetYPred())[static_cast<int>(k) + 1][j];
        EXPECT_EQ((*validation.GetYPredResiduals())[left[k]][j], expected);
      }
    }
    if (turned) round.FlipComponent(1);
    EXPECT_EQ(CellsOf((*validation.GetWSet())[group + 1]), CellsOf((*round.GetWprim())[1]));
    EXPECT_EQ(CellsOf((*validation.GetCSet())[group + 1]), CellsOf((*round.GetCprim())[1]));
    EXPECT_EQ(CellsOf((*validation.GetPSet())[group + 1]), CellsOf((*round.GetPprim())[1]));
    for (std::size_t k = 0; k < kept.size(); ++k)
      EXPECT_EQ((*validation.GetTSet())[group + 1][kept[k]], (*round.GetTprim())[1][static_cast<int>(k) + 1]);
    EXPECT_EQ((*validation.GetSSY())[group + 1], static_cast<float>(round.GetYResiduals()->GetSS()));
    EXPECT_EQ((*validation.GetSSYOriginal())[group + 1], static_cast<float>(keptY.GetSS()));
  }
  for (const NCDataMatrix<float>* matrix :
       {validation.GetWSet(), validation.GetCSet(), validation.GetPSet(), validation.GetTSet(),
        validation.GetYPredResiduals()})
    EXPECT_TRUE(HasExactCounts(*matrix));
}

TEST_P(PLSCrossValidationOnTables, LeavesTheModelAsItIs) {
  const Shape& shape = GetParam();
  CrossValidationCase data(shape.rows, shape.xVariables, shape.yVariables, shape.holes);
  data.AddComponent();
  const std::string before = StreamOf(*data.model);
  PLSCrossValidation validation(data.model.get(), 5, nullptr);
  data.Validate(&validation);
  EXPECT_EQ(StreamOf(*data.model), before);
}

}  // namespace
