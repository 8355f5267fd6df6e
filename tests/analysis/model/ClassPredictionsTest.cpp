#include "kalmia/analysis/model/ClassPredictions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "TestTables.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/fit/OPLSResult.h"
#include "kalmia/analysis/fit/PLSResult.h"
#include "kalmia/analysis/fit/PredictResult.h"
#include "model/IrisLogOdds.h"
#include "validation/PlainPls.h"

namespace kalmia::analysis {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

PLSRecipe Species(int components) {
  PLSRecipe recipe;
  recipe.id = "row";
  recipe.y = {"Species"};
  recipe.components = components;
  return recipe;
}

/// The model as it comes back from a file without its rows.
template <class Model>
Model Stored(const Model& model) {
  ModelParts bare;
  bare.rows = false;
  return std::get<Model>(ReadModelFile(ModelFileBytes(model, bare), "m"));
}

TEST(ClassPredictions, GiveIrisesTheLogOddsOfScikitLearn) {
  const Table iris = CsvAt(PathOfIris());
  const PLSPredictions result = Predict(Stored(Fit(Species(3), iris).model), iris);
  ASSERT_TRUE(result.classes);
  for (const auto& of : LogOddsOfScikitLearn()) {
    for (std::size_t g = 0; g < 3; ++g) {
      // Dummies in single precision, by rounds that end within 1e-6 of the weights: 1e-5 of a standard deviation within
      // classes, 0.1, times the distance of a mean, up to 14 of them.
      EXPECT_NEAR(result.classes->logOdds(of.row - 1, g), of.odds[g], 2e-3) << of.row << " " << g;
    }
  }
}

TEST(ClassPredictions, OfTheTrainingRowsByAStoredModelAreTheClassesOfTheFit) {
  const Table iris = CsvAt(PathOfIris()), wine = CsvAt(PathOfWine());
  PLSRecipe cultivars;
  cultivars.id = "sample";
  cultivars.classes = "cultivar";
  cultivars.components = 3;
  OPLSRecipe orthogonal;
  static_cast<YRecipe&>(orthogonal) = cultivars;
  orthogonal.components = 1;
  const auto expectSame = [](const auto& fit, const Table& table) {
    const PLSPredictions result = Predict(Stored(fit.model), table);
    EXPECT_EQ(result.classes->nearest, AssignedClasses(fit.classes->values));
    EXPECT_EQ(result.classes->logOdds.cells, LogOdds(fit.classes->values).cells);
    EXPECT_THAT(result.notes.Lines(), Each(Not(HasSubstr("interval"))));
    for (std::size_t i = 0; i < result.predictions.size(); ++i) EXPECT_FALSE(result.diagnosis.HasInterval(i));
  };
  expectSame(Fit(Species(3), iris), iris);
  expectSame(Fit(cultivars, wine), wine);
  expectSame(Fit(orthogonal, wine), wine);
}

/// Two classes apart in x1, with the class of each row and a name.
std::string OaksAndElms() {
  std::string text = "name,kind,x1,x2,x3\n";
  for (int i = 0; i < 24; ++i) {
    text += "r" + std::to_string(i) + (i % 2 == 0 ? ",oak," : ",elm,") + std::to_string(i % 5 + 6 * (i % 2)) + "," +
            std::to_string(i * 5 % 11) + "," + std::to_string(i * 7 % 13) + "\n";
  }
  return text;
}

StoredPLS ModelOfTrees(int components, ClassPriors priors = ClassPriors::Equal) {
  PLSRecipe recipe;
  recipe.id = "name";
  recipe.y = {"kind"};
  recipe.components = components;
  recipe.priors = priors;
  return Stored(Fit(recipe, Table(OaksAndElms(), "trees.csv")).model);
}

TEST(ClassPredictions, OfARowBeyondALimitOf99PercentAreNoClassButTheNearest) {
  const Table table("x1,x2,x3\n1,5,6\n9,5,6\n900,5,6\n1,500,-600\n", "new.csv");
  const PLSPredictions result = Predict(ModelOfTrees(1), table);
  EXPECT_THAT(result.classes->assigned, ElementsAre(1, 0, -1, -1));
  EXPECT_THAT(result.classes->nearest, AllOf(SizeIs(4), Each(Not(-1))));
  EXPECT_EQ(result.classes->nearest[2], 0);
  EXPECT_TRUE(result.diagnosis.IsBeyond99(2));
  EXPECT_THAT(result.classes->measured, IsEmpty());
}

TEST(ClassPredictions, OfARowWithoutCellsAreNeitherClassNorLogOdds) {
  const PLSPredictions result = Predict(ModelOfTrees(1), Table("x1,x2,x3\n1,5,6\n,,\n", "new.csv"));
  EXPECT_THAT(result.classes->nearest, ElementsAre(1, -1));
  EXPECT_THAT(result.classes->assigned, ElementsAre(1, -1));
  EXPECT_TRUE(std::isnan(result.classes->logOdds(1, 0)));
}

TEST(ClassPredictions, WithoutComponentsAreTheLargestPrior) {
  std::string more = OaksAndElms();  // one oak more than elms
  more += "r24,oak,1,2,3\n";
  PLSRecipe recipe;
  recipe.id = "name";
  recipe.y = {"kind"};
  recipe.components = 0;
  for (const auto& [priors, largest] : {std::make_pair(ClassPriors::Equal, 0), std::make_pair(ClassPriors::Shares, 1)}) {
    recipe.priors = priors;
    const Table table(more, "trees.csv");
    const PLSPredictions result = Predict(Stored(Fit(recipe, table).model), table);
    EXPECT_THAT(result.classes->nearest, AllOf(SizeIs(25), Each(largest)));
  }
}

TEST(ClassPredictions, AreCountedByTheClassThatTheTableTells) {
  const Table table(
      "kind,x1,x2,x3\noak,1,5,6\noak,9,5,6\nelm,9,5,6\nash,9,5,6\n,9,5,6\nelm,900,5,6\nNA,1,5,6\nelm,8,6,6\n", "t");
  const PLSPredictions result = Predict(ModelOfTrees(1), table);
  EXPECT_THAT(result.classes->measured, ElementsAre("oak", "oak", "elm", "ash", "", "elm", "", "elm"));
  EXPECT_THAT(result.notes.Lines(),
              Contains("not counted, of classes that the model does not know: ash"));
  const ClassTally tally = TallyOf({"elm", "oak"}, *result.classes);
  EXPECT_THAT(tally.confusion, ElementsAre(ElementsAre(2, 0), ElementsAre(1, 1)));
  EXPECT_THAT(tally.unassigned, ElementsAre(1, 0));
  EXPECT_EQ(tally.rows, 5);
  EXPECT_EQ(tally.right, 3);
}

}  // namespace
}  // namespace kalmia::analysis
