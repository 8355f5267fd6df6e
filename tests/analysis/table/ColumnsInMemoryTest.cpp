#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "FailureOf.h"
#include "TestTables.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/fit/FillResult.h"
#include "kalmia/analysis/table/Description.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/Analysis.h"

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;
using ::testing::Optional;

using Numbers = std::vector<double>;
using Texts = std::vector<std::string>;
constexpr double kHole = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// The columns of a table one by one, numbers and texts as their kind says; the first one always as texts.
Table InMemory(const Table& table) {
  std::vector<NamedColumn> columns;
  for (const std::string& name : table.ColumnNames()) {
    const int column = table.Find(name);
    if (column == 0 || KindOfColumn(table, column) == ColumnKind::Texts) {
      columns.push_back({name, table.ColumnTexts(column)});
    } else {
      columns.push_back({name, NumbersOf(table, name)});
    }
  }
  return {std::move(columns), table.Name()};
}

std::string TextWithHoles() { return WithHoles(LinearTable(30, 8, 1), 11); }

std::optional<std::string> Refusal(std::vector<NamedColumn> columns) {
  return FailureOf<BadData>([&] { Table(std::move(columns), "t"); });
}

PLSRecipe RecipeOf(const std::string& y) {
  PLSRecipe recipe;
  recipe.id = "name";
  recipe.y = {y};
  return recipe;
}

TEST(ColumnsInMemory, MakeTheModelsOfTheSameTableInAFile) {
  const Table table(TextWithHoles(), "t");
  const PLSAnalysis ofFile = Analyse(RecipeOf("y"), table);
  const PLSAnalysis ofMemory = Analyse(RecipeOf("y"), InMemory(table));
  EXPECT_EQ(ModelFileBytes(ofMemory.fit.model), ModelFileBytes(ofFile.fit.model));
  EXPECT_EQ(ofMemory.validation->errors.press, ofFile.validation->errors.press);
}

TEST(ColumnsInMemory, HaveTheCellsAndTheKindsOfTheirNumbersAndTexts) {
  const Table table({{"name", Texts{"a", "", "NA"}},
                     {"", Numbers{0.1, kHole, -1e-300}},
                     {"empty", Numbers{kHole, kHole, kHole}},
                     {"no words", Texts{"", "nan", ""}},
                     {"digits", Texts{"1", "2", ""}}},
                    "t");
  EXPECT_EQ(table.Rows(), 3);
  EXPECT_FALSE(table.HasText());
  EXPECT_THAT(table.ColumnNames(), ElementsAre("name", "column 2", "empty", "no words", "digits"));
  std::vector<ColumnKind> kinds;
  for (int c = 0; c < table.Columns(); ++c) kinds.push_back(KindOfColumn(table, c));
  EXPECT_THAT(kinds, ElementsAre(ColumnKind::Texts, ColumnKind::Numbers, ColumnKind::Empty, ColumnKind::Empty,
                                 ColumnKind::Texts));
  EXPECT_THAT(table.RowTexts(0), ElementsAre("a", "0.1", "", "", "1"));
  EXPECT_THAT(table.ColumnTexts(1), ElementsAre("0.1", "", "-1e-300"));
  EXPECT_EQ(table.Column(0).missing, 2);
  EXPECT_EQ(table.Column(1).missing, 1);
  EXPECT_EQ(LabelOf(table, 2, 0), "");
  EXPECT_TRUE(std::isnan(ReadNumbers(table, 3)[1]));
  EXPECT_EQ(table.RowPlace(1), "row 2");
}

TEST(ColumnsInMemory, KeepTheirNumbersWhenTheTableMoves) {
  Table first({{"x", Numbers{1.0, kInfinity}}, {"y", Numbers{3.0, 4.0}}}, "t");
  const Table second = std::move(first);
  EXPECT_THAT(ReadNumbers(second, 1), ElementsAre(3.0, 4.0));
  EXPECT_EQ(NumbersBesideStrays(second, 0)[0], 1.0);
}

TEST(ColumnsInMemory, WithNumbersThatNoCellHoldsAreRefusedWhereTheyAreAskedFor) {
  const Table table({{"x", Numbers{1.0, kInfinity, kHole}},
                     {"big", Numbers{1e39, 1.0, 2.0}},
                     {"word", Texts{"a", "b", ""}}},
                    "t");
  EXPECT_THAT(FailureOf<BadData>([&] { ReadNumbers(table, 0); }),
              Optional(std::string("t: row 2, column 'x': 'inf' is infinite")));
  EXPECT_THAT(FailureOf<BadData>([&] { ReadNumbers(table, 1); }),
              Optional(std::string("t: row 1, column 'big': '1e+39' is too large for single precision")));
  const std::string noNumber =
      "t: row 1, column 'word': 'a' is not a number; missing cells are empty or NA, NaN or nan";
  EXPECT_THAT(FailureOf<BadData>([&] { ReadNumbers(table, 2); }), Optional(noNumber));
  EXPECT_TRUE(std::isnan(NumbersBesideStrays(table, 0)[1]));
}

TEST(ColumnsInMemory, ThatAreNoTableAreRefused) {
  EXPECT_THAT(Refusal({}), Optional(std::string("t has no columns")));
  EXPECT_THAT(Refusal({{"x", Numbers{}}}), Optional(std::string("t has no rows")));
  EXPECT_THAT(Refusal({{"x", Numbers{1.0, 2.0}}, {"y", Texts{"a"}}}),
              Optional(std::string("t: column 'y' has 1 cell, column 'x' has 2")));
  EXPECT_THAT(Refusal({{"x", Numbers{1.0}}, {"x", Numbers{2.0}}}),
              Optional(std::string("t: columns 1 and 2 have the same name, 'x'")));
}

TEST(ColumnsInMemory, AreWrittenAsATableWhenTheyAreFilled) {
  const Table table({{"name", Texts{"a", "b", "c", "d"}},
                     {"x", Numbers{1.0, kHole, 3.0, 4.5}},
                     {"z", Numbers{2.0, 4.0, 6.0, 9.0}}},
                    "t");
  FillRecipe recipe;
  recipe.id = "name";
  recipe.components = 1;
  const FillResult result = Fit(recipe, table);
  Notes notes;
  const std::string text = FilledText(table, result, "name", {}, &notes, nullptr);
  const Table filled(text, "t");
  EXPECT_THAT(filled.ColumnTexts(0), ElementsAre("a", "b", "c", "d"));
  EXPECT_NEAR(ReadNumbers(filled, 1)[1], 2.0, 0.1);  // x is half of z
  EXPECT_THAT(filled.ColumnTexts(2), ElementsAre("2", "4", "6", "9"));
}

TEST(ColumnsInMemory, AreDescribedWithoutLines) {
  const Table table({{"x", Numbers{1.0, kInfinity}}}, "t");
  const Description description = Describe(table);
  ASSERT_EQ(description.columns.size(), 1U);
  ASSERT_EQ(description.columns[0].firstWords.size(), 1U);
  EXPECT_EQ(description.columns[0].firstWords[0].text, "inf");
  EXPECT_EQ(description.columns[0].firstWords[0].line, 0U);
}

}  // namespace
}  // namespace kalmia::analysis
