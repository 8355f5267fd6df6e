// Cross-validation against a twin in double that is written from its definition, and against the same made of the
// public parts.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "PCAValidationCase.h"
#include "PlainPCA.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

using Groups = NCIntegralVector<int, -99>;


struct Shape {
  const char* name;
  int rows, columns, rounds;
  double holes;
};

class PCACrossValidationOnTables : public ::testing::TestWithParam<Shape> {};

const Shape kShapes[] = {{"Tall", 20, 8, 7, 0.0},          {"Wide", 9, 30, 4, 0.0},
                         {"Square", 10, 10, 10, 0.0},      {"Small", 4, 3, 3, 0.0},
                         {"TwoRows", 2, 5, 2, 0.0},        {"TallWithHoles", 25, 9, 7, 0.1},
                         {"WideWithHoles", 12, 30, 4, 0.15}};

INSTANTIATE_TEST_SUITE_P(, PCACrossValidationOnTables, ::testing::ValuesIn(kShapes),
                         [](const ::testing::TestParamInfo<Shape>& info) { return info.param.name; });

/// The prediction errors of a component, all in double; a hole where a cell cannot be predicted.
plain::Table ErrorsOfTwin(const plain::Table& X, const plain::Vector& p, const plain::Vector& t, int component,
                          int rounds) {
  const int roundsOfIteration = 5 + static_cast<int>(std::floor(std::sqrt(component - 1.0) + 1e-5));
  const std::size_t variables = p.size();
  const auto groups = static_cast<std::size_t>(rounds);
  const auto groupOf = [groups](std::size_t index) { return (index + 1) % groups; };
  std::vector<plain::Vector> loadings, scores;
  for (std::size_t group = 0; group < groups; ++group) {
    plain::Table rest;
    for (std::size_t i = 0; i < X.size(); ++i)
      if (groupOf(i) != group) rest.push_back(X[i]);
    const plain::Vector scoresOfRest = plain::RegressRows(rest, p);
    plain::Vector loading = plain::FitPCA(rest, {roundsOfIteration, &scoresOfRest, /*endsWhenConverged=*/true}).p;
    if (plain::Dot(loading, p) < 0)
      for (double& cell : loading) cell = -cell;
    loadings.push_back(loading);

    std::vector<bool> isLeftOut;
    for (std::size_t j = 0; j < variables; ++j) isLeftOut.push_back(groupOf(j) == group);
    plain::Vector score = plain::FitPCA(X, {roundsOfIteration, &t, /*endsWhenConverged=*/true, isLeftOut}).t;
    const auto leftOut = std::count(isLeftOut.begin(), isLeftOut.end(), true);
    double scale = std::sqrt(static_cast<double>(variables) / static_cast<double>(variables - leftOut));
    if (plain::Dot(score, t) < 0) scale = -scale;
    for (double& cell : score) cell *= scale;
    scores.push_back(score);
  }
  plain::Table errors = X;
  for (std::size_t i = 0; i < X.size(); ++i)
    for (std::size_t j = 0; j < variables; ++j)
      errors[i][j] -= scores[groupOf(j)][i] * loadings[groupOf(i)][j];
  return errors;
}

TEST_P(PCACrossValidationOnTables, Q2IsThatOfTheTwinInDoubleOverSeveralComponents) {
  const Shape& shape = GetParam();
  PCAValidationCase data(shape.rows, shape.columns, shape.holes);
  PCACrossValidation validation(data.model.get(), shape.rounds, nullptr, nullptr);
  plain::Vector unexplained(static_cast<std::size_t>(shape.columns), 1.0);
  double unexplainedTotal = 1.0;
  for (int a = 1; a <= std::min(3, shape.rows - 1); ++a) {
    SCOPED_TRACE("component " + std::to_string(a));
    data.AddComponent();
    data.Validate(&validation);
    const plain::Table X = plain::TableOf(*data.model->GetResiduals());
    const plain::Table errors = ErrorsOfTwin(X, plain::VectorOf((*data.model->GetPprim())[a]),
                                             plain::VectorOf((*data.model->GetTprim())[a]), a, shape.rounds);
    // Up to 7 rounds, each rounds p and t to float: 2^-24 of their length each time, carried on by a map that does not
    // stretch them much; t p' and the error are rounded once more. 32 such roundings cover both vectors. An error of
    // that size in each cell changes press / ss by twice as much, relative to ss.
    const double tolerance = 32 * 0x1p-24;
    const plain::Table found = plain::TableOf(*validation.GetXPredResiduals());
    plain::Vector foundCells, cells;
    for (std::size_t i = 0; i < X.size(); ++i) {
      foundCells.insert(foundCells.end(), found[i].begin(), found[i].end());
      cells.insert(cells.end(), errors[i].begin(), errors[i].end());
    }
    const double share = std::sqrt(plain::SquaresOf(errors) / plain::SquaresOf(X));  // of X in the errors
    EXPECT_LT(plain::RelativeGap(foundCells, cells), tolerance / share);
    for (std::size_t j = 0; j < unexplained.size(); ++j) {
      const double squares = plain::SquaresOf(plain::Transposed(X)[j]);
      const double ratio = plain::SquaresOf(plain::Transposed(errors)[j]) / squares;
      const double toleranceOfColumn = 2 * tolerance * std::max(ratio, 1.0) * plain::SquaresOf(X) / squares;
      unexplained[j] *= std::min(ratio, 1.1);
      EXPECT_NEAR((*validation.GetQ2XVar())[static_cast<int>(j) + 1], 1.0 - ratio, toleranceOfColumn);
      EXPECT_NEAR((*validation.GetQ2XVarCum())[static_cast<int>(j) + 1], 1.0 - unexplained[j], a * toleranceOfColumn);
    }
    const double ratio = plain::SquaresOf(errors) / plain::SquaresOf(X);
    unexplainedTotal *= std::min(ratio, 1.1);
    EXPECT_NEAR(validation.GetQ2Tot(), 1.0 - ratio, 2 * tolerance * std::max(ratio, 1.0));
    EXPECT_NEAR(validation.GetQ2TotCum(), 1.0 - unexplainedTotal, 2 * a * tolerance);
    data.model->CalculateResiduals();
  }
}

TEST_P(PCACrossValidationOnTables, RoundsAreModelsWithoutTheGroupsToTheBit) {
  const Shape& shape = GetParam();
  PCAValidationCase data(shape.rows, shape.columns, shape.holes);
  const Groups observations = GetDeafultCVGroupsVector(shape.rows, shape.rounds);
  const Groups variables = GetDeafultCVGroupsVector(shape.columns, shape.rounds);
  PCACrossValidation validation(data.model.get(), shape.rounds, nullptr, nullptr);
  data.AddComponent();
  data.Validate(&validation);
  const NCDataVector<float>& p = (*data.model->GetPprim())[1];
  const NCDataVector<float>& t = (*data.model->GetTprim())[1];
  ASSERT_EQ(validation.GetPSet()->SizeRows(), shape.rounds);
  ASSERT_EQ(validation.GetTSet()->SizeRows(), shape.rounds);
  for (int group = 0; group < shape.rounds; ++group) {
    SCOPED_TRACE("group " + std::to_string(group));
    NCDataMatrix<float> rest;
    for (int i = 1; i <= shape.rows; ++i)
      if (observations[i] != group) rest.push_back(data.X[i]);
    NCPCA ofRows(&rest, 5);
    const NCDataVector<float> start = rest.SpecialNipalsRegressRowsFix(p, nullptr, 0);
    ofRows.NextComponent(nullptr, nullptr, 0, &start);
    const NCDataVector<float>& loading = (*ofRows.GetPprim())[1];
    const float sign = loading * p < 0.0L ? -1.0F : 1.0F;
    for (int j = 1; j <= shape.columns; ++j)
      EXPECT_EQ((*validation.GetPSet())[group + 1][j], loading[j] == kMissing ? kMissing : sign * loading[j]);

    NCPCA ofColumns(&data.X, 5);
    ofColumns.NextComponent(nullptr, &variables, group, &t);
    const NCDataVector<float>& score = (*ofColumns.GetTprim())[1];
    const auto leftOut = std::count(variables.begin(), variables.end(), group);
    const float quotient = static_cast<float>(shape.columns) / static_cast<float>(shape.columns - leftOut);
    const float root = static_cast<float>(std::sqrt(static_cast<double>(quotient)));
    const float scale = score * t < 0.0L ? -root : root;
    for (int i = 1; i <= shape.rows; ++i)
      EXPECT_EQ((*validation.GetTSet())[group + 1][i], score[i] == kMissing ? kMissing : score[i] * scale);
  }
  for (int i = 1; i <= shape.rows; ++i)
    for (int j = 1; j <= shape.columns; ++j) {
      const double score = (*validation.GetTSet())[variables[j] + 1][i];
      const double loading = (*validation.GetPSet())[observations[i] + 1][j];
      const float x = data.X[i][j];
      EXPECT_EQ((*validation.GetXPredResiduals())[i][j],
                x == kMissing ? x : static_cast<float>(x - score * loading));
    }
  for (const NCDataMatrix<float>* matrix :
       {validation.GetPSet(), validation.GetTSet(), validation.GetXPredResiduals()})
    EXPECT_TRUE(HasExactCounts(*matrix));
}

TEST_P(PCACrossValidationOnTables, Q2IsThatOfTheRoundedResidualsToTheBit) {
  const Shape& shape = GetParam();
  PCAValidationCase data(shape.rows, shape.columns, shape.holes);
  PCACrossValidation validation(data.model.get(), shape.rounds, nullptr, nullptr);
  data.AddComponent();
  data.Validate(&validation);
  const NCDataMatrix<float>& residuals = *validation.GetXPredResiduals();
  double ssOfAll = 0.0, pressOfAll = 0.0;
  for (int j = 1; j <= shape.columns; ++j) {
    double ss = 0.0, press = 0.0;
    for (int i = 1; i <= shape.rows; ++i) {
      if (data.X[i][j] == kMissing) continue;
      ss += static_cast<double>(data.X[i][j]) * data.X[i][j];
      press += static_cast<double>(residuals[i][j]) * residuals[i][j];
    }
    EXPECT_EQ((*validation.GetQ2XVar())[j], static_cast<float>((ss - press) / ss));
    ssOfAll += ss;
    pressOfAll += press;
  }
  EXPECT_EQ(validation.GetQ2Tot(), static_cast<float>((ssOfAll - pressOfAll) / ssOfAll));
}

TEST_P(PCACrossValidationOnTables, LeavesTheModelAsItIs) {
  const Shape& shape = GetParam();
  PCAValidationCase data(shape.rows, shape.columns, shape.holes);
  data.AddComponent();
  const std::string before = StreamOf(*data.model);
  PCACrossValidation validation(data.model.get(), shape.rounds, nullptr, nullptr);
  data.Validate(&validation);
  EXPECT_EQ(StreamOf(*data.model), before);
  EXPECT_EQ(data.model->GetComponents(), 1);
}

}  // namespace
