#include "kalmia/analysis/validation/LeftOutErrors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/RandomDraws.h"
#include "testing/RecordingProgress.h"
#include "validation/LeftOutGasoline.h"

namespace kalmia::analysis {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsNan;

RealMatrix MatrixOfRows(const std::vector<std::vector<double>>& rows) {
  RealMatrix matrix(rows.size(), rows.front().size());
  matrix.cells.clear();
  for (const std::vector<double>& row : rows) matrix.cells.insert(matrix.cells.end(), row.begin(), row.end());
  return matrix;
}

// The file has twelve digits of numbers near 87, errors are near 0.2: their mean square is good to 1e-9.
constexpr double kOfTwelveDigits = 1e-9;

TEST(LeftOutErrors, OfGasolineGiveTheRmsecvOfThePackagePls) {
  // left_out_gasoline.R: R 4.2.2, pls 2.8-1, from one component on; without one, left_out_gasoline.py
  const struct {
    const char* scaling;
    std::vector<double> rmsecv;
  } expected[] = {{"uv",
                   {1.5481352223076326, 1.327352505758, 0.745806221629, 0.241300056308, 0.239629683331, 0.216480118050,
                    0.222047452863}},
                  {"centre",
                   {1.5481352223076326, 1.326934478694, 0.408683575842, 0.264159025257, 0.245027271956, 0.237389747667,
                    0.228781487812}}};
  for (const auto& models : expected) {
    const LeftOutErrors errors = ReadLeftOutGasoline(models.scaling).errors;
    ASSERT_EQ(errors.MostComponents(), 6U);
    for (std::size_t a = 0; a <= 6; ++a) {
      EXPECT_NEAR(errors.rmsecv(a, 0) / models.rmsecv[a], 1.0, kOfTwelveDigits) << models.scaling << a;
      // One Y column: its share is the table's, but for the rounding of sixty quotients in either sum.
      EXPECT_NEAR(errors.q2PerY(a, 0), errors.q2[a], 1e-14);
    }
  }
}

TEST(LeftOutErrors, OfGasolineGiveTheQ2OfTheRounds) {  // left_out_gasoline.py
  const std::vector<double> q2 = {0.0, 0.26488587973444566, 0.7679218676474284, 0.975706109852874,
                                  0.9760412892427711, 0.9804467816969976, 0.9794281282473649};
  const LeftOutErrors errors = ReadLeftOutGasoline("uv").errors;
  EXPECT_EQ(errors.q2[0], 0.0);
  for (std::size_t a = 1; a < q2.size(); ++a) EXPECT_NEAR(errors.q2[a], q2[a], kOfTwelveDigits);
  EXPECT_EQ(errors.unpredictedRows, 0U);
}

TEST(LeftOutErrors, WeighTheColumnsByTheSpreadOfAllTheirMeasuredValues) {
  // Deviations of 0 2 4 and 10 30 are 2 and sqrt(200); the hole has a prediction but no error.
  const RealMatrix y = MatrixOfRows({{0, 10}, {2, kNotANumber}, {4, 30}});
  const RealMatrix means = MatrixOfRows({{3, 30}, {2, 20}, {1, 10}});
  const RealMatrix model = MatrixOfRows({{1, 10}, {2, 77}, {4, 20}});
  const LeftOutErrors errors = JudgeLeftOutRows(y, {{means, model}});
  EXPECT_DOUBLE_EQ(errors.deviations[0], 2.0);
  EXPECT_DOUBLE_EQ(errors.deviations[1], std::sqrt(200.0));
  EXPECT_DOUBLE_EQ(errors.rowErrors(0, 0), 9.0 / 4 + 400.0 / 200);
  EXPECT_EQ(errors.rowErrors(1, 0), 0.0);
  EXPECT_DOUBLE_EQ(errors.rowErrors(2, 1), 100.0 / 200);
  EXPECT_DOUBLE_EQ(errors.press[0], 8.5);
  EXPECT_DOUBLE_EQ(errors.press[1], 0.75);
  EXPECT_DOUBLE_EQ(errors.q2[1], 1.0 - 0.75 / 8.5);
  EXPECT_DOUBLE_EQ(errors.rmsecv(1, 0), std::sqrt(1.0 / 3));
  EXPECT_DOUBLE_EQ(errors.rmsecv(1, 1), std::sqrt(100.0 / 2));
  EXPECT_DOUBLE_EQ(errors.q2PerY(1, 0), 1.0 - 1.0 / 18);
  EXPECT_DOUBLE_EQ(errors.q2PerY(1, 1), 1.0 - 100.0 / 800);
  EXPECT_THAT(errors.squaredErrors[1](1, 1), IsNan());
  EXPECT_EQ(errors.predicted[1](1, 1), 77.0);
}

TEST(LeftOutErrors, RowsThatOneModelCannotPredictCountUnderNone) {
  const RealMatrix y = ColumnOf({0, 2, 4, 7});
  for (const double none : {kNotANumber, std::numeric_limits<double>::infinity()}) {
    const LeftOutErrors errors = JudgeLeftOutRows(y, {{ColumnOf({1, 1, 1, 1}), ColumnOf({0, 3, 3, none})}});
    EXPECT_EQ(errors.unpredictedRows, 1U);
    const double s = errors.deviations[0];  // of all four
    EXPECT_DOUBLE_EQ(s * s, 107.0 / 12);
    EXPECT_DOUBLE_EQ(errors.press[0], 11.0 / (s * s));
    EXPECT_DOUBLE_EQ(errors.press[1], 2.0 / (s * s));
    EXPECT_DOUBLE_EQ(errors.rmsecv(0, 0), std::sqrt(11.0 / 3));
    EXPECT_THAT(errors.rowErrors(3, 0), IsNan());
    EXPECT_EQ(errors.predicted[0](3, 0), 1.0);  // it is there, but does not count
    EXPECT_THAT(errors.predicted[1](3, 0), IsNan());
  }
}

TEST(LeftOutErrors, AverageSquaresOverTheRepeatsBeforeTheRoot) {
  const RealMatrix y = ColumnOf({0, 2});
  const LeftOutErrors errors =
      JudgeLeftOutRows(y, {{ColumnOf({2, 0}), ColumnOf({1, 1})}, {ColumnOf({2, 0}), ColumnOf({-3, 2})}});
  EXPECT_DOUBLE_EQ(errors.squaredErrors[1](0, 0), (1.0 + 9.0) / 2);
  EXPECT_DOUBLE_EQ(errors.squaredErrors[1](1, 0), (1.0 + 0.0) / 2);
  EXPECT_DOUBLE_EQ(errors.rmsecv(1, 0), std::sqrt(5.5 / 2));
  EXPECT_DOUBLE_EQ(errors.predicted[1](0, 0), -1.0);
  EXPECT_DOUBLE_EQ(errors.predicted[1](1, 0), 1.5);
  EXPECT_DOUBLE_EQ(errors.q2[1], 1.0 - 5.5 / 8);
}

TEST(LeftOutErrors, ARowThatOneRepeatCannotPredictCountsInNone) {
  const LeftOutErrors errors = JudgeLeftOutRows(
      ColumnOf({0, 2, 4}), {{ColumnOf({1, 1, 1})}, {ColumnOf({1, kNotANumber, 1})}});
  EXPECT_EQ(errors.unpredictedRows, 1U);
  EXPECT_DOUBLE_EQ(errors.rmsecv(0, 0), std::sqrt(10.0 / 2));
  EXPECT_THAT(errors.predicted[0](1, 0), IsNan());
}

TEST(LeftOutErrors, LeaveColumnsWithoutSpreadOutAmongOthers) {
  // 0.1 + 0.1 + 0.1 is not 3 times 0.1 to the last bit: alike is alike, whatever their mean rounds to.
  const RealMatrix y = MatrixOfRows({{0.1, 0, 5}, {0.1, 2, kNotANumber}, {0.1, 4, kNotANumber}});
  const LeftOutErrors errors = JudgeLeftOutRows(y, {{MatrixOfRows({{9, 1, 9}, {9, 1, 9}, {9, 1, 9}})}});
  EXPECT_THAT(errors.columnsWithoutSpread, ElementsAre(0, 2));
  EXPECT_EQ(errors.deviations[0], 0.0);
  EXPECT_DOUBLE_EQ(errors.press[0], 11.0 / 4);
  EXPECT_THAT(errors.rmsecv(0, 0), IsNan());
  EXPECT_THAT(errors.q2PerY(0, 2), IsNan());
  EXPECT_THAT(JudgeLeftOutRows(ColumnOf({0, 1}), {{ColumnOf({1, 0})}}).columnsWithoutSpread, IsEmpty());
}

TEST(LeftOutErrors, RowsWithoutAMeasuredValueHaveNoError) {
  const LeftOutErrors errors = JudgeLeftOutRows(ColumnOf({0, kNotANumber, 4}), {{ColumnOf({4, 2, 0})}});
  EXPECT_THAT(errors.rowErrors(1, 0), IsNan());
  EXPECT_EQ(errors.unpredictedRows, 0U);
  EXPECT_DOUBLE_EQ(errors.rmsecv(0, 0), 4.0);
}

TEST(LeftOutErrors, WithoutErrorsOfTheMeansHaveNoQ2) {
  // The one row that is predicted lies on its round's mean.
  const LeftOutErrors errors =
      JudgeLeftOutRows(ColumnOf({1, 2, 3}), {{ColumnOf({kNotANumber, 2, kNotANumber}), ColumnOf({1, 1, 3})}});
  EXPECT_THAT(errors.q2, Each(IsNan()));
  EXPECT_THAT(errors.q2PerY.cells, Each(IsNan()));
}

TEST(LeftOutErrors, RefuseWhatCannotBeJudged) {
  EXPECT_EQ(FailureOf<BadData>([] { JudgeLeftOutRows(ColumnOf({3, 3, 3}), {{ColumnOf({3, 3, 3})}}); }),
            "no Y column has any variance");
  EXPECT_EQ(FailureOf<BadData>([] {
              JudgeLeftOutRows(ColumnOf({1, 2, kNotANumber}), {{ColumnOf({kNotANumber, kNotANumber, 3})}});
            }),
            "no row with a Y value can be predicted while it is left out");
}

TEST(LeftOutErrors, StopWhereverTheBarWantsTo) {
  const RealMatrix y = ColumnOf({0, 2, 4, 7});
  const std::vector<std::vector<RealMatrix>> predictions = {{ColumnOf({1, 1, 1, 1}), ColumnOf({0, 3, 3, 6})}};
  ProgressLog whole;
  JudgeLeftOutRows(y, predictions, RecordingBar(&whole).get());
  const int questions = whole.Count("IsBreakPressed");
  EXPECT_GE(questions, 4);
  for (int stopAt = 1; stopAt <= questions; ++stopAt) {
    ProgressLog log;
    log.stopAt = stopAt;
    const auto bar = RecordingBar(&log);
    EXPECT_THROW(JudgeLeftOutRows(y, predictions, bar.get()), Stopped) << stopAt;
  }
}

/// The definitions, one cell after the other.
double PlainPress(const RealMatrix& y, const std::vector<std::vector<RealMatrix>>& repeats, std::size_t a) {
  double press = 0.0;
  for (const auto& repeat : repeats) {
    for (std::size_t j = 0; j < y.columns; ++j) {
      double n = 0.0, sum = 0.0, squares = 0.0;
      for (std::size_t i = 0; i < y.rows; ++i) {
        if (std::isnan(y(i, j))) continue;
        n += 1.0;
        sum += y(i, j);
        squares += y(i, j) * y(i, j);
      }
      const double variance = (squares - sum * sum / n) / (n - 1.0);
      for (std::size_t i = 0; i < y.rows; ++i) {
        bool counts = !std::isnan(y(i, j));
        for (const auto& other : repeats)
          for (const RealMatrix& predicted : other)
            for (std::size_t k = 0; k < y.columns; ++k) counts = counts && !std::isnan(predicted(i, k));
        if (counts) press += std::pow(y(i, j) - repeat[a](i, j), 2) / variance;
      }
    }
  }
  return press / static_cast<double>(repeats.size());
}

TEST(LeftOutErrors, OfRandomTablesWithHolesAreThoseOfThePlainDefinition) {
  RandomDraws draws(5);
  const auto cell = [&](double holes) {
    const double number = static_cast<double>(draws.Below(1000)) / 100.0;
    return static_cast<double>(draws.Below(100)) < 100.0 * holes ? kNotANumber : number;
  };
  RealMatrix y(40, 3);
  for (double& c : y.cells) c = cell(0.1);
  std::vector<std::vector<RealMatrix>> repeats(3, std::vector<RealMatrix>(4, RealMatrix(40, 3)));
  for (auto& repeat : repeats)
    for (RealMatrix& predicted : repeat)
      for (double& c : predicted.cells) c = cell(0.01);
  const LeftOutErrors errors = JudgeLeftOutRows(y, repeats);
  EXPECT_GT(errors.unpredictedRows, 5U);
  for (std::size_t a = 0; a < 4; ++a) {
    const double press = PlainPress(y, repeats, a);
    EXPECT_NEAR(errors.press[a] / press, 1.0, 1e-13);  // some hundred roundings
    EXPECT_NEAR(errors.q2[a], 1.0 - press / PlainPress(y, repeats, 0), 1e-13);
  }
}

}  // namespace
}  // namespace kalmia::analysis
