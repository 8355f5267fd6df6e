#include "kalmia/analysis/validation/Folds.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/pcapls/PCACrossValidation.h"

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

FoldRecipe Recipe(FoldScheme scheme, int groups, int repeats = 1, std::uint64_t seed = 1) {
  FoldRecipe recipe;
  recipe.scheme = scheme;
  recipe.groups = groups;
  recipe.repeats = repeats;
  recipe.seed = seed;
  return recipe;
}

std::vector<int> SizesOf(const Folds& folds, int repeat = 0) {
  std::vector<int> sizes(static_cast<std::size_t>(folds.groups), 0);
  for (const int group : folds.groupOfRow[static_cast<std::size_t>(repeat)]) ++sizes[static_cast<std::size_t>(group)];
  return sizes;
}

TEST(Folds, HaveAWordForEachScheme) {
  for (const FoldScheme scheme :
       {FoldScheme::Interleaved, FoldScheme::Blocks, FoldScheme::Random, FoldScheme::LeaveOneOut}) {
    EXPECT_EQ(FoldSchemeOfWord(WordOfFoldScheme(scheme)), scheme);
  }
  EXPECT_EQ(WordOfFoldScheme(FoldScheme::LeaveOneOut), "leave-one-out");
  EXPECT_EQ(FoldSchemeOfWord("Blocks"), std::nullopt);
}

TEST(Folds, InterleavedAreTheGroupsOfTheLibrarysClasses) {
  for (const int rows : {2, 7, 8, 60}) {
    const Folds folds = MakeFolds(static_cast<std::size_t>(rows), FoldRecipe());
    const NCIntegralVector<int, -99> expected = GetDeafultCVGroupsVector(rows, folds.groups);
    EXPECT_EQ(folds.groups, std::min(rows, 7));
    for (int i = 1; i <= rows; ++i) EXPECT_EQ(folds.groupOfRow[0][static_cast<std::size_t>(i) - 1], expected[i]);
  }
}

TEST(Folds, BlocksAreNeighboursAndTheFirstOnesHaveOneRowMore) {
  EXPECT_THAT(MakeFolds(8, Recipe(FoldScheme::Blocks, 3)).groupOfRow, ElementsAre(ElementsAre(0, 0, 0, 1, 1, 1, 2, 2)));
  EXPECT_THAT(SizesOf(MakeFolds(60, Recipe(FoldScheme::Blocks, 7))), ElementsAre(9, 9, 9, 9, 8, 8, 8));
}

TEST(Folds, LeaveOneOutHasAGroupForEachRow) {
  const Folds folds = MakeFolds(4, Recipe(FoldScheme::LeaveOneOut, /*groups=*/0));
  EXPECT_EQ(folds.groups, 4);
  EXPECT_THAT(folds.groupOfRow, ElementsAre(ElementsAre(0, 1, 2, 3)));
}

TEST(Folds, RandomOnesAreDealtInTheOrderOfTheGenerator) {
  // The order of ten rows with seed 1 is 3 8 0 9 2 5 6 4 1 7 (RandomDrawsTest): row 3 goes to group 0, row 8 to 1, ...
  const Folds folds = MakeFolds(10, Recipe(FoldScheme::Random, 3));
  EXPECT_THAT(folds.groupOfRow, ElementsAre(ElementsAre(2, 2, 1, 0, 1, 2, 0, 0, 1, 0)));
}

TEST(Folds, RandomOnesHaveAnotherPartitionInEachRepeatAndForEachSeed) {
  const Folds folds = MakeFolds(60, Recipe(FoldScheme::Random, 7, /*repeats=*/3));
  EXPECT_EQ(folds.Repeats(), 3);
  EXPECT_EQ(folds.Rounds(), 21);
  EXPECT_EQ(folds.Rows(), 60U);
  for (int repeat = 0; repeat < 3; ++repeat) EXPECT_THAT(SizesOf(folds, repeat), ElementsAre(9, 9, 9, 9, 8, 8, 8));
  EXPECT_NE(folds.groupOfRow[0], folds.groupOfRow[1]);
  EXPECT_NE(folds.groupOfRow[1], folds.groupOfRow[2]);
  EXPECT_NE(folds.groupOfRow[0], MakeFolds(60, Recipe(FoldScheme::Random, 7, 1, /*seed=*/2)).groupOfRow[0]);
  EXPECT_EQ(folds.groupOfRow[0], MakeFolds(60, Recipe(FoldScheme::Random, 7)).groupOfRow[0]);
}

TEST(Folds, MoreGroupsThanRowsBecomeGroupsOfOneRow) {
  for (const FoldScheme scheme : {FoldScheme::Interleaved, FoldScheme::Blocks, FoldScheme::Random}) {
    const Folds folds = MakeFolds(3, Recipe(scheme, 7));
    EXPECT_EQ(folds.groups, 3);
    EXPECT_THAT(SizesOf(folds), ElementsAre(1, 1, 1));
  }
  EXPECT_EQ(MakeFoldsWithinClasses({0, 1, 0}, Recipe(FoldScheme::Random, 7)).groups, 3);
}

TEST(Folds, WithinClassesEachGroupHasItsShareOfEachClass) {
  // 20 rows of class 0, 9 of class 1 and 4 without one, mixed; 33 rows in 4 groups.
  std::vector<int> classOfRow;
  for (int i = 0; i < 33; ++i) classOfRow.push_back(i % 8 == 7 ? -1 : (i % 8 < 5 ? 0 : 1));
  const Folds folds = MakeFoldsWithinClasses(classOfRow, Recipe(FoldScheme::Random, 4, /*repeats=*/5));
  for (int repeat = 0; repeat < 5; ++repeat) {
    std::map<std::pair<int, int>, int> counts;
    for (std::size_t i = 0; i < classOfRow.size(); ++i) {
      ++counts[{classOfRow[i], folds.groupOfRow[static_cast<std::size_t>(repeat)][i]}];
    }
    for (const int c : {-1, 0, 1}) {
      const auto rows = static_cast<int>(std::count(classOfRow.begin(), classOfRow.end(), c));
      for (int g = 0; g < 4; ++g) {
        EXPECT_GE((counts[{c, g}]), rows / 4) << c << " " << g;
        EXPECT_LE((counts[{c, g}]), (rows + 3) / 4) << c << " " << g;
      }
    }
    EXPECT_THAT(SizesOf(folds, repeat), ElementsAre(9, 8, 8, 8));
  }
  EXPECT_NE(folds.groupOfRow[0], folds.groupOfRow[1]);
  const FoldRecipe other = Recipe(FoldScheme::Random, 4, /*repeats=*/1, /*seed=*/2);
  EXPECT_NE(folds.groupOfRow[0], MakeFoldsWithinClasses(classOfRow, other).groupOfRow[0]);
}

TEST(Folds, OfLabelsNumberTheGroupsAsTheyAppear) {
  const Folds folds = FoldsOfLabels({"b", "a", "b", "c", "a"});
  EXPECT_EQ(folds.groups, 3);
  EXPECT_THAT(folds.groupOfRow, ElementsAre(ElementsAre(0, 1, 0, 2, 1)));
  EXPECT_THAT(folds.names, ElementsAre("b", "a", "c"));
}

TEST(Folds, SayWhichRowsStayOut) {
  const Folds folds = MakeFolds(5, Recipe(FoldScheme::Interleaved, 2));
  EXPECT_THAT(RowsOfGroup(folds, 0, 0), ElementsAre(1, 3));
  EXPECT_THAT(RowsOutsideGroup(folds, 0, 0), ElementsAre(0, 2, 4));
}

TEST(Folds, NameTheRoundsWhoseModelsLackAClass) {
  // Blocks of a table that is sorted by class: each model lacks the class that it is asked for.
  const std::vector<int> sorted = {0, 0, 1, 1, 2, 2};
  const std::vector<AbsentClass> absent = ClassesAbsentInRounds(MakeFolds(6, Recipe(FoldScheme::Blocks, 3)), sorted);
  ASSERT_EQ(absent.size(), 3U);
  for (int c = 0; c < 3; ++c) {
    const AbsentClass& found = absent[static_cast<std::size_t>(c)];
    EXPECT_EQ(found.classNumber, c);
    EXPECT_EQ(found.group, c);
    EXPECT_EQ(found.repeat, 0);
  }
  EXPECT_THAT(ClassesAbsentInRounds(MakeFolds(6, Recipe(FoldScheme::Interleaved, 2)), sorted), IsEmpty());
  EXPECT_THAT(ClassesAbsentInRounds(MakeFolds(6, Recipe(FoldScheme::Blocks, 3)), {0, -1, 0, -1, -1, -1}), IsEmpty());
}

TEST(Folds, RefuseWhatLeavesNothingToValidate) {
  EXPECT_EQ(FailureOf<BadRequest>([] { MakeFolds(9, Recipe(FoldScheme::Blocks, 1)); }),
            "validation takes two groups or more, not 1");
  EXPECT_EQ(FailureOf<BadRequest>([] { MakeFoldsWithinClasses({0, 1}, Recipe(FoldScheme::Random, 0)); }),
            "validation takes two groups or more, not 0");
  EXPECT_EQ(FailureOf<BadRequest>([] { MakeFolds(9, Recipe(FoldScheme::Random, 3, /*repeats=*/0)); }),
            "validation takes one repeat or more, not 0");
  EXPECT_EQ(FailureOf<BadRequest>([] { MakeFolds(9, Recipe(FoldScheme::Interleaved, 3, /*repeats=*/2)); }),
            "only random groups differ from repeat to repeat");
  for (const FoldScheme scheme : {FoldScheme::Interleaved, FoldScheme::LeaveOneOut}) {
    EXPECT_EQ(FailureOf<BadData>([=] { MakeFolds(1, Recipe(scheme, 7)); }), "validation takes two rows or more");
  }
  EXPECT_EQ(FailureOf<BadData>([] { FoldsOfLabels({"a", "a", "a"}); }),
            "all rows have the same group: validation takes two groups or more");
}

}  // namespace
}  // namespace kalmia::analysis
