#include "kalmia/analysis/validation/PCAValidation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <sstream>

#include "FailureOf.h"
#include "TestTables.h"
#include "kalmia/analysis/fit/PCAResult.h"
#include "kalmia/analysis/fit/PredictResult.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/ColumnFolds.h"
#include "testing/PlainAlgebra.h"
#include "testing/RecordingProgress.h"
#include "testing/Threads.h"
#include "validation/PlainPls.h"
#include "validation/TableLines.h"

namespace kalmia::analysis {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;

using Columns = std::vector<std::vector<double>>;
using Row = std::vector<long double>;

PCARecipe ComponentsRecipe(std::optional<int> components = std::nullopt,
                           NCScale::Scaling scaling = NCScale::ScalingUnitVariance) {
  PCARecipe recipe;
  recipe.components = components;
  recipe.scaling = scaling;
  return recipe;
}

Table TextOfCells(const std::string& text) { return {text, "t.csv"}; }

std::string TextOf(const Columns& columns) {
  std::ostringstream text;
  text.precision(9);
  for (std::size_t k = 0; k < columns.size(); ++k) text << 'x' << k + 1 << (k + 1 < columns.size() ? ',' : '\n');
  for (std::size_t i = 0; i < columns.front().size(); ++i) {
    for (std::size_t k = 0; k < columns.size(); ++k) {
      if (!std::isnan(columns[k][i])) text << columns[k][i];
      text << (k + 1 < columns.size() ? ',' : '\n');
    }
  }
  return text.str();
}

Columns ColumnsOf(const Table& table, const std::vector<std::string>& names) {
  Columns columns;
  for (const std::string& name : names) columns.push_back(NumbersOf(table, name));
  return columns;
}

/// The sum of `rank` products of random scores and loadings, each a half as large as the one before, and noise.
Columns LowRank(int rows, int columns, int rank, double noise, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal;
  Columns table(static_cast<std::size_t>(columns), std::vector<double>(static_cast<std::size_t>(rows), 0.0));
  for (int r = 0; r < rank; ++r) {
    std::vector<double> t, p;
    for (int i = 0; i < rows; ++i) t.push_back(normal(random) * std::pow(0.5, r));
    for (int k = 0; k < columns; ++k) p.push_back(normal(random));
    for (std::size_t k = 0; k < p.size(); ++k) {
      for (std::size_t i = 0; i < t.size(); ++i) table[k][i] += t[i] * p[k];
    }
  }
  for (std::vector<double>& column : table) {
    for (double& cell : column) cell += noise * normal(random);
  }
  return table;
}

double Mean(const std::vector<double>& column, const std::vector<std::size_t>& rows) {
  double sum = 0.0;
  for (const std::size_t row : rows) sum += column[row];
  return sum / static_cast<double>(rows.size());
}

double Deviation(const std::vector<double>& column, const std::vector<std::size_t>& rows) {
  double sum = 0.0;
  for (const std::size_t row : rows) sum += std::pow(column[row] - Mean(column, rows), 2);
  return std::sqrt(sum / static_cast<double>(rows.size() - 1));
}

std::vector<std::size_t> AllRows(const Columns& columns) {
  std::vector<std::size_t> rows(columns.front().size());
  std::iota(rows.begin(), rows.end(), std::size_t{0});
  return rows;
}

/// Eigenvectors of a symmetric matrix by Jacobi's rotations, those of the largest eigenvalues first.
std::vector<Row> Eigenvectors(std::vector<Row> s) {
  const std::size_t n = s.size();
  std::vector<Row> v(n, Row(n, 0.0L));
  for (std::size_t i = 0; i < n; ++i) v[i][i] = 1.0L;
  for (int sweep = 0; sweep < 40; ++sweep) {
    for (std::size_t p = 0; p < n; ++p) {
      for (std::size_t q = p + 1; q < n; ++q) {
        if (s[p][q] == 0.0L) continue;
        const long double angle = 0.5L * std::atan2(2.0L * s[p][q], s[q][q] - s[p][p]);
        const long double c = std::cos(angle), d = std::sin(angle);
        for (std::size_t k = 0; k < n; ++k) {
          const long double a = s[k][p], b = s[k][q];
          s[k][p] = c * a - d * b;
          s[k][q] = d * a + c * b;
        }
        for (std::size_t k = 0; k < n; ++k) {
          const long double a = s[p][k], b = s[q][k];
          s[p][k] = c * a - d * b;
          s[q][k] = d * a + c * b;
          const long double e = v[p][k], f = v[q][k];
          v[p][k] = c * e - d * f;
          v[q][k] = d * e + c * f;
        }
      }
    }
  }
  std::vector<std::size_t> order(n);
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(), [&s](std::size_t a, std::size_t b) { return s[a][a] > s[b][b]; });
  std::vector<Row> sorted;
  for (const std::size_t i : order) sorted.push_back(v[i]);
  return sorted;
}

/// Solves by elimination with pivots.
Row Solved(std::vector<Row> a, Row b) {
  const std::size_t n = b.size();
  for (std::size_t c = 0; c < n; ++c) {
    std::size_t pivot = c;
    for (std::size_t r = c; r < n; ++r) {
      if (std::abs(a[r][c]) > std::abs(a[pivot][c])) pivot = r;
    }
    std::swap(a[c], a[pivot]);
    std::swap(b[c], b[pivot]);
    for (std::size_t r = 0; r < n; ++r) {
      if (r == c) continue;
      const long double share = a[r][c] / a[c][c];
      for (std::size_t k = 0; k < n; ++k) a[r][k] -= share * a[c][k];
      b[r] -= share * b[c];
    }
  }
  for (std::size_t c = 0; c < n; ++c) b[c] /= a[c][c];
  return b;
}

/// The cell `k` of a scaled row, from the row's present cells in other groups of columns than its own (column j, from
/// 1, is in group j modulo `groups`), by `a` components.
long double PredictedCell(const Row& row, const std::vector<Row>& loadings, std::size_t a, std::size_t k,
                          std::size_t groups) {
  std::vector<Row> normal(a, Row(a, 0.0L));
  Row products(a, 0.0L);
  for (std::size_t j = 0; j < row.size(); ++j) {
    if ((j + 1) % groups == (k + 1) % groups || std::isnan(row[j])) continue;
    for (std::size_t p = 0; p < a; ++p) {
      products[p] += loadings[p][j] * row[j];
      for (std::size_t q = 0; q < a; ++q) normal[p][q] += loadings[p][j] * loadings[q][j];
    }
  }
  const Row t = Solved(normal, products);
  long double cell = 0.0L;
  for (std::size_t p = 0; p < a; ++p) cell += t[p] * loadings[p][k];
  return cell;
}

/// Of the rows of a round, to unit variance.
std::vector<Row> LoadingsOfRows(const Columns& columns, const std::vector<std::size_t>& rows) {
  std::vector<Row> covariance(columns.size(), Row(columns.size(), 0.0L));
  for (std::size_t k = 0; k < columns.size(); ++k) {
    for (std::size_t j = 0; j < columns.size(); ++j) {
      const double m = Mean(columns[k], rows), n = Mean(columns[j], rows);
      const double s = Deviation(columns[k], rows) * Deviation(columns[j], rows);
      for (const std::size_t i : rows) {
        covariance[k][j] += static_cast<long double>(columns[k][i] - m) * (columns[j][i] - n) / s;
      }
    }
  }
  return Eigenvectors(covariance);
}

/// PRESS of 0 to `most` components to unit variance, as plainly as the rules say it.
std::vector<double> PlainPress(const Columns& columns, const Folds& folds, std::size_t most) {
  std::vector<double> press(most + 1, 0.0);
  const std::size_t groups = std::min(columns.size(), static_cast<std::size_t>(folds.groups));
  for (int group = 0; group < folds.groups; ++group) {
    const std::vector<std::size_t> in = RowsOutsideGroup(folds, 0, group);
    const std::vector<Row> loadings = LoadingsOfRows(columns, in);
    for (const std::size_t i : RowsOfGroup(folds, 0, group)) {
      Row row;
      for (const std::vector<double>& column : columns) {
        row.push_back((column[i] - Mean(column, in)) / Deviation(column, in));
      }
      for (std::size_t k = 0; k < columns.size(); ++k) {
        const long double unit = Deviation(columns[k], in) / Deviation(columns[k], AllRows(columns));
        for (std::size_t a = 0; a <= most; ++a) {
          const long double error = (row[k] - PredictedCell(row, loadings, a, k, groups)) * unit;
          press[a] += static_cast<double>(error * error);
        }
      }
    }
  }
  return press;
}

// NIPALS ends when a score moves by 1e-5 of its length, which leaves its direction to go by some 1e-5 r / (1 - r), r
// the ratio of neighbouring eigenvalues, at most 0.6 here; PRESS is twice as sensitive.
TEST(PCAValidation, HasThePressOfEigenvectors) {
  const Columns columns = LowRank(30, 9, 3, 0.15, 5);
  const PCAValidation validation = Validate(ComponentsRecipe(3), TextOfCells(TextOf(columns)));
  ASSERT_EQ(validation.errors.MostComponents(), 3U);
  const std::vector<double> expected = PlainPress(columns, validation.folds, 3);
  for (std::size_t a = 0; a <= 3; ++a) {
    EXPECT_NEAR(validation.errors.press[a], expected[a], 1e-4 * expected[a]) << a << " components";
    EXPECT_NEAR(validation.errors.q2[a], 1.0 - expected[a] / expected[0], 1e-4);
  }
}

/// Of the cells that stay in, whatever the scaling.
double PresentMean(const std::vector<double>& column, const Folds& folds, int group) {
  std::vector<std::size_t> present;
  for (const std::size_t row : RowsOutsideGroup(folds, 0, group)) {
    if (!std::isnan(column[row])) present.push_back(row);
  }
  return Mean(column, present);
}

/// The same with the loadings that the public Fit finds in a table of the other rows, holes or not.
std::vector<double> PressByFits(PCARecipe recipe, const std::string& text, const PCAValidation& validation,
                                const std::vector<double>& deviations, std::size_t most) {
  const TableLines lines(text);
  const Columns columns = ColumnsOf(TextOfCells(text), validation.xNames);
  recipe.components = static_cast<int>(most);
  std::vector<double> press(most + 1, 0.0);
  for (int group = 0; group < validation.folds.groups; ++group) {
    const PCAResult fit = Fit(recipe, lines.SmallTable(RowsOutsideGroup(validation.folds, 0, group)));
    std::vector<Row> loadings;
    for (int a = 1; a <= fit.model.Components(); ++a) {
      const plain::Vector p = plain::VectorOf((*fit.model.pca->GetPprim())[a]);
      loadings.emplace_back(p.begin(), p.end());
    }
    const auto groups = static_cast<std::size_t>(validation.columnGroups);
    for (const std::size_t i : RowsOfGroup(validation.folds, 0, group)) {
      Row row;
      for (std::size_t k = 0; k < columns.size(); ++k) {
        const int variable = static_cast<int>(k) + 1;
        const double centred = columns[k][i] - CentreOf(fit.model.xScaling, variable);
        row.push_back(centred * FactorOf(fit.model.xScaling, variable));
      }
      for (std::size_t k = 0; k < columns.size(); ++k) {
        if (std::isnan(row[k])) continue;
        const double unit = 1.0 / FactorOf(fit.model.xScaling, static_cast<int>(k) + 1) / deviations[k];
        press[0] += std::pow((columns[k][i] - PresentMean(columns[k], validation.folds, group)) / deviations[k], 2);
        for (std::size_t a = 1; a <= most; ++a) {
          const long double error = (row[k] - PredictedCell(row, loadings, a, k, groups)) * unit;
          press[a] += static_cast<double>(error * error);
        }
      }
    }
  }
  return press;
}

TEST(PCAValidation, HasThePressOfFitsToTheOtherRowsWithHoles) {
  Columns columns = LowRank(30, 9, 3, 0.3, 6);
  for (std::size_t cell = 4; cell < 9 * 30; cell += 17) columns[cell % 9][cell / 9] = kNotANumber;
  const std::string text = TextOf(columns);
  const PCARecipe recipe = ComponentsRecipe(3);
  const PCAValidation validation = Validate(recipe, TextOfCells(text));
  RealMatrix cells(30, 9);
  for (std::size_t k = 0; k < 9; ++k) {
    for (std::size_t i = 0; i < 30; ++i) cells(i, k) = columns[k][i];
  }
  const std::vector<double> expected = PressByFits(recipe, text, validation, ColumnDeviations(cells), 3);
  // Both have the same loadings; cells and factors are floats here, of which the witness takes the double ones.
  for (std::size_t a = 0; a <= 3; ++a) EXPECT_NEAR(validation.errors.press[a], expected[a], 1e-5 * expected[a]);
}

TEST(PCAValidation, HasThePressOfFitsUnderEachScaling) {
  const Columns columns = LowRank(24, 7, 2, 0.3, 6);
  const std::string text = TextOf(columns);
  for (const auto scaling : {NCScale::ScalingCentre, NCScale::ScalingPareto, NCScale::ScalingNone}) {
    std::vector<double> divisors;
    for (const std::vector<double>& column : columns) {
      const double s = Deviation(column, AllRows(columns));
      divisors.push_back(scaling == NCScale::ScalingPareto ? std::sqrt(s) : 1.0);
    }
    const PCARecipe recipe = ComponentsRecipe(2, scaling);
    const PCAValidation validation = Validate(recipe, TextOfCells(text));
    const std::vector<double> expected = PressByFits(recipe, text, validation, divisors, 2);
    for (std::size_t a = 0; a <= 2; ++a) EXPECT_NEAR(validation.errors.press[a], expected[a], 1e-5 * expected[a]);
  }
}

TEST(PCAValidation, PredictsTableOfTwoComponentsWithoutRest) {
  const PCAValidation validation = Validate(ComponentsRecipe(), TextOfCells(TextOf(LowRank(25, 8, 2, 0.0, 3))));
  ASSERT_EQ(validation.errors.MostComponents(), 2U);  // nothing is left of X then
  EXPECT_EQ(validation.components, 2);
  // Float cells, loadings and factors; scores of a part of the cells magnify their roundings some ten-fold.
  EXPECT_LT(validation.errors.press[2], 1e-10 * validation.errors.press[0]);
  EXPECT_THAT(validation.columnQ2, Each(::testing::Gt(1.0 - 1e-10)));
}

TEST(PCAValidation, SumsOverCellsRowsAndColumnsAlike) {
  const PCAValidation validation = Validate(ComponentsRecipe(2), TextOfCells(TextOf(LowRank(25, 8, 2, 0.5, 4))));
  const RowErrors& errors = validation.errors;
  for (std::size_t a = 0; a <= 2; ++a) {
    double sum = 0.0;
    for (std::size_t i = 0; i < 25; ++i) sum += errors.rowErrors(i, a);
    EXPECT_DOUBLE_EQ(errors.press[a], sum);
  }
  // Each column is of variance 1, so that without components all have nearly one PRESS: 25 rows, 7 groups.
  const double mean = std::accumulate(validation.columnQ2.begin(), validation.columnQ2.end(), 0.0) / 8;
  EXPECT_NEAR(mean, errors.q2[2], 0.02);
}

TEST(PCAValidation, FindsTheComponentsOfATableAndNoneOfNoise) {
  for (unsigned seed = 1; seed <= 10; ++seed) {
    EXPECT_EQ(Validate(ComponentsRecipe(), TextOfCells(TextOf(LowRank(40, 20, 3, 0.1, seed)))).components, 3) << seed;
    EXPECT_EQ(Validate(ComponentsRecipe(), TextOfCells(TextOf(LowRank(40, 20, 0, 1.0, seed)))).components, 0) << seed;
  }
}

TEST(PCAValidation, HasDistancesOfRowsAsNewOnes) {
  const std::string text = TextOf(LowRank(30, 9, 3, 0.3, 6));
  const TableLines lines(text);
  PCARecipe recipe = ComponentsRecipe(2);
  const PCAValidation validation = Validate(recipe, TextOfCells(text));
  ASSERT_EQ(validation.distances.size(), 30U);
  for (int group = 0; group < 7; ++group) {
    const std::vector<std::size_t> leftOut = RowsOfGroup(validation.folds, 0, group);
    const PCAResult fit = Fit(recipe, lines.SmallTable(RowsOutsideGroup(validation.folds, 0, group)));
    const PCAPredictions predicted = Predict(fit.model, lines.SmallTable(leftOut));
    for (std::size_t i = 0; i < leftOut.size(); ++i) {
      // Residuals in float there; loadings are orthogonal within 1e-5, as iterations end.
      EXPECT_NEAR(validation.distances[leftOut[i]], DistanceToModel(fit.model, 2, predicted.scores[i]), 1e-4);
    }
  }
}

TEST(PCAValidation, LeavesRowsWithTooFewCellsOutOfAllFigures) {
  Columns columns = LowRank(30, 8, 2, 0.3, 7);
  for (std::size_t k = 2; k < 8; ++k) columns[k][4] = kNotANumber;  // 2 cells, 1 outside a group
  const PCAValidation validation = Validate(ComponentsRecipe(2), TextOfCells(TextOf(columns)));
  EXPECT_EQ(validation.errors.MostComponents(), 2U);
  EXPECT_EQ(validation.errors.unpredictedRows, 1U);
  EXPECT_TRUE(std::isnan(validation.errors.rowErrors(4, 0)));
  EXPECT_THAT(validation.notes.Lines(), Contains(HasSubstr("in no figure of the validation: 1 row")));
  for (std::size_t i = 5; i < 11; ++i) {
    for (std::size_t k = 3; k < 8; ++k) columns[k][i] = kNotANumber;  // more than a tenth: 2 cells outside
  }
  const PCAValidation fewer = Validate(ComponentsRecipe(2), TextOfCells(TextOf(columns)));
  EXPECT_EQ(fewer.errors.MostComponents(), 1U);
  EXPECT_EQ(fewer.errors.unpredictedRows, 1U);
  EXPECT_FALSE(fewer.IsJudged());
  EXPECT_THAT(fewer.columnQ2, IsEmpty());
  EXPECT_THAT(fewer.notes.Lines(), Contains(HasSubstr("ends at 1 component")));
}

TEST(PCAValidation, TakesFewerComponentsThanColumnsOutsideAGroup) {
  const std::string text = TextOf(LowRank(30, 5, 0, 1.0, 7));
  EXPECT_EQ(Validate(ComponentsRecipe(), TextOfCells(text)).errors.MostComponents(), 3U);
  EXPECT_EQ(ValidateBy(FoldScheme::Blocks, 2, ComponentsRecipe(), TextOfCells(text)).errors.MostComponents(), 1U);
}

TEST(PCAValidation, PredictsAColumnByTheOneValueItHasInARound) {
  Columns columns = LowRank(20, 6, 2, 0.3, 7);
  for (std::size_t i = 10; i < 20; ++i) columns[2][i] = 1.5;
  const PCAValidation validation =
      ValidateBy(FoldScheme::Blocks, 2, ComponentsRecipe(1), TextOfCells(TextOf(columns)));
  EXPECT_THAT(validation.notes.Lines(), Contains(HasSubstr("1 X column (x3)")));
  for (std::size_t i = 10; i < 20; ++i) columns[2][i] = kNotANumber;  // without a cell it is not predicted
  const PCAValidation empty =
      ValidateBy(FoldScheme::Blocks, 2, ComponentsRecipe(1), TextOfCells(TextOf(columns)));
  EXPECT_EQ(empty.errors.unpredictedRows, 0U);
  EXPECT_TRUE(std::isnan(empty.columnQ2[2]));
}

TEST(PCAValidation, AveragesOverRepeatsAndLeavesRowsOfOneLabelOutTogether) {
  const std::string text = TextOf(LowRank(20, 6, 2, 0.3, 7));
  ValidationRecipe two;
  two.folds.scheme = FoldScheme::Random;
  two.folds.repeats = 2;
  PCARecipe ofFour = ComponentsRecipe(2);
  ofFour.groups = 4;
  const PCAValidation both = Validate(ofFour, TextOfCells(text), two);
  EXPECT_EQ(both.distances.size(), 40U);
  EXPECT_LT(std::abs(both.errors.q2[2] - Validate(ComponentsRecipe(2), TextOfCells(text)).errors.q2[2]), 0.1);
  const TableLines lines(text);
  std::string labelled = lines.header + ",batch\n";
  for (std::size_t i = 0; i < 20; ++i) labelled += lines.rows[i] + "," + "ABCD"[i / 5] + "\n";
  PCARecipe recipe = ComponentsRecipe(2);
  recipe.groupColumn = "batch";
  const PCAValidation batches = Validate(recipe, TextOfCells(labelled));
  EXPECT_THAT(batches.folds.names, ElementsAre("A", "B", "C", "D"));
  const PCAValidation blocks = ValidateBy(FoldScheme::Blocks, 4, ComponentsRecipe(2), TextOfCells(text));
  EXPECT_EQ(batches.errors.press, blocks.errors.press);
}

TEST(PCAValidation, LearnsStepsInEachRound) {
  PCARecipe recipe = ComponentsRecipe(2);
  recipe.steps = GivenSteps{"s", ParseSteps("snv,wavelet-compress:4:daubechies:4", "s"), {}};
  const std::string text = TextOf(LowRank(30, 8, 3, 0.3, 5));
  const PCAValidation learnt = Validate(recipe, TextOfCells(text));
  EXPECT_EQ(learnt.errors.press.size(), 3U);
  EXPECT_TRUE(std::isfinite(learnt.errors.press[2]));
}

TEST(PCAValidation, RefusesATableOfOneColumn) {
  EXPECT_THAT(FailureOf<BadData>([] { Validate(ComponentsRecipe(), TextOfCells("x\n1\n2\n4\n3\n")); }),
              Optional(HasSubstr("principal components take two or more")));
}

TEST(PCAValidation, GivesTheSameBitsOnAnyNumberOfThreads) {
  PCARecipe recipe = ComponentsRecipe();
  recipe.id = "sample";
  recipe.exclude = {"cultivar"};
  std::vector<PCAValidation> runs;
  for (const int threads : {1, 3}) {
    const Threads team(threads);
    runs.push_back(Validate(recipe, CsvAt(PathOfWine())));
  }
  EXPECT_EQ(runs[0].errors.rowErrors.cells, runs[1].errors.rowErrors.cells);
  EXPECT_EQ(runs[0].distances, runs[1].distances);
}

TEST(PCAValidation, StopsWhereverTheBarWantsToStop) {
  const Table table = TextOfCells(LinearTable(20, 4, 6));
  PCARecipe recipe = ComponentsRecipe();
  recipe.id = "name";
  ProgressLog whole;
  Validate(recipe, table, {}, RecordingBar(&whole).get());
  const auto calls = static_cast<int>(whole.calls.size()) - 1;  // the last one closes the bar
  for (int stopAt = 1; stopAt < calls; stopAt += 7) {
    ProgressLog log;
    log.stopAt = stopAt;
    EXPECT_THROW(Validate(recipe, table, {}, RecordingBar(&log).get()), Stopped) << "call " << stopAt;
  }
}

}  // namespace
}  // namespace kalmia::analysis
