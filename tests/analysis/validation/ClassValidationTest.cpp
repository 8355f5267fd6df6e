// Discriminant analysis from a table on: the fit, its validation and permutations.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>

#include "FailureOf.h"
#include "TestTables.h"
#include "kalmia/analysis/fit/OPLSResult.h"
#include "kalmia/analysis/fit/PLSResult.h"
#include "kalmia/analysis/model/DiscriminantRule.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/OPLSValidation.h"
#include "kalmia/analysis/validation/PLSValidation.h"
#include "kalmia/analysis/validation/YPermutations.h"
#include "validation/PlainPls.h"

namespace kalmia::analysis {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Optional;

PLSRecipe Species(std::optional<int> components = {}) {
  PLSRecipe recipe;
  recipe.id = "row";
  recipe.y = {"Species"};
  recipe.components = components;
  return recipe;
}

PLSRecipe Cultivars(int components) {
  PLSRecipe recipe;
  recipe.id = "sample";
  recipe.classes = "cultivar";
  recipe.components = components;
  return recipe;
}

int Found(const ClassFigures& figures) {
  int count = 0;
  for (std::size_t g = 0; g < figures.confusion.size(); ++g) count += figures.confusion[g][g];
  return count;
}

// Rows found while they were left out, of 150 irises and 178 wines, 7 interleaved groups, by an independent program in
// double precision.
TEST(ClassValidation, FindsIrisesAndWinesThatWereLeftOut) {
  const Table iris = CsvAt(PathOfIris()), wine = CsvAt(PathOfWine());
  EXPECT_EQ(Found(Validate(Species(2), iris).classes->figures), 138);
  EXPECT_EQ(Found(Validate(Species(3), iris).classes->figures), 145);
  EXPECT_EQ(Found(Validate(Species(4), iris).classes->figures), 147);
  // The same program; with 2 components one more, 175: a row between two classes, whose dummies differ in single cells.
  EXPECT_NEAR(Found(Validate(Cultivars(2), wine).classes->figures), 175, 1);
  EXPECT_EQ(Found(Validate(Cultivars(3), wine).classes->figures), 175);
  EXPECT_EQ(Found(Validate(Cultivars(4), wine).classes->figures), 175);
}

// The same figures, told of each number of components at once.
TEST(ClassValidation, JudgesAllNumbersOfComponents) {
  const PLSValidation validation = Validate(Species(4), CsvAt(PathOfIris()));
  ASSERT_EQ(validation.classFigures.size(), 5U);
  const double found[] = {50, 0, 138, 145, 147};
  for (const std::size_t a : {0U, 2U, 3U, 4U}) EXPECT_EQ(validation.classFigures[a].accuracy, found[a] / 150) << a;
  for (const double auc : validation.classFigures[0].auc) EXPECT_TRUE(std::isnan(auc));
  EXPECT_GT(validation.classFigures[1].auc[0], 0.9);
}

// Each round's own number of components, and the class that the validation of that number gives the row.
TEST(ClassValidation, ThatIsNestedFindsWhatEachRoundsOwnNumberFinds) {
  const Table iris = CsvAt(PathOfIris());
  ValidationRecipe nested;
  nested.nested = true;
  nested.folds.scheme = FoldScheme::Random;
  PLSRecipe recipe = Species();
  recipe.groups = 5;
  const PLSValidation validation = Validate(recipe, iris, nested);
  ASSERT_TRUE(validation.nested && validation.nested->classes);
  ASSERT_EQ(validation.nested->models.size(), 5U);
  int found = 0;
  nested.nested = false;
  for (std::size_t i = 0; i < 150; ++i) {
    const auto group = static_cast<std::size_t>(validation.folds.groupOfRow.front()[i]);
    recipe.components = static_cast<int>(validation.nested->models[group]);
    static std::map<int, std::vector<int>> assigned;
    if (assigned.count(*recipe.components) == 0) {
      assigned[*recipe.components] = AssignedClasses(Validate(recipe, iris, nested).classes->values);
    }
    found += assigned[*recipe.components][i] == validation.classes->classes.classOfRow[i] ? 1 : 0;
  }
  EXPECT_EQ(Found(*validation.nested->classes), found);
  EXPECT_EQ(validation.nested->classes->accuracy, found / 150.0);
}

TEST(ClassValidation, TakesAColumnOfTextsAsYForClasses) {
  const PLSResult fit = Fit(Species(3), CsvAt(PathOfIris()));
  EXPECT_THAT(fit.model.yNames, ElementsAre("setosa", "versicolor", "virginica"));
  ASSERT_TRUE(fit.classes);
  EXPECT_EQ(fit.classes->classes.classOfRow[0], 0);
  EXPECT_EQ(fit.classes->classes.classOfRow[149], 2);
  EXPECT_GE(Found(JudgeClasses(fit.classes->classes.classOfRow, fit.classes->values)), 143);
  const PLSValidation validation = Validate(Species(3), CsvAt(PathOfIris()));
  for (const auto& anova : validation.cvAnova) EXPECT_FALSE(anova);  // of numbers alone
}

TEST(ClassValidation, TakesNumbersForClassesWhereTheyAreNamed) {
  EXPECT_THAT(Fit(Cultivars(2), CsvAt(PathOfWine())).model.yNames, ElementsAre("1", "2", "3"));
  PLSRecipe numbers = Cultivars(2);
  numbers.classes = "";
  numbers.y = {"cultivar"};
  EXPECT_FALSE(Fit(numbers, CsvAt(PathOfWine())).classes);
}

TEST(ClassValidation, OfTwoClassesIsTheModelOfOneDummy) {
  std::string classes = "c,x1,x2,x3\n", dummy = classes;
  for (int i = 0; i < 20; ++i) {
    const int own = i * i % 3 == 0 ? 1 : 0;
    const std::string cells = "," + std::to_string(i % 7 + 3 * own) + "," + std::to_string(i * 5 % 11) + "," +
                              std::to_string(i * 3 % 13 - own) + "\n";
    classes += (own == 1 ? "yes" : "no") + cells;
    dummy += std::to_string(own) + cells;
  }
  PLSRecipe ofClasses, ofDummy;
  ofClasses.y = ofDummy.y = {"c"};
  ofClasses.components = ofDummy.components = 2;
  const PLSValidation two = Validate(ofClasses, Table(classes, "t.csv")), one = Validate(ofDummy, Table(dummy, "t.csv"));
  for (std::size_t i = 0; i < 20; ++i) {
    EXPECT_NEAR(two.predicted(i, 1), one.predicted(i, 0), 1e-5);  // in single precision, by rounds that end within 1e-6
    EXPECT_NEAR(two.predicted(i, 0), 1.0 - one.predicted(i, 0), 1e-5);
  }
}

TEST(ClassValidation, OfOPLSAssignsAsThatOfPLSWithAsManyComponents) {
  std::string text = "c,x1,x2,x3,x4\n";
  for (int i = 0; i < 30; ++i) {
    const int own = i * i % 3 == 0 ? 1 : 0;
    text += (own == 1 ? "yes" : "no");
    text += "," + std::to_string(i % 7 + 3 * own) + "," + std::to_string(i * 5 % 11) + "," +
            std::to_string(i * 3 % 13 - own) + "," + std::to_string(i * 7 % 17) + "\n";
  }
  OPLSRecipe opls;
  opls.y = {"c"};
  opls.predictive = 1;
  opls.components = 1;
  PLSRecipe pls;
  pls.y = {"c"};
  pls.components = 2;
  const Table table(text, "t.csv");
  EXPECT_EQ(Validate(opls, table).classes->figures.confusion, Validate(pls, table).classes->figures.confusion);
  EXPECT_EQ(JudgeClasses(Fit(opls, table).classes->classes.classOfRow, Fit(opls, table).classes->values).confusion,
            JudgeClasses(Fit(pls, table).classes->classes.classOfRow, Fit(pls, table).classes->values).confusion);
}

TEST(ClassValidation, GivesAllRowsToTheFirstClassWithoutAComponent) {
  const PLSValidation validation = Validate(Species(0), CsvAt(PathOfIris()));
  for (const std::vector<int>& row : validation.classes->figures.confusion) EXPECT_THAT(row, ElementsAre(50, 0, 0));
}

TEST(ClassValidation, PredictsRowsWithoutAClassAndCountsThemNowhere) {
  std::string text = "c,x1,x2\n";
  for (int i = 0; i < 21; ++i) {
    text += (i == 4 ? "" : i % 2 == 0 ? "a" : "b");
    text += "," + std::to_string(i % 5 + 4 * (i % 2)) + "," + std::to_string(i * 5 % 11) + "\n";
  }
  PLSRecipe recipe;
  recipe.y = {"c"};
  recipe.components = 1;
  const PLSValidation validation = Validate(recipe, Table(text, "t.csv"));
  EXPECT_EQ(validation.classes->classes.classOfRow[4], -1);
  EXPECT_FALSE(std::isnan(validation.classes->values(4, 0)));
  int counted = 0;
  for (const std::vector<int>& row : validation.classes->figures.confusion) counted += row[0] + row[1];
  EXPECT_EQ(counted, 20);
}

TEST(ClassValidation, DealsRandomGroupsWithinClassesAndNotesClassesThatARoundLacks) {
  const Table iris = CsvAt(PathOfIris());
  ValidationRecipe random, blocks;
  random.folds.scheme = FoldScheme::Random;
  blocks.folds.scheme = FoldScheme::Blocks;
  PLSRecipe recipe = Species(2);
  const PLSValidation within = Validate(recipe, iris, random);
  EXPECT_EQ(within.folds.groupOfRow,
            MakeFoldsWithinClasses(within.classes->classes.classOfRow, {random.folds, recipe.groups}).groupOfRow);
  EXPECT_THAT(within.notes.Lines(), IsEmpty());
  recipe.groups = 3;  // sorted by species: each block is one of them
  const PLSValidation sorted = Validate(recipe, iris, blocks);
  EXPECT_EQ(Found(sorted.classes->figures), 0);
  EXPECT_THAT(sorted.notes.Lines(), Contains(HasSubstr("classes setosa, versicolor and virginica")));
}

TEST(ClassValidation, NotesThatBlocksOfASortedTableLeaveOutMuchOfAClass) {
  const auto noteOf = [](FoldScheme scheme) {
    ValidationRecipe rounds;
    rounds.folds.scheme = scheme;
    return Validate(Species(2), CsvAt(PathOfIris()), rounds).notes.Lines();
  };
  EXPECT_THAT(noteOf(FoldScheme::Blocks), Contains(HasSubstr("the rows stand class by class")));
  EXPECT_THAT(noteOf(FoldScheme::Interleaved), Not(Contains(HasSubstr("class by class"))));
}

TEST(ClassValidation, PermutesClassesAndCountsHowOftenAsManyAreFound) {
  const Table iris = CsvAt(PathOfIris());
  const PLSValidation validation = Validate(Species(3), iris);
  const PermutationTest test = PermuteY(Species(3), iris, validation.folds, 3, {99, 1});
  EXPECT_DOUBLE_EQ(test.original.accuracy, validation.classes->figures.accuracy);
  EXPECT_EQ(test.judgement.pAccuracy, 0.01);
  double sum = 0.0;
  for (const PermutationRun& run : test.runs) sum += run.accuracy;
  EXPECT_NEAR(sum / 99, 1.0 / 3.0, 0.03);  // three classes of one size; 99 runs of 150 rows leave about 0.004
  std::string holed = "c,x1,x2,x3\n";
  for (int i = 0; i < 24; ++i) {
    holed += (i % 2 == 0 ? "a," : "b,") + (i == 7 ? std::string() : std::to_string(i % 5 + 4 * (i % 2))) + "," +
             std::to_string(i * 5 % 11) + "," + std::to_string(i * i % 7) + "\n";
  }
  PLSRecipe recipe;
  recipe.y = {"c"};
  recipe.components = 1;
  const Table table(holed, "t.csv");
  const PLSValidation ofHoled = Validate(recipe, table);
  EXPECT_DOUBLE_EQ(PermuteY(recipe, table, ofHoled.folds, 1, {3, 1}).original.accuracy,
                   ofHoled.classes->figures.accuracy);
}

/// 24 rows of two classes; the first one has two of its six cells.
Table TableOfARowWithTwoCells() {
  std::string text = "c,x1,x2,x3,x4,x5,x6\n";
  for (int i = 0; i < 24; ++i) {
    text += i % 2 == 0 ? "a" : "b";
    for (int k = 1; k <= 6; ++k) {
      const bool isHole = i == 0 && k > 2;
      text += "," + (isHole ? "" : std::to_string((i * i * k + 3 * i) % (11 + 2 * k) + (k == 1 ? 5 * (i % 2) : 0)));
    }
    text += "\n";
  }
  return {text, "t.csv"};
}

TEST(ClassValidation, CountsTheRowsThatAllNumbersOfComponentsPredict) {
  const Table table = TableOfARowWithTwoCells();
  PLSRecipe recipe;
  recipe.y = {"c"};
  recipe.components = 4;
  const PLSValidation validation = Validate(recipe, table);
  ASSERT_EQ(validation.classFigures.size(), 5U);
  for (std::size_t a = 0; a < 5; ++a) {
    PLSRecipe fewer = recipe;
    fewer.components = static_cast<int>(a);
    const ClassValidation own = *Validate(fewer, table).classes;
    EXPECT_EQ(std::isnan(own.values(0, 0)), a > 2) << "2 components predict a row of two cells";
    const std::vector<int> assigned = AssignedClasses(own.values);
    int found = 0;
    for (std::size_t i = 1; i < 24; ++i) found += assigned[i] == own.classes.classOfRow[i] ? 1 : 0;
    EXPECT_EQ(validation.classFigures[a].accuracy, found / 23.0) << a;
    EXPECT_EQ(validation.classFigures[a].unpredictedRows, 1) << a;
  }
  EXPECT_THAT(validation.notes.Lines(), Contains(HasSubstr("so in no PRESS, Q2, RMSECV and accuracy: 1 row")));
  const PermutationTest test = PermuteY(recipe, table, validation.folds, 4, {3, 1});
  EXPECT_EQ(test.original.accuracy, validation.classes->figures.accuracy);
  EXPECT_NEAR(test.original.q2, validation.errors.q2[4], 1e-6);  // in single precision, fitted a second time
}

TEST(ClassValidation, ThatIsNestedCountsTheSameRows) {
  ValidationRecipe nested;
  nested.nested = true;
  PLSRecipe recipe;
  recipe.y = {"c"};
  const PLSValidation validation = Validate(recipe, TableOfARowWithTwoCells(), nested);
  ASSERT_TRUE(validation.nested && validation.nested->classes);
  ASSERT_EQ(validation.errors.unpredictedRows, 1U);
  ASSERT_LE(validation.nested->models[0], 2U) << "the round of the first row, which these predict";
  EXPECT_EQ(validation.nested->classes->unpredictedRows, 1);
}

// 30 rows, 2000 columns of noise: the fitted dummies are the true ones but for roundings.
TEST(ClassValidation, StandsWithManyMoreColumnsThanRows) {
  std::string text = "c";
  for (int k = 1; k <= 2000; ++k) text += ",x" + std::to_string(k);
  text += "\n";
  unsigned word = 1;
  for (int i = 0; i < 30; ++i) {
    text += i % 2 == 0 ? "a" : "b";
    for (int k = 0; k < 2000; ++k) {
      word = word * 1664525U + 1013904223U;
      text += "," + std::to_string(word >> 16U);
    }
    text += "\n";
  }
  PLSRecipe recipe;
  recipe.y = {"c"};
  recipe.components = 12;
  const Table table(text, "t.csv");
  const PLSResult fit = Fit(recipe, table);
  EXPECT_EQ(Found(JudgeClasses(fit.classes->classes.classOfRow, fit.classes->values)), 30);
  const double accuracy = Validate(recipe, table).classes->figures.accuracy;
  EXPECT_GT(accuracy, 0.1);
  EXPECT_LT(accuracy, 0.9);
}

TEST(ClassValidation, RefusesWhatAreNoClasses) {
  const Table table("name,c,d,x,y\na,p,u,1,2\nb,q,u,2,1\nc,p,u,4,3\nd,q,v,3,5\n", "t.csv");
  const auto fit = [&](const std::vector<std::string>& y, const std::string& classes) {
    PLSRecipe recipe;
    recipe.y = y;
    recipe.classes = classes;
    recipe.components = 1;
    Fit(recipe, table);
  };
  EXPECT_EQ(FailureOf<BadRequest>([&] { fit({"c", "y"}, ""); }),
            "the Y column 'c' holds texts: classes are modelled alone, without other columns");
  EXPECT_EQ(FailureOf<BadRequest>([&] { fit({"y"}, "c"); }),
            "columns of Y are named, and a column of classes too: only one of them can be");
  EXPECT_EQ(FailureOf<BadRequest>([&] { fit({}, ""); }), "no column of Y is named");
  EXPECT_THAT(FailureOf<BadData>([&] { fit({"name"}, ""); }),
              Optional(HasSubstr("the values of column 'name' are no classes: the class 'a' has a single row")));
  EXPECT_THAT(FailureOf<BadData>([&] { fit({}, "d"); }), Optional(HasSubstr("the class 'v' has a single row")));
}

}  // namespace
}  // namespace kalmia::analysis
