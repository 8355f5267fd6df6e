#include "kalmia/analysis/model/Contributions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "FailureOf.h"
#include "TestTables.h"
#include "kalmia/analysis/fit/OPLSResult.h"
#include "kalmia/analysis/fit/PCAResult.h"
#include "kalmia/analysis/fit/PLSResult.h"
#include "kalmia/analysis/model/PCAScores.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/RowDiagnosis.h"
#include "kalmia/analysis/steps/Steps.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/containers/Missing.h"
#include "validation/PlainPls.h"

namespace kalmia::analysis {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsNan;
using ::testing::Optional;
using ::testing::SizeIs;

/// A model that nothing judges.
template <class Recipe>
Recipe Given(int components, const std::vector<std::string>& exclude) {
  Recipe recipe;
  recipe.id = exclude.front();
  recipe.exclude = exclude;
  recipe.components = components;
  recipe.judgeComponents = false;
  return recipe;
}

PCAResult FitPCA(const Table& table, int components, NCScale::Scaling scaling = NCScale::ScalingUnitVariance) {
  auto recipe = Given<PCARecipe>(components, {"name", "y"});
  recipe.scaling = scaling;
  return Fit(recipe, table);
}

PLSResult FitPLS(const Table& table, int components, NCScale::Scaling scaling = NCScale::ScalingUnitVariance) {
  auto recipe = Given<PLSRecipe>(components, {"name"});
  recipe.y = {"y"};
  recipe.scaling = scaling;
  return Fit(recipe, table);
}

/// One predictive component beside the orthogonal ones.
OPLSResult FitOPLS(const Table& table, int orthogonal, NCScale::Scaling scaling = NCScale::ScalingUnitVariance) {
  auto recipe = Given<OPLSRecipe>(orthogonal, {"name"});
  recipe.y = {"y"};
  recipe.predictive = 1;
  recipe.scaling = scaling;
  return Fit(recipe, table);
}

template <class Result>
std::vector<RowContributions> OfAllRows(const Result& fit, Notes* notes) {
  std::vector<int> rows(fit.data.rowNames.size());
  std::iota(rows.begin(), rows.end(), 0);
  return ContributionsOfTrainingRows(fit.model, fit.data.x, rows, notes);
}

/// Over the cells that are there.
double SumOf(const std::vector<double>& numbers) {
  return std::accumulate(numbers.begin(), numbers.end(), 0.0,
                         [](double sum, double number) { return std::isnan(number) ? sum : sum + number; });
}

double SquaresOf(const std::vector<double>& numbers) {
  return std::accumulate(numbers.begin(), numbers.end(), 0.0, [](double sum, double number) {
    return std::isnan(number) ? sum : sum + number * number;
  });
}

double CountOf(const std::vector<double>& numbers) {
  return static_cast<double>(std::count_if(numbers.begin(), numbers.end(), [](double n) { return !std::isnan(n); }));
}

void ExpectNear(const std::vector<double>& numbers, const std::vector<double>& expected, double tolerance) {
  ASSERT_EQ(numbers.size(), expected.size());
  for (std::size_t k = 0; k < numbers.size(); ++k) EXPECT_NEAR(numbers[k], expected[k], tolerance) << k;
}

template <class Result>
RowContributions OfWine60(const Result& fit) {
  Notes notes;
  const std::vector<RowContributions> list = ContributionsOfTrainingRows(fit.model, fit.data.x, {59}, &notes);
  EXPECT_THAT(notes.Lines(), IsEmpty());
  EXPECT_EQ(list.front().row, "60");
  return list.front();
}

// The 60th of the wines, by contributions.py and numpy 1.24.2. The parts are of order 1 to 9. Principal components stop
// when t moves by 1e-5 of its length, and have some 2e-5 to go at these eigenvalues, which enters the parts about
// twice; 3e-4 is that of the largest. The other models have no such end: cells are floats, and errors a few 1e-7 of 9.

TEST(Contributions, OfPCAAreThoseOfSingularValues) {
  const RowContributions wine = OfWine60(Fit(Given<PCARecipe>(3, {"sample", "cultivar"}), CsvAt(PathOfWine())));
  EXPECT_NEAR(wine.t2, 18.4002564, 3e-4);
  ExpectNear(wine.t2Parts, {-0.0261426, 0.6365605, 8.6860271, 4.9945387, 0.6651926, 0.3120025, 0.8115803, 0.3388836,
                            1.1915539, 0.2667409, 0.0060338, 0.4426615, 0.0746236},
             3e-4);
  ExpectNear(wine.residuals, {-0.1090174, -0.3806017, 0.1611883, -0.1190332, 0.8255573, 0.7296402, -0.3906672,
                              -0.0669843, -0.9517328, -0.4261755, 0.2134948, -0.5118992, 0.0838818},
             3e-4);
}

const std::vector<double> kPartsForAlcohol = {-0.3350227, 3.4085852, 2.0860736,  1.4762101, 0.1883104,  0.3608222,
                                              -0.1301878, 2.5938219, 0.0336874, 0.3772099, -0.6797380, -0.3140070};
const std::vector<double> kResidualsForAlcohol = {-0.9647365, -1.8935938, -1.6076378, 1.4100021,
                                                  0.2435814,  -0.8690074, -1.0122405, -0.7133923,
                                                  -0.2810304, -0.2983062, -1.1803549, -0.1496547};

TEST(Contributions, OfPLSAreThoseOfLeastSquares) {
  auto recipe = Given<PLSRecipe>(3, {"sample", "cultivar"});
  recipe.y = {"alcohol"};
  const RowContributions wine = OfWine60(Fit(recipe, CsvAt(PathOfWine())));
  EXPECT_NEAR(wine.t2, 9.0657652, 2e-5);
  ExpectNear(wine.t2Parts, kPartsForAlcohol, 2e-5);
  ExpectNear(wine.residuals, kResidualsForAlcohol, 2e-5);
}

TEST(Contributions, OfOPLSTakePredictiveAndOrthogonalScoresTogether) {  // of one Y they are those of PLS
  auto recipe = Given<OPLSRecipe>(2, {"sample", "cultivar"});
  recipe.y = {"alcohol"};
  recipe.predictive = 1;
  const RowContributions wine = OfWine60(Fit(recipe, CsvAt(PathOfWine())));
  EXPECT_NEAR(wine.t2, 9.0657652, 2e-5);
  ExpectNear(wine.t2Parts, kPartsForAlcohol, 2e-5);
  ExpectNear(wine.residuals, kResidualsForAlcohol, 2e-5);
}

/// Parts of T2 sum to it, in all rows and without a note.
template <class Result>
void ExpectPartsOfT2(const Result& fit) {
  Notes notes;
  const std::vector<RowContributions> rows = OfAllRows(fit, &notes);
  ASSERT_THAT(rows, SizeIs(fit.data.rowNames.size()));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].t2, fit.model.rowStatistics->t2[i]);
    // Scores are floats, of parts up to ten times as large as they: 1e-6 of a score is twice that of its square.
    EXPECT_NEAR(SumOf(rows[i].t2Parts), rows[i].t2, 1e-5 * (1.0 + rows[i].t2)) << rows[i].row;
  }
  EXPECT_THAT(notes.Lines(), IsEmpty());
}

TEST(Contributions, SumToT2InACompleteCentredTable) {
  const Table table(LinearTable(40, 8, 1), "t");
  for (const auto scaling : {NCScale::ScalingUnitVariance, NCScale::ScalingPareto, NCScale::ScalingCentre}) {
    SCOPED_TRACE(scaling);
    ExpectPartsOfT2(FitPCA(table, 3, scaling));
    ExpectPartsOfT2(FitPLS(table, 3, scaling));
    ExpectPartsOfT2(FitOPLS(table, 2, scaling));
  }
}

TEST(Contributions, OfSeveralPredictiveComponentsSumToT2Too) {
  auto recipe = Given<OPLSRecipe>(1, {"name"});
  recipe.id.clear();
  recipe.exclude.clear();
  recipe.y = {"y1", "y2", "y3"};
  recipe.predictive = 2;
  ExpectPartsOfT2(Fit(recipe, Table(UnrelatedTable(40, 8, 3, 11), "t")));
}

TEST(Contributions, AreOfTheColumnsThatThePreprocessingMakes) {
  auto recipe = Given<PLSRecipe>(2, {"name"});
  recipe.y = {"y"};
  recipe.steps = GivenSteps{"s", ParseSteps("wavelet-compress:4:daubechies:4", "s"), {}};
  const PLSResult fit = Fit(recipe, Table(LinearTable(40, 8, 12), "t"));
  Notes notes;
  EXPECT_THAT(ContributionsOfTrainingRows(fit.model, fit.data.x, {0}, &notes).front().t2Parts, SizeIs(4));
  ExpectPartsOfT2(fit);
}

/// Squared residuals sum to (K_i - A) s_i^2, of rows with holes and without.
template <class Result>
void ExpectResidualsOfTheDistance(const Result& fit) {
  Notes notes;
  const RowDiagnosis diagnosis = DiagnoseTrainingRows(fit.model);
  const std::vector<RowContributions> rows = OfAllRows(fit, &notes);
  const NCDataMatrix<float> residuals = XResiduals(fit.model, fit.data.x);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const double s = diagnosis.absoluteDistances[i], freedom = CountOf(rows[i].residuals) - fit.model.Components();
    // The same floats, squared and added in double: what is left is the root of the distance and its square.
    EXPECT_NEAR(SquaresOf(rows[i].residuals), freedom * s * s, 1e-13 * (1.0 + freedom * s * s)) << rows[i].row;
    const NCDataVector<float>& row = residuals[static_cast<int>(i) + 1];
    for (int k = 1; k <= row.Size(); ++k) {
      const double residual = rows[i].residuals[static_cast<std::size_t>(k) - 1];
      EXPECT_EQ(std::isnan(residual), fit.data.x[static_cast<int>(i) + 1][k] == kMissingCell<float>);
      EXPECT_EQ(std::isnan(residual) ? kMissingCell<float> : static_cast<float>(residual), row[k]);
    }
  }
}

TEST(Contributions, HaveResidualsWhoseSquaresSumToTheDistance) {
  for (const std::string& text : {LinearTable(80, 8, 2), WithHoles(LinearTable(80, 8, 2), 9)}) {
    const Table table(text, "t");
    ExpectResidualsOfTheDistance(FitPCA(table, 3));
    ExpectResidualsOfTheDistance(FitPLS(table, 3));
    ExpectResidualsOfTheDistance(FitOPLS(table, 2));
  }
}

/// A row of LinearTable at its centre but for one column, in steps of 1.5 of its spread.
std::string OneRow(double steps, int column, int columns = 8) {
  std::string header = "name", row = "new";
  for (int k = 1; k <= columns; ++k) {
    header += ",x" + std::to_string(k);
    row += "," + std::to_string(5.0 * k + (k == column ? 1.5 * k * steps : 0.0));
  }
  return header + "\n" + row + "\n";
}

template <class Model>
RowContributions OfNewRow(const Model& model, const std::string& text, Notes* notes) {
  const Table table(text, "n");
  return ContributionsOfNewRows(model, ReadNewRows(model, table, "", notes), {0}, notes).front();
}

template <class Result>
void ExpectSignsOfTheFault(const Result& fit) {
  for (const double steps : {4.0, -4.0}) {
    Notes notes;
    const RowContributions row = OfNewRow(fit.model, OneRow(steps, 5), &notes);
    std::vector<double> sizes;
    for (const double residual : row.residuals) sizes.push_back(std::fabs(residual));
    EXPECT_EQ(std::max_element(sizes.begin(), sizes.end()) - sizes.begin(), 4);
    EXPECT_EQ(std::signbit(row.residuals[4]), steps < 0.0);
  }
}

TEST(Contributions, NameTheColumnThatIsOffAndKeepItsSign) {
  const Table table(LinearTable(60, 8, 3), "t");
  ExpectSignsOfTheFault(FitPCA(table, 2));
  ExpectSignsOfTheFault(FitPLS(table, 2));
  ExpectSignsOfTheFault(FitOPLS(table, 1));
}

TEST(Contributions, ThatHoldARowBackAreNegative) {
  Notes notes;
  const PLSResult fit = FitPLS(Table(LinearTable(60, 8, 3), "t"), 2);
  double least = 0.0;
  for (const RowContributions& row : OfAllRows(fit, &notes)) {
    least = std::min(least, *std::min_element(row.t2Parts.begin(), row.t2Parts.end()));
  }
  EXPECT_LT(least, -0.1);
}

TEST(Contributions, OfATrainingRowAreThoseOfTheSameRowLater) {
  const std::string text = LinearTable(40, 8, 4);
  const PLSResult fit = FitPLS(Table(text, "t"), 3);
  Notes notes;
  const Table table(text, "t");
  const NewRows newRows = ReadNewRows(fit.model, table, "name", &notes);
  const auto later = ContributionsOfNewRows(fit.model, newRows, {7, 2}, &notes);
  const auto now = ContributionsOfTrainingRows(fit.model, fit.data.x, {7, 2}, &notes);
  for (const std::size_t i : {0U, 1U}) {
    EXPECT_EQ(later[i].row, now[i].row);
    EXPECT_EQ(later[i].residuals, now[i].residuals);
    ExpectNear(later[i].t2Parts, now[i].t2Parts, 1e-5);  // the fit's own scores are rounded on another way
  }
  EXPECT_EQ(later[0].row, "s8");
  const auto alone = ContributionsOfNewRows(fit.model, newRows, {2}, &notes);
  EXPECT_EQ(alone.front().t2Parts, later[1].t2Parts);
  EXPECT_EQ(alone.front().residuals, later[1].residuals);
}

template <class Model>
void ExpectHolesToBeTold(const Model& model) {
  Notes notes;
  const RowContributions row = OfNewRow(model, "name,x1,x3,x4,x5,x6,x7,x8\nrow,9,9,27,29,37,30,55\n", &notes);
  EXPECT_THAT(row.t2Parts[1], IsNan());
  EXPECT_THAT(row.residuals[1], IsNan());
  EXPECT_EQ(CountOf(row.t2Parts), 7.0);
  EXPECT_EQ(CountOf(row.residuals), 7.0);
  EXPECT_GT(std::fabs(SumOf(row.t2Parts) - row.t2), 1e-3 * row.t2);
  EXPECT_THAT(notes.Lines(), Contains(AllOf(HasSubstr("the parts of T2 of row 'row' sum to"),
                                            HasSubstr("the row has missing cells"))));
}

TEST(Contributions, OfARowWithHolesAreNotNumbersThereAndANoteTellsThatTheyDoNotSumToT2) {
  const Table table(LinearTable(40, 8, 5), "t");
  ExpectHolesToBeTold(FitPCA(table, 2).model);
  ExpectHolesToBeTold(FitPLS(table, 2).model);
  ExpectHolesToBeTold(FitOPLS(table, 1).model);
}

TEST(Contributions, DoNotSumToT2WithoutCentringAndANoteSaysSo) {
  Notes notes;
  const PLSResult fit = FitPLS(Table(LinearTable(40, 8, 6), "t"), 2, NCScale::ScalingNone);
  const auto row = ContributionsOfTrainingRows(fit.model, fit.data.x, {0}, &notes).front();
  // By algebra: sum over a of (t - mean) t / var, where T2 has (t - mean)^2 / var.
  const ScoreMoments& moments = fit.model.rowTerms->scores;
  double sum = 0.0;
  for (std::size_t a = 0; a < 2; ++a) {
    const double t = (*fit.model.pls->GetTprim())[static_cast<int>(a) + 1][1];
    sum += (t - moments.means[a]) * t / moments.variances[a];
  }
  EXPECT_NEAR(SumOf(row.t2Parts), sum, 1e-5 * std::fabs(sum));
  EXPECT_GT(std::fabs(sum - row.t2), 1e-2);
  EXPECT_THAT(notes.Lines(), ElementsAre(HasSubstr("do not have the mean 0")));
}

TEST(Contributions, OfACompleteRowDoNotSumToT2WhereHolesOfOthersMoveTheMeanOfTheScores) {
  Notes notes;
  const PLSResult fit = FitPLS(Table(WithHoles(LinearTable(40, 8, 13), 5), "t"), 2);
  const RowContributions row = OfNewRow(fit.model, OneRow(1.0, 2), &notes);
  const ScoreMoments& moments = fit.model.rowTerms->scores;
  // By algebra the parts sum to T2 and, over the components, (t - mean) mean / var.
  const std::vector<RowPrediction> predicted =
      PredictRows(fit.model, ReadNewRows(fit.model, Table(OneRow(1.0, 2), "n"), "", &notes).x);
  double beyond = 0.0;
  for (std::size_t a = 0; a < 2; ++a) {
    beyond += (predicted.front().t[a] - moments.means[a]) * moments.means[a] / moments.variances[a];
  }
  EXPECT_GT(std::fabs(beyond), 1e-3);
  EXPECT_NEAR(SumOf(row.t2Parts), row.t2 + beyond, 1e-5 * (1.0 + row.t2));
  EXPECT_THAT(notes.Lines(), Contains(HasSubstr("the scores of the training rows do not have the mean 0")));
}

TEST(Contributions, OfARowWithoutAnyCellAreNotNumbersAndANoteSaysWhy) {
  Notes notes;
  const Table table("x1,x2,x3,x4,x5,x6,x7,x8\n1,2,3,4,5,6,7,8\nNA,NA,NA,NA,NA,NA,NA,NA\n", "n");
  const StoredPLS model = FitPLS(Table(LinearTable(40, 8, 7), "t"), 2).model;
  const auto row = ContributionsOfNewRows(model, ReadNewRows(model, table, "", &notes), {1}, &notes).front();
  EXPECT_THAT(row.t2Parts, Each(IsNan()));
  EXPECT_THAT(row.residuals, Each(IsNan()));
  EXPECT_THAT(notes.Lines(), Contains(HasSubstr("row '2' has no contributions: none of its 8 X cells is present")));
}

TEST(Contributions, OfAModelWithoutMomentsAreResidualsAlone) {
  Notes notes;
  PCAResult fit = FitPCA(Table(LinearTable(40, 8, 8), "t"), 2);
  fit.model.rowTerms.reset();
  fit.model.fileVersion = 4;
  const auto row = ContributionsOfTrainingRows(fit.model, fit.data.x, {0}, &notes).front();
  EXPECT_THAT(row.t2Parts, Each(IsNan()));
  EXPECT_EQ(CountOf(row.residuals), 8.0);
  EXPECT_THAT(notes.Lines(), ElementsAre(HasSubstr("the file of the model has version 4")));
}

TEST(Contributions, OfNoComponentAreRefused) {
  Notes notes;
  const PCAResult pca = FitPCA(Table(LinearTable(40, 8, 9), "t"), 0);
  const PLSResult pls = FitPLS(Table(LinearTable(40, 8, 9), "t"), 0);
  EXPECT_THAT(FailureOf<BadData>([&] { ContributionsOfTrainingRows(pca.model, pca.data.x, {0}, &notes); }),
              Optional(HasSubstr("the model has no component")));
  EXPECT_THAT(FailureOf<BadData>([&] { ContributionsOfTrainingRows(pls.model, pls.data.x, {0}, &notes); }),
              Optional(HasSubstr("the model has no component")));
  EXPECT_THAT(ContributionsOfTrainingRows(pls.model, pls.data.x, {}, &notes), IsEmpty());
}

TEST(XResiduals, OfAModelWithoutComponentsAreTheScaledCells) {
  const PLSResult fit = FitPLS(Table(LinearTable(40, 8, 10), "t"), 0);
  const NCDataMatrix<float> residuals = XResiduals(fit.model, fit.data.x);
  double squares = 0.0;
  for (int r = 1; r <= 40; ++r) squares += std::pow(residuals[r][3], 2);
  EXPECT_NEAR(squares, 39.0, 1e-4);  // unit variance; cells and factors are floats
}

}  // namespace
}  // namespace kalmia::analysis
