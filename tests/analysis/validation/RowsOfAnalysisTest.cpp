// What models that full refits judged say of rows: limits, intervals, and how often they are right.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <sstream>

#include "TestTables.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/fit/PredictResult.h"
#include "kalmia/analysis/validation/Analysis.h"

namespace kalmia::analysis {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

PLSRecipe RecipeOf(int components) {
  PLSRecipe recipe;
  recipe.y = {"y"};
  recipe.components = components;
  return recipe;
}

/// Rows of spectra: mixtures of three smooth bands with noise that neighbouring channels share, and a Y made of the
/// three contents, with noise of its own. Rows of one seed come from one sequence of draws.
class Spectra {
 public:
  explicit Spectra(unsigned seed) : generator_(seed) {}

  std::string Rows(int rows) {
    std::ostringstream text;
    for (int k = 0; k < kChannels; ++k) text << "c" << k << ',';
    text << "y\n";
    for (int i = 0; i < rows; ++i) AddRow(&text);
    return text.str();
  }

 private:
  static constexpr int kChannels = 60;

  void AddRow(std::ostringstream* text) {
    const double contents[] = {Next(), Next(), Next()};
    double noise = 0.0;
    for (int k = 0; k < kChannels; ++k) {
      noise = 0.8 * noise + 0.02 * Next();
      double cell = noise;
      for (int band = 0; band < 3; ++band) {
        cell += (band + 1) * contents[band] * std::exp(-std::pow((k - 15.0 * (band + 1)) / 9.0, 2));
      }
      *text << cell << ',';
    }
    *text << contents[0] - 0.5 * contents[1] + 0.7 * contents[2] + 0.1 * Next() << '\n';
  }

  double Next() { return normal_(generator_); }

  std::mt19937 generator_;
  std::normal_distribution<double> normal_;
};

TEST(RowsOfAnalysis, AreFlaggedAndCoveredAtTheirRates) {
  // 120 tables of 40 rows with 50 new ones each: 6000 new rows, of which 5 % would be 300 +- 17 were they independent;
  // rows of one table share the model, hence the band of 3 to 7 %, and 93 to 98 % for the intervals.
  constexpr int kTables = 120, kTraining = 40, kNew = 50;
  double beyondT2 = 0.0, beyondDistance = 0.0, covered = 0.0, rows = 0.0;
  for (int t = 0; t < kTables; ++t) {
    Spectra spectra(static_cast<unsigned>(t) + 1);
    const PLSAnalysis analysis = Analyse(RecipeOf(3), Table(spectra.Rows(kTraining), "t"));
    const PLSPredictions fresh = Predict(analysis.fit.model, Table(spectra.Rows(kNew), "n"));
    for (std::size_t i = 0; i < kNew; ++i) {
      const RowDiagnosis& diagnosis = fresh.diagnosis;
      beyondT2 += diagnosis.t2[i] > *diagnosis.limits.t2.at95 ? 1.0 : 0.0;
      beyondDistance += diagnosis.distances[i] > *diagnosis.limits.distance.at95 ? 1.0 : 0.0;
      const double error = std::fabs(fresh.measured[0][i] - fresh.predictions[i].y[0]);
      covered += error <= diagnosis.halfWidths(i, 0) ? 1.0 : 0.0;
      rows += 1.0;
    }
  }
  RecordProperty("T2", std::to_string(beyondT2 / rows));
  RecordProperty("distance", std::to_string(beyondDistance / rows));
  RecordProperty("covered", std::to_string(covered / rows));
  EXPECT_GT(beyondT2 / rows, 0.03);
  EXPECT_LT(beyondT2 / rows, 0.07);
  EXPECT_GT(beyondDistance / rows, 0.03);
  EXPECT_LT(beyondDistance / rows, 0.07);
  EXPECT_GT(covered / rows, 0.93);
  EXPECT_LT(covered / rows, 0.98);
}

TEST(RowsOfAnalysis, OfAStoredModelAreThoseOfTheModelJustFitted) {
  Spectra spectra(500);
  const PLSAnalysis analysis = Analyse(RecipeOf(3), Table(spectra.Rows(30), "t"));
  const Table fresh(spectra.Rows(10), "n");
  ModelParts bare;
  bare.rows = false;
  const auto file = ReadModelFile(ModelFileBytes(analysis.fit.model, bare), "m");
  const auto& stored = std::get<StoredPLS>(file);
  const PLSPredictions now = Predict(analysis.fit.model, fresh), later = Predict(stored, fresh);
  EXPECT_EQ(later.diagnosis.t2, now.diagnosis.t2);
  EXPECT_EQ(later.diagnosis.distances, now.diagnosis.distances);
  EXPECT_EQ(later.diagnosis.absoluteDistances, now.diagnosis.absoluteDistances);
  EXPECT_EQ(later.diagnosis.halfWidths.cells, now.diagnosis.halfWidths.cells);
  EXPECT_EQ(later.diagnosis.limits.distance.at95, now.diagnosis.limits.distance.at95);
  EXPECT_EQ(later.notes.Lines(), now.notes.Lines());
  EXPECT_THAT(later.notes.Lines(), Not(Contains(HasSubstr("no "))));
  ASSERT_TRUE(stored.validation);
  EXPECT_EQ(stored.validation->chosen, 3);
  EXPECT_EQ(stored.validation->folds, "interleaved");
  ASSERT_EQ(stored.validation->components.size(), analysis.validation->errors.press.size());
  EXPECT_EQ(stored.validation->components[3].press, analysis.validation->errors.press[3]);
  EXPECT_EQ(stored.validation->components[3].rmsecv.front(), analysis.validation->errors.rmsecv(3, 0));
}

TEST(RowsOfAnalysis, HaveIntervalsByTheErrorsOfLeftOutRows) {
  Spectra spectra(501);
  const PLSAnalysis analysis = Analyse(RecipeOf(3), Table(spectra.Rows(30), "t"));
  const StoredPLS& model = analysis.fit.model;
  // By hand: T2 in long double from the scores of the fit.
  const NCDataMatrix<float>& t = *model.pls->GetTprim();
  std::vector<double> t2(30, 0.0), squares;
  for (int a = 1; a <= 3; ++a) {
    long double mean = 0.0L, variance = 0.0L;
    for (int i = 1; i <= 30; ++i) mean += static_cast<long double>(t[a][i]) / 30;
    for (int i = 1; i <= 30; ++i) variance += (t[a][i] - mean) * (t[a][i] - mean) / 29;
    for (int i = 1; i <= 30; ++i) {
      t2[static_cast<std::size_t>(i) - 1] += static_cast<double>((t[a][i] - mean) * (t[a][i] - mean) / variance);
    }
  }
  double sum = 0.0;
  for (std::size_t i = 0; i < 30; ++i) {
    const double error = analysis.fit.data.measuredY[0][i] - analysis.validation->predicted(i, 0);
    sum += error * error / (1.0 + 1.0 / 30 + t2[i] / 29);
    EXPECT_NEAR(model.rowStatistics->t2[i], t2[i], 1e-12 * (1.0 + t2[i]));  // thirty terms in double
  }
  ASSERT_TRUE(model.rowTerms->intervals[0]);
  EXPECT_EQ(model.rowTerms->intervals[0]->degrees, 26);
  EXPECT_NEAR(model.rowTerms->intervals[0]->s, std::sqrt(sum / 30), 1e-12);
}

TEST(RowsOfAnalysis, BeyondALimitHaveIntervalsThatAreExtrapolations) {
  Spectra spectra(502);
  const PLSAnalysis analysis = Analyse(RecipeOf(3), Table(spectra.Rows(30), "t"));
  std::istringstream fresh(spectra.Rows(1));
  std::string header, line, hundredfold;
  std::getline(fresh, header);
  std::getline(fresh, line);
  std::istringstream cells(line);
  for (std::string cell; std::getline(cells, cell, ',');) {
    hundredfold += (hundredfold.empty() ? "" : ",") + std::to_string(100.0 * std::stod(cell));
  }
  const PLSPredictions result = Predict(analysis.fit.model, Table(header + "\n" + hundredfold + "\n", "n"));
  EXPECT_TRUE(result.diagnosis.IsBeyond(0));
  EXPECT_TRUE(result.diagnosis.HasInterval(0));
  EXPECT_THAT(result.diagnosis.flags[0], Contains("T2 99 %"));
  EXPECT_THAT(result.notes.Lines(), Contains(HasSubstr("1 of 1 row")));
}

TEST(RowsOfAnalysis, HaveNoIntervalWithoutRefitsAndANoteSaysSo) {
  Spectra spectra(503);
  const Table table(spectra.Rows(30), "t");
  for (const ValidationMethod method : {ValidationMethod::Component, ValidationMethod::None}) {
    ValidationRecipe validation;
    validation.method = method;
    const PLSAnalysis analysis = Analyse(RecipeOf(2), table, validation);
    EXPECT_FALSE(analysis.fit.model.rowTerms->intervals[0]);
    EXPECT_FALSE(analysis.fit.model.rowTerms->leftOut);
    EXPECT_FALSE(analysis.fit.model.validation);
    const PLSPredictions result = Predict(analysis.fit.model, table);
    EXPECT_FALSE(result.diagnosis.HasInterval(0));
    EXPECT_THAT(result.notes.Lines(), Contains(HasSubstr("no prediction intervals of y")));
    EXPECT_THAT(result.notes.Lines(), Contains(HasSubstr(method == ValidationMethod::None ? "no row was left out"
                                                                     : "by component makes no full refits")));
  }
}

TEST(RowsOfAnalysis, HaveNoIntervalWithoutADegreeOfFreedom) {
  // Four rows and three components: N - 1 - A = 0.
  const Table table("a,b,c,d,y\n1,2,4,3,1\n2,1,3,5,2\n3,5,1,2,4\n5,3,2,1,3\n", "t");
  const PLSAnalysis analysis = Analyse(RecipeOf(3), table);
  ASSERT_EQ(analysis.fit.model.Components(), 3);
  EXPECT_FALSE(analysis.fit.model.rowTerms->intervals[0]);
}

TEST(RowsOfAnalysis, WithFewDistancesGetANote) {
  Spectra spectra(504);
  const PLSAnalysis few = Analyse(RecipeOf(1), Table(spectra.Rows(8), "t"));
  EXPECT_THAT(few.fit.notes.Lines(), Contains(HasSubstr("the limits of the distance rest on 8 rows")));
  const PLSAnalysis enough = Analyse(RecipeOf(1), Table(spectra.Rows(12), "t"));
  EXPECT_THAT(enough.fit.notes.Lines(), Not(Contains(HasSubstr("rest on"))));
}

TEST(RowsOfAnalysis, OfAModelOfTheMeanHaveDistancesAndIntervalsButNoT2) {
  Spectra spectra(505);
  const PLSAnalysis analysis = Analyse(RecipeOf(0), Table(spectra.Rows(30), "t"));
  ASSERT_EQ(analysis.fit.model.Components(), 0);
  const auto file = ReadModelFile(ModelFileBytes(analysis.fit.model), "m");
  const auto& model = std::get<StoredPLS>(file);
  const PLSPredictions result = Predict(model, Table(spectra.Rows(5), "n"));
  double sum = 0.0;
  for (const double y : analysis.fit.data.measuredY[0]) sum += y / 30;
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_NEAR(result.predictions[i].y[0], sum, 1e-6);  // the centre is a float
    EXPECT_TRUE(std::isnan(result.diagnosis.t2[i]));
    EXPECT_FALSE(std::isnan(result.diagnosis.distances[i]));
    EXPECT_FALSE(std::isnan(result.diagnosis.halfWidths(i, 0)));
  }
  EXPECT_FALSE(result.diagnosis.limits.t2.at95);
  EXPECT_TRUE(result.diagnosis.limits.distance.at95);
}

}  // namespace
}  // namespace kalmia::analysis
