// What cross-validation says of tables at its limits.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "PCAValidationCase.h"
#include "testing/Ints.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using Groups = NCIntegralVector<int, -99>;


// ---- Q2 at its limits

TEST(PCACrossValidation, GivesAVariableWithoutVarianceQ2ZeroAndCumulatedOneIfItHadSomeAtTheStart) {
  PCAValidationCase data(10, 5, 0.0);
  for (int i = 1; i <= 10; ++i) data.X(i, 2, 0.0F);
  data.Restart();
  data.AddComponent();
  for (const float original : {0.0F, kMissing, 1e-37F, 1.2e-37F, 5.0F}) {
    SCOPED_TRACE(original);
    PCACrossValidation validation(data.model.get(), 5, nullptr, nullptr);
    data.ss(2, original);
    data.Validate(&validation);
    EXPECT_EQ((*validation.GetQ2XVar())[2], 0.0F);
    EXPECT_EQ((*validation.GetQ2XVarCum())[2], original >= 1.2e-37F ? 1.0F : 0.0F);
  }
}

TEST(PCACrossValidation, ForgetsTheCumulatedValueOfAVariableWithoutVariance) {
  PCAValidationCase data(10, 5, 0.0);
  for (int i = 1; i <= 10; ++i) data.X(i, 2, 0.0F);
  data.Restart();
  data.AddComponent();
  PCACrossValidation validation(data.model.get(), 0.5F, NCDataVector<float>(5, 0.5F), 5, nullptr, nullptr);
  data.Validate(&validation);
  EXPECT_EQ((*validation.GetQ2XVarCum())[2], 0.0F);
  EXPECT_NE((*validation.GetQ2XVarCum())[1], (*validation.GetQ2XVar())[1]) << "the others go on";
}

TEST(PCACrossValidation, GivesATableWithoutVarianceQ2ZeroAndCumulatedOne) {
  // Nothing is predicted, so that there is nothing to explain: groups that no round leaves out, and one row alone.
  PCAValidationCase data(6, 4, 0.0), oneRow(1, 4, 0.0);
  const Groups nobody = Ints({-1, -1, -1, -1, -1, -1});
  PCACrossValidation ofNobody(data.model.get(), 2, &nobody, nullptr);
  PCACrossValidation ofOneRow(oneRow.model.get(), 7, nullptr, nullptr);
  for (const auto& [table, validation] : {std::pair{&data, &ofNobody}, {&oneRow, &ofOneRow}}) {
    table->AddComponent();
    table->Validate(validation);
    EXPECT_EQ(validation->GetQ2Tot(), 0.0F);
    EXPECT_EQ(validation->GetQ2TotCum(), 1.0F);
    EXPECT_EQ(CellsOf(*validation->GetXPredResiduals()), CellsOf(table->X));
    EXPECT_THAT(CellsOf(*validation->GetQ2XVarCum()), Each(1.0F));
  }
}

TEST(PCACrossValidation, LowersACumulatedValueByAFactorOfOnePointOneAtMost) {
  // Two outliers, in a row and a column of their own each: what one of them says of the rest is far off.
  PCAValidationCase data(MatrixOf<float>({{10, 1, 1, -1}, {1, -10, -1, 1}, {-1, 1, 9, 1}, {1, -1, 1, 9}}));
  data.AddComponent();
  PCACrossValidation validation(data.model.get(), 4, nullptr, nullptr);
  data.Validate(&validation);
  ASSERT_LT(validation.GetQ2Tot(), -0.1F);
  const float once = static_cast<float>(1.0 - 1.1);
  EXPECT_EQ(validation.GetQ2TotCum(), once);
  int capped = 0;
  for (int j = 1; j <= 4; ++j) {
    if (!((*validation.GetQ2XVar())[j] < -0.1F)) continue;
    ++capped;
    EXPECT_EQ((*validation.GetQ2XVarCum())[j], once);
  }
  EXPECT_GT(capped, 0);
  data.Validate(&validation);
  EXPECT_EQ(validation.GetQ2TotCum(), static_cast<float>(1.0 - (1.0 - static_cast<double>(once)) * 1.1));
}

TEST(PCACrossValidation, HasALimitThatAComponentOfNoiseWouldReach) {
  PCAValidationCase data(10, 5, 0.0);
  const PCACrossValidation validation(data.model.get(), 5, nullptr, nullptr);
  struct Limit {
    int component;
    bool reduced;
    float value;
  };
  const Limit limits[] = {
      {-1, false, kMissing},
      {0, false, kMissing},
      {0, true, kMissing},
      {1, false, static_cast<float>(1.0 - 50.0 / 60.0)},
      {1, true, static_cast<float>(1.0 - 45.0 / 60.0)},
      {2, false, static_cast<float>(1.0 - 36.0 / 45.0)},
      {5, false, static_cast<float>(1.0 - 6.0 / 12.0)},
      {6, false, 1.0F},  // no variables left: 5 * 0
      {7, false, 1.0F},  // 4 * -1
      {10, true, 1.0F},  // 0 * -4
      // Beyond both sides the product is positive again, and so is what it is divided by: -1 * -6 / (-1 * -5).
      {12, false, static_cast<float>(1.0 - 6.0 / 5.0)},
  };
  for (const Limit& limit : limits)
    EXPECT_EQ(validation.GetQ2Lim(limit.component, limit.reduced), limit.value)
        << "component " << limit.component << (limit.reduced ? ", reduced" : "");
}

TEST(PCACrossValidation, HasALimitOfOneForASingleObservationLessOne) {
  PCAValidationCase data(1, 5, 0.0);
  const PCACrossValidation validation(data.model.get(), 1, nullptr, nullptr);
  EXPECT_EQ(validation.GetQ2Lim(1, true), 1.0F);
  EXPECT_EQ(validation.GetQ2Lim(1, false), static_cast<float>(1.0 - 5.0 / 6.0));
}

TEST(PCACrossValidation, AcceptsTheComponentsThatAreThereAndNoNoise) {
  PCAValidationCase data(40, 12, 0.0);
  PCACrossValidation validation(data.model.get(), 7, nullptr, nullptr);
  std::vector<bool> significant;
  for (int a = 1; a <= 4; ++a) {
    data.AddComponent();
    data.Validate(&validation);
    significant.push_back(validation.GetQ2Tot() > validation.GetQ2Lim(a, false));
    data.model->CalculateResiduals();
  }
  EXPECT_THAT(significant, ElementsAre(true, true, true, false)) << "three directions and noise";
}

// ---- Tables with hardly anything in them

TEST(PCACrossValidation, FailsWhereARoundHasNoComponent) {
  PCAValidationCase oneColumn(6, 1, 0.0), oneRound(6, 3, 0.0), emptied(6, 3, 0.0);
  const NCDataMatrix<float> nothing(6, 3), p(1, 3, 0.5F), t(1, 6, 1.0F);
  struct Case {
    const char* what;
    PCAValidationCase* data;
    int rounds;
  };
  for (const Case& c : {Case{"one variable, which the round leaves out", &oneColumn, 7},
                        Case{"one round, which leaves everything out", &oneRound, 1},
                        Case{"an empty table", &emptied, 3}}) {
    SCOPED_TRACE(c.what);
    if (c.data == &emptied)
      c.data->model = std::make_unique<NCPCA>(&nothing, &p, &t, 50);
    else
      c.data->AddComponent();
    PCACrossValidation validation(c.data->model.get(), c.rounds, nullptr, nullptr);
    const std::string before = Judgement(validation);
    EXPECT_EQ(MessageOf([&] { c.data->Validate(&validation); }), "PCA component could not be computed.");
    EXPECT_EQ(Judgement(validation), before);
  }
}

TEST(PCACrossValidation, HasNoRoundsForATableWithoutRowsOrColumns) {
  for (const auto& [rows, columns] : {std::pair{0, 3}, {3, 0}, {0, 0}}) {
    SCOPED_TRACE(std::to_string(rows) + " x " + std::to_string(columns));
    const NCDataMatrix<float> X(rows, columns), p(1, columns), t(1, rows);
    NCPCA model(&X, &p, &t, 50);
    PCACrossValidation validation(&model, 7, nullptr, nullptr);
    EXPECT_NO_THROW(validation.NextComponent(NCDataVector<float>(columns, 0.0F), nullptr));
    EXPECT_EQ(validation.GetPSet()->SizeRows(), 0);
    EXPECT_EQ(validation.GetQ2Tot(), 0.0F);
    EXPECT_EQ(validation.GetQ2TotCum(), 1.0F);
  }
}

TEST(PCACrossValidation, RefusesGroupsThatAreNotOneForEachObservationAndEachVariable) {
  PCAValidationCase data(8, 5, 0.0);
  data.AddComponent();
  const NCDataVector<float> cumulated(5, 0.0F);
  const auto refuses = [&](int observations, int variables) {
    const NCIntegralVector<int, -99> ofRows(observations, 0), ofColumns(variables, 0);
    const auto first = MessageOf([&] { PCACrossValidation(data.model.get(), 3, &ofRows, &ofColumns); });
    EXPECT_EQ(MessageOf([&] { PCACrossValidation(data.model.get(), 0.0F, cumulated, 3, &ofRows, &ofColumns); }), first);
    return first;
  };
  const std::string text = "Cross validation: there are ";
  for (const int count : {0, 7, 9})
    EXPECT_EQ(refuses(count, 5), text + std::to_string(count) + " groups for 8 observations.");
  for (const int count : {0, 4, 6})
    EXPECT_EQ(refuses(8, count), text + std::to_string(count) + " groups for 5 variables.");
  EXPECT_EQ(refuses(8, 5), std::nullopt);
}

TEST(PCACrossValidation, RefusesAModelThatHasBecomeAnotherOneOfAnotherSize) {
  struct Other {
    int rows, columns;
    const char* what;
  };
  for (const Other& other : {Other{600, 5, "600 observations, and had 8"}, {7, 5, "7 observations, and had 8"},
                             {8, 50, "50 variables, and had 5"}, {8, 4, "4 variables, and had 5"}}) {
    SCOPED_TRACE(other.what);
    PCAValidationCase data(8, 5, 0.0), another(other.rows, other.columns, 0.0);
    data.AddComponent();
    another.AddComponent();
    PCACrossValidation validation(data.model.get(), 3, nullptr, nullptr);
    data.Validate(&validation);
    const std::string before = Everything(validation);
    std::istringstream stream(StreamOf(*another.model));
    ASSERT_TRUE(stream >> *data.model);
    EXPECT_EQ(MessageOf([&] { validation.NextComponent(another.ss, nullptr); }),
              std::string("Cross validation: the model has ") + other.what + " when the validation was made.");
    EXPECT_EQ(Everything(validation), before);
  }
}

TEST(PCACrossValidation, RefusesVectorsThatHaveNotOneCellForEachVariable) {
  PCAValidationCase data(8, 5, 0.0);
  data.AddComponent();
  const auto refusal = [&](int cellsOfSS, int cellsOfCumulated) {
    return MessageOf([&] {
      const NCDataVector<float> cumulated(cellsOfCumulated, 0.5F);
      PCACrossValidation validation(data.model.get(), 0.5F, cumulated, 3, nullptr, nullptr);
      validation.NextComponent(NCDataVector<float>(cellsOfSS, 1.0F), nullptr);
    });
  };
  EXPECT_EQ(refusal(5, 5), std::nullopt);
  for (const int cells : {0, 4, 6}) {
    const std::string text = " has " + std::to_string(cells) + " cells for 5 variables.";
    EXPECT_EQ(refusal(cells, 5), "Cross validation: ss" + text);
    EXPECT_EQ(refusal(5, cells), "Cross validation: q2XVarCum" + text);
  }
}

TEST(PCACrossValidation, PredictsNothingInLessThanOneRound) {
  for (const int rounds : {0, -1}) {
    PCAValidationCase data(6, 3, 0.0);
    data.AddComponent();
    PCACrossValidation validation(data.model.get(), rounds, nullptr, nullptr);
    EXPECT_NO_THROW(data.Validate(&validation));
    EXPECT_EQ(CellsOf(*validation.GetXPredResiduals()), CellsOf(data.X));
    EXPECT_EQ(validation.GetQ2Tot(), 0.0F);
  }
}

TEST(PCACrossValidation, EndsOnTablesWithCellsThatAreNotFinite) {
  for (const float cell : {std::numeric_limits<float>::infinity(), std::nanf("")}) {
    PCAValidationCase data(8, 4, 0.0);
    data.AddComponent();
    NCDataMatrix<float> X = data.X;
    X(2, 2, cell);
    NCPCA model(&X, data.model->GetPprim(), data.model->GetTprim(), 50);
    PCACrossValidation validation(&model, 4, nullptr, nullptr);
    EXPECT_TRUE(MessageOf([&] { data.Validate(&validation); }).has_value());
    EXPECT_EQ(validation.GetQ2TotCum(), 0.0F);
  }
}

}  // namespace
