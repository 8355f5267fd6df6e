#include "kalmia/analysis/validation/internal/PLSLanes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <random>
#include <utility>

#include "kalmia/analysis/table/ColumnMoments.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/analysis/validation/Folds.h"
#include "kalmia/analysis/validation/internal/LaneRounds.h"
#include "kalmia/analysis/validation/internal/OPLSSeries.h"
#include "kalmia/analysis/validation/internal/PLSSeries.h"
#include "kalmia/analysis/validation/internal/RoundModel.h"
#include "testing/Threads.h"
#include "validation/PlainPls.h"

namespace kalmia::analysis {
namespace {

/// A complete table, and how it is validated.
struct Case {
  RealColumns x, y;
  NCScale::Scaling scaling = NCScale::ScalingUnitVariance;
  int groups = 7;
  int components = 5;
};

std::vector<std::string> NamesOf(const RealColumns& columns) {
  std::vector<std::string> names;
  for (std::size_t k = 0; k < columns.size(); ++k) names.push_back("c" + std::to_string(k));
  return names;
}

RealColumns RandomColumns(std::size_t rows, std::size_t columns, unsigned seed, double mean = 0.0) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal(mean);
  RealColumns made(columns, std::vector<double>(rows));
  for (std::vector<double>& column : made) {
    for (double& cell : column) cell = normal(random);
  }
  return made;
}

/// Y columns of the sum of the first three X columns, each times its place, and noise.
RealColumns FollowingY(const RealColumns& x, std::size_t columns, unsigned seed) {
  RealColumns y = RandomColumns(x.front().size(), columns, seed);
  for (std::size_t j = 0; j < columns; ++j) {
    for (std::size_t i = 0; i < y[j].size(); ++i) {
      for (std::size_t k = 0; k < 3; ++k) y[j][i] += static_cast<double>((j + 1) * k + 1) * x[k][i];
    }
  }
  return y;
}

Case RandomCase(std::size_t rows, std::size_t columns, std::size_t yColumns, unsigned seed = 1) {
  Case made;
  made.x = RandomColumns(rows, columns, seed);
  made.y = FollowingY(made.x, yColumns, seed + 100);
  return made;
}

/// Sums of some broad peaks in random amounts over a base line, with noise of a hundredth; Y are amounts.
Case Spectra(std::size_t rows, std::size_t columns, std::size_t yColumns) {
  constexpr std::size_t kPeaks = 8;
  const RealColumns amounts = RandomColumns(rows, kPeaks, 3);
  Case made;
  made.x = RandomColumns(rows, columns, 4);
  for (std::size_t k = 0; k < columns; ++k) {
    for (std::size_t i = 0; i < rows; ++i) {
      double cell = 5.0 + 0.01 * made.x[k][i];
      for (std::size_t q = 0; q < kPeaks; ++q) {
        const double along = kPeaks * static_cast<double>(k) / static_cast<double>(columns);
        const double place = (along - static_cast<double>(q)) / 2.0;
        cell += amounts[q][i] * std::exp(-place * place);
      }
      made.x[k][i] = cell;
    }
  }
  made.y.assign(amounts.begin(), amounts.begin() + static_cast<std::ptrdiff_t>(yColumns));
  return made;
}

/// The table in single precision, whose cells it holds.
struct SingleTable {
  explicit SingleTable(const Case& of) {
    int moved = 0;
    std::vector<std::vector<float>> columns;
    for (const std::vector<double>& column : of.x) {
      const double shift = Centres(of.scaling) ? ShiftOf(column) : 0.0;
      table.xShifts.push_back(shift);
      columns.push_back(SingleCells(column, shift, &moved));
    }
    x = MatrixOf(columns, RowCount(of.x));
    for (int row = 1; row <= x.SizeRows(); ++row) table.x.push_back(std::as_const(x)[row].begin());
    table.xNames = NamesOf(of.x);
    table.y = of.y;
    table.yNames = NamesOf(of.y);
    table.scaling = of.scaling;
  }

  NCDataMatrix<float> x;
  LaneTable table;
};

/// All rows, then the rounds.
std::vector<LaneRound> RoundsOf(const Case& of) {
  const Folds folds = MakeFolds(of.x.front().size(), {{}, of.groups});
  const SeriesLimits limits{of.components, std::numeric_limits<int>::max()};
  std::vector<LaneRound> rounds(1);
  for (std::size_t i = 0; i < of.x.front().size(); ++i) rounds.front().fitted.push_back(i);
  rounds.front().limits = limits;
  for (int group = 0; group < of.groups; ++group) {
    rounds.push_back({RowsOutsideGroup(folds, 0, group), RowsOfGroup(folds, 0, group), limits});
  }
  return rounds;
}

/// The figures of all rounds, of which those have none that are to be fitted alone.
std::vector<std::optional<RoundFigures>> FitSideBySide(const Case& of,
                                                       ImportanceKinds importances = ImportanceKinds::OfPLS) {
  const SingleTable single(of);
  const std::vector<LaneRound> rounds = RoundsOf(of);
  WorkProgress silent(nullptr);
  LaneRounds lanes(single.table, rounds.size(), [&](std::size_t round) { return rounds[round]; });
  std::vector<std::optional<RoundFigures>> figures;
  for (std::size_t r = 0; r < rounds.size(); ++r) {
    const RoundQuestions questions{/*fitted=*/true, /*firstOfCoefficients=*/0, importances};
    figures.push_back(lanes.Figures(r, questions, &silent, [](double) {}));
  }
  return figures;
}

/// The largest gaps between figures, as shares of the spread of what is measured: of Y, of the largest coefficient...
struct Gaps {
  double predicted = 0.0, distances = 0.0, coefficients = 0.0, importances = 0.0, shares = 0.0;
};

void Widen(double* gap, double value, double expected, double unit) {
  *gap = std::max(*gap, std::fabs(value - expected) / unit);
}

double LargestOf(const std::vector<double>& numbers) {
  double largest = 0.0;
  for (const double number : numbers) largest = std::max(largest, std::fabs(number));
  return largest;
}

void WidenByPredictions(Gaps* gaps, const LeftOutRows& found, const LeftOutRows& expected, const RealColumns& y) {
  for (std::size_t a = 0; a < expected.predicted.size(); ++a) {
    for (std::size_t j = 0; j < y.size(); ++j) {
      const double unit = MomentsOf(y[j]).standardDeviation;
      for (std::size_t i = 0; i < expected.predicted[a].rows; ++i) {
        Widen(&gaps->predicted, found.predicted[a](i, j), expected.predicted[a](i, j), unit);
      }
    }
  }
}

/// Beside models that are fitted alone, in single precision. Expects that they end at the same component.
Gaps GapsToRoundsAlone(const Case& of, const SeriesFamily& family = PLSFamily()) {
  Gaps gaps;
  WorkProgress silent(nullptr);
  const std::vector<LaneRound> rounds = RoundsOf(of);
  const std::vector<std::optional<RoundFigures>> all = FitSideBySide(of, family.Importances());
  for (std::size_t r = 0; r < rounds.size(); ++r) {
    EXPECT_TRUE(all[r]) << "round " << r;
    if (!all[r]) continue;
    const RoundFigures& found = *all[r];
    const RoundModel alone(family, NamesOf(of.x), RowsOfColumns(of.x, rounds[r].fitted), NamesOf(of.y),
                           RowsOfColumns(of.y, rounds[r].fitted), of.scaling, rounds[r].limits, &silent);
    EXPECT_EQ(found.lastModel, alone.LastModel());
    EXPECT_EQ(found.columnsWithoutSpread, alone.ColumnsWithoutSpread());
    if (found.lastModel != alone.LastModel()) continue;
    std::vector<std::size_t> places(of.x.size());
    for (std::size_t k = 0; k < places.size(); ++k) places[k] = k;
    const LeftOutRows leftOut = alone.Predict(RowsOfColumns(of.x, rounds[r].leftOut), &silent);
    WidenByPredictions(&gaps, found.leftOut, leftOut, of.y);
    WidenByPredictions(&gaps, found.fitted, alone.Predict(RowsOfColumns(of.x, rounds[r].fitted), &silent), of.y);
    for (std::size_t c = 0; c < leftOut.distances.cells.size(); ++c) {
      const double expected = leftOut.distances.cells[c];
      EXPECT_EQ(std::isnan(found.leftOut.distances.cells[c]), std::isnan(expected));
      if (!std::isnan(expected)) Widen(&gaps.distances, found.leftOut.distances.cells[c], expected, expected);
    }
    const auto coefficients = alone.Coefficients(places, places.size());
    const auto importances = alone.Importances(places, places.size());
    for (std::size_t a = 1; a < coefficients.size(); ++a) {
      for (std::size_t j = 0; j < of.y.size(); ++j) {
        for (std::size_t k = 0; k <= of.x.size(); ++k) {
          Widen(&gaps.coefficients, found.coefficients[a][j][k], coefficients[a][j][k],
                LargestOf(coefficients[a][j]));
        }
      }
      EXPECT_EQ(found.importances[a].size(), importances[a].size());
      for (std::size_t kind = 0; kind < importances[a].size(); ++kind) {
        const double unit = std::max(LargestOf(importances[a][kind]), 1.0);
        for (std::size_t k = 0; k < of.x.size(); ++k) {
          Widen(&gaps.importances, found.importances[a][kind][k], importances[a][kind][k], unit);
        }
      }
      Widen(&gaps.shares, found.r2x[a], alone.Series()->R2X()[a], 1.0);
      Widen(&gaps.shares, found.r2y[a], alone.Series()->R2Y()[a], 1.0);
    }
  }
  return gaps;
}

/// A round that is fitted alone rounds cells, weights, scores and loadings to single precision, 6e-8 of each, of which
/// what is left of X after some components has several times as much; and the loop of several Y ends where u moves by
/// 1e-5 of itself, on the one way perhaps a round later than on the other.
constexpr double kSinglePrecision = 1e-5;

void ExpectModelsOfRoundsAlone(const Case& of) {
  const Gaps gaps = GapsToRoundsAlone(of);
  EXPECT_LT(gaps.predicted, kSinglePrecision);
  EXPECT_LT(gaps.distances, kSinglePrecision);
  EXPECT_LT(gaps.coefficients, kSinglePrecision);
  EXPECT_LT(gaps.importances, kSinglePrecision);
  EXPECT_LT(gaps.shares, kSinglePrecision);
}

TEST(PLSLanes, AreTheModelsOfRoundsThatAreFittedAlone) {
  for (const Case& of : {RandomCase(60, 30, 1), RandomCase(60, 30, 3), RandomCase(200, 8, 1), RandomCase(200, 8, 6),
                         RandomCase(30, 600, 1), RandomCase(30, 600, 4), Spectra(50, 300, 1), Spectra(50, 300, 3)}) {
    SCOPED_TRACE(std::to_string(of.x.front().size()) + " x " + std::to_string(of.x.size()));
    ExpectModelsOfRoundsAlone(of);
  }
}

TEST(PLSLanes, AreTheModelsOfOPLSOfOneY) {
  for (const Case& of : {RandomCase(60, 30, 1), RandomCase(200, 8, 1), RandomCase(30, 600, 1), Spectra(50, 300, 1)}) {
    SCOPED_TRACE(std::to_string(of.x.front().size()) + " x " + std::to_string(of.x.size()));
    for (const int predictive : {0, 1}) {
      const Gaps gaps = GapsToRoundsAlone(of, OPLSFamily(predictive));
      EXPECT_LT(gaps.predicted, kSinglePrecision);
      EXPECT_LT(gaps.coefficients, kSinglePrecision);
      EXPECT_LT(gaps.shares, kSinglePrecision);
      // OPLS takes scores out and puts them back: that rounds more, of rows of which next to nothing is left.
      EXPECT_LT(gaps.distances, 10 * kSinglePrecision);
    }
  }
}

TEST(PLSLanes, ScaleAsRoundsAloneDo) {
  for (const auto scaling : {NCScale::ScalingPareto, NCScale::ScalingCentre, NCScale::ScalingNone}) {
    Case of = RandomCase(40, 20, 2);
    for (double& cell : of.x[4]) cell = 50.0 + 10.0 * cell;
    of.scaling = scaling;
    SCOPED_TRACE(ScalingWord(scaling));
    ExpectModelsOfRoundsAlone(of);
  }
}

TEST(PLSLanes, TakeColumnsFarFromZeroByTheirShifts) {
  Case of = RandomCase(40, 20, 1);
  for (double& cell : of.x[4]) cell += 1e7;
  for (double& cell : of.y[0]) cell += 1e6;
  ExpectModelsOfRoundsAlone(of);
}

TEST(PLSLanes, GiveAColumnThatIsConstantInARoundNoSayThere) {
  Case of = RandomCase(40, 20, 1);
  for (std::size_t i = 0; i < of.x[7].size(); ++i) of.x[7][i] = i % 7 == 3 ? of.x[7][i] : 0.1;  // of one group
  ExpectModelsOfRoundsAlone(of);
  EXPECT_THAT(FitSideBySide(of)[4]->columnsWithoutSpread, ::testing::IsEmpty());
  EXPECT_THAT(FitSideBySide(of)[5]->columnsWithoutSpread, ::testing::ElementsAre("c7"));
}

TEST(PLSLanes, GoAsFarAsRowsAndColumnsDo) {
  Case of = RandomCase(5, 6, 1);
  of.groups = 5;
  of.components = 2;
  ExpectModelsOfRoundsAlone(of);
  of = RandomCase(40, 4, 2);  // with as many components as columns nothing is left to measure a distance by
  of.components = 9;
  ExpectModelsOfRoundsAlone(of);
}

TEST(PLSLanes, ServeMoreRoundsThanEight) {
  Case of = RandomCase(23, 12, 1);
  of.groups = 23;
  ExpectModelsOfRoundsAlone(of);
}

TEST(PLSLanes, RenewWhatDifferencesHaveTakenTooMuchOf) {  // S'S falls by some 12 / 2000 with each component
  Case of;
  of.x = RandomColumns(12, 2000, 5);
  of.y = RandomColumns(12, 1, 6);
  of.components = 6;
  const Gaps gaps = GapsToRoundsAlone(of);
  EXPECT_LT(gaps.predicted, kSinglePrecision);
  EXPECT_LT(gaps.coefficients, kSinglePrecision);
}

/// The same models in double precision: what is left is 3e-8 of each cell, centre and factor, all of them rounded once.
TEST(PLSLanes, AreTheModelsOfPlainLoopsInDoublePrecision) {
  for (const Case& of : {RandomCase(60, 30, 1), RandomCase(30, 600, 1), Spectra(50, 300, 1)}) {
    RealMatrix x(of.x.front().size(), of.x.size()), y(x.rows, 1);
    for (std::size_t i = 0; i < x.rows; ++i) {
      for (std::size_t k = 0; k < x.columns; ++k) x(i, k) = of.x[k][i];
      y(i, 0) = of.y[0][i];
    }
    const std::vector<std::optional<RoundFigures>> figures = FitSideBySide(of);
    std::size_t round = 0;
    double gap = 0.0;
    ForRounds(x, y, MakeFolds(x.rows, {}), of.components,
              [&](const PlainPls& plain, const std::vector<std::size_t>& leftOut) {
                const LeftOutRows& found = figures[++round]->leftOut;
                for (std::size_t a = 0; a < plain.predicted.size(); ++a) {
                  for (std::size_t i = 0; i < leftOut.size(); ++i) {
                    Widen(&gap, found.predicted[a](i, 0), plain.predicted[a](leftOut[i], 0),
                          MomentsOf(of.y[0]).standardDeviation);
                  }
                }
              });
    EXPECT_EQ(round, 7U);
    EXPECT_LT(gap, 2e-6);
  }
}

TEST(PLSLanes, LeaveRoundsAloneForWhichXHasNotTheDigits) {
  Case of = RandomCase(30, 10, 1);
  for (std::size_t k = 5; k < 10; ++k) {  // the last five columns are the first ones but for 1e-6 of them
    const std::vector<double> own = of.x[k];
    for (std::size_t i = 0; i < own.size(); ++i) of.x[k][i] = of.x[k - 5][i] + 1e-6 * own[i];
  }
  of.components = 8;
  for (const std::optional<RoundFigures>& figures : FitSideBySide(of)) EXPECT_FALSE(figures);
  of.components = 3;
  for (const std::optional<RoundFigures>& figures : FitSideBySide(of)) EXPECT_TRUE(figures);
}

TEST(PLSLanes, LeaveARoundAloneWhoseYIsConstant) {
  Case of = RandomCase(28, 10, 2);
  for (std::size_t i = 0; i < of.y[1].size(); ++i) of.y[1][i] = i % 7 == 3 ? of.y[1][i] : 0.1;
  const std::vector<std::optional<RoundFigures>> figures = FitSideBySide(of);
  for (std::size_t round = 0; round < figures.size(); ++round) EXPECT_EQ(figures[round].has_value(), round != 5);
}

TEST(PLSLanes, LeaveARoundAloneThatLosesDigitsWithoutAnOutlier) {  // all rows need no shift, those without it do
  Case of = RandomCase(28, 10, 1);
  for (double& cell : of.x[2]) cell = 3000.0 + cell;
  of.x[2][10] = 9000.0;
  const std::vector<std::optional<RoundFigures>> figures = FitSideBySide(of);
  for (std::size_t round = 0; round < figures.size(); ++round) EXPECT_EQ(figures[round].has_value(), round != 5);
}

TEST(PLSLanes, HaveTheSameBitsOnAnyNumberOfThreads) {
  const Case of = RandomCase(150, 1000, 2);  // more cells than one thread takes
  std::vector<std::vector<double>> cells;
  for (const int count : {1, 2, 5}) {
    const Threads threads(count);
    cells.emplace_back();
    for (const std::optional<RoundFigures>& figures : FitSideBySide(of)) {
      for (const RealMatrix& predicted : figures->leftOut.predicted) {
        cells.back().insert(cells.back().end(), predicted.cells.begin(), predicted.cells.end());
      }
      const RealMatrix& distances = figures->leftOut.distances;
      cells.back().insert(cells.back().end(), distances.cells.begin(), distances.cells.end());
      const std::vector<double>& coefficients = figures->coefficients.back().back();
      cells.back().insert(cells.back().end(), coefficients.begin(), coefficients.end());
    }
  }
  EXPECT_EQ(cells[0], cells[1]);
  EXPECT_EQ(cells[0], cells[2]);
}

}  // namespace
}  // namespace kalmia::analysis
