// Failures tell where in a table something is wrong: row, column and word, as far as they are at hand.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "TestTables.h"
#include "kalmia/analysis/fit/FilterResult.h"
#include "kalmia/analysis/fit/O2PLSResult.h"
#include "kalmia/analysis/fit/OPLSResult.h"
#include "kalmia/analysis/fit/PCAResult.h"
#include "kalmia/analysis/fit/PLSResult.h"
#include "kalmia/analysis/fit/PredictResult.h"
#include "kalmia/analysis/steps/PreprocessedTable.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/CountTable.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/table/TableRows.h"
#include "kalmia/analysis/table/internal/MeasuredColumn.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {
namespace {

constexpr int kNoRow = 0;

/// A way to go wrong, and where: rows from 1, kNoRow without one.
struct Wrong {
  const char* what;
  std::function<void()> call;
  int row;
  const char* column;
  const char* word;
};

void ExpectPlaces(const std::vector<Wrong>& wrongs) {
  for (const Wrong& wrong : wrongs) {
    SCOPED_TRACE(wrong.what);
    try {
      wrong.call();
      ADD_FAILURE() << "nothing was thrown";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Place().row.value_or(kNoRow), wrong.row) << failure.what();
      EXPECT_EQ(failure.Place().column, wrong.column) << failure.what();
      EXPECT_EQ(failure.Place().word, wrong.word) << failure.what();
    }
  }
}

Table Small(const std::string& text) { return Table(text, "t.csv"); }

TEST(FailurePlace, IsToldByTables) {
  const Table table = Small("name,a,b\np,1,2\np,3,x\n");
  const std::vector<std::string> names = {"p", "p"};
  Notes notes;
  ExpectPlaces({
      {"a word among numbers", [&] { ReadNumbers(table, 2); }, 2, "b", "x"},
      {"a column that is not there", [&] { RequireColumn(table, "z"); }, kNoRow, "", "z"},
      {"a column named twice", [&] { RequireColumns(table, {"a", "a"}); }, kNoRow, "a", ""},
      {"a range that runs backwards", [&] { RequireColumns(table, {"b..a"}); }, kNoRow, "", "b..a"},
      {"a range without an end", [&] { RequireColumns(table, {"a.."}); }, kNoRow, "", "a.."},
      {"a name of two rows", [&] { RequireRows(table, names, {"p"}); }, 1, "", "p"},
      {"a row that is not there", [&] { RequireRows(table, names, {"q"}); }, kNoRow, "", "q"},
      {"a row with too few fields", [] { Small("a,b\n1,2\n3\n"); }, 2, "", ""},
      {"quotation marks that do not pair up", [] { Small("a,b\n1,2\n3,\"4\n"); }, 2, "", ""},
      {"two columns of one name", [] { Small("a,a\n1,2\n"); }, kNoRow, "a", ""},
      {"columns of different lengths",
       [] { Table({{"a", std::vector<double>{1.0, 2.0}}, {"b", std::vector<double>{1.0}}}, "t"); }, kNoRow, "b", ""},
      {"a negative count", [&] { ReadCounts(Small("a,b\n1,2\n3,-4\n"), &notes, nullptr); }, 2, "b", "-4"},
      {"measurements of text", [&] { ReadMeasurements(Small("a,b\n1,u\n3,v\n"), "b", &notes); }, kNoRow, "b", ""},
  });
}

/// What the steps make of the columns of numbers.
void Preprocess(const std::string& steps, const std::string& text) {
  PreprocessRecipe recipe;
  recipe.steps = {"the steps", ParseSteps(steps, "the steps"), {}};
  Preprocess(recipe, Small(text));
}

TEST(FailurePlace, IsToldBySteps) {
  NCDataMatrix<float> equal(3, 2, 1.0F);
  ExpectPlaces({
      {"a step that is none", [] { ParseSteps("snv, nosuch:1", "s"); }, kNoRow, "", "nosuch:1"},
      {"a restoring step at the wrong place", [] { ParseSteps("wavelet-restore", "s"); }, kNoRow, "", "wavelet-restore"},
      {"a cell without a logarithm", [] { Preprocess("log", "a,b\n1,2\n3,-4\n"); }, 2, "b", ""},
      {"a cell that grows too large", [] { Preprocess("linear:1e30", "a,b\n1,2\n3,1e20\n"); }, 2, "b", ""},
      {"a row without variance", [] { Preprocess("snv", "a,b\n1,2\n3,3\n"); }, 2, "", ""},
      {"a column that cannot be scaled", [&] { ScaleColumns(NCScale::ScalingUnitVariance, {"a", "b"}, &equal); },
       kNoRow, "a", ""},
  });
}

template <class Recipe>
Recipe RecipeOfY(const std::string& y, const std::string& groups = "") {
  Recipe recipe;
  recipe.y = {y};
  recipe.components = 1;
  recipe.groupColumn = groups;
  return recipe;
}

TEST(FailurePlace, IsToldByFits) {
  const auto fit = [](const std::string& y, const std::string& groups, const std::string& text) {
    return [=] { Fit(RecipeOfY<PLSRecipe>(y, groups), Small(text)); };
  };
  const auto pair = [](const std::string& x, const std::string& y) {
    O2PLSRecipe recipe;
    recipe.id = "name";
    return [=] { Fit(recipe, Small(x), Small(y)); };
  };
  const std::string whole = "name,u,v\np,1,4\nq,2,5\nr,4,1\n";
  PLSRecipe stranger;
  stranger.classes = "y";
  stranger.classNames = {"k", "l"};
  FilterRecipe filter;
  filter.y = {"y"};
  PCARecipe narrow;
  narrow.x = {"a"};
  ExpectPlaces({
      {"a Y of one value", fit("y", "", "a,y\n1,3\n2,3\n4,3\n"), kNoRow, "y", ""},
      {"a Y without values", fit("y", "", "a,y\n1,\n2,\n4,\n"), kNoRow, "y", ""},
      {"a filter's Y of text", [&] { Fit(filter, Small("a,y\n1,p\n2,q\n")); }, kNoRow, "y", ""},
      {"a row without a group", fit("y", "g", "a,y,g\n1,3,k\n2,5,\n4,6,l\n"), 2, "g", ""},
      {"rows of one group", fit("y", "g", "a,y,g\n1,3,k\n2,5,k\n4,6,k\n"), kNoRow, "g", ""},
      {"a class that the model does not know", [&] { Fit(stranger, Small("a,y\n1,k\n2,k\n4,m\n5,l\n6,l\n")); }, 3, "y",
       "m"},
      {"texts that are no classes", fit("y", "", "a,y\n1,k\n2,k\n4,k\n"), kNoRow, "y", ""},
      {"one column for a PCA", [&] { Fit(narrow, Small("a,b\n1,2\n2,5\n4,4\n")); }, kNoRow, "a", ""},
      {"a round without variance of Y",
       [] { Fit(RecipeOfY<OPLSRecipe>("y", "g"), Small("a,b,y,g\n1,2,3,k\n2,5,3,k\n4,1,9,l\n5,2,9,l\n")); }, kNoRow, "y",
       ""},
      {"a row without an id", pair("name,a\np,1\n,2\nr,5\n", whole), 2, "name", ""},
      {"an id that comes twice", pair("name,a\np,1\nq,2\nq,5\n", whole), 3, "name", "q"},
      {"ids without one in common", pair("name,a\nk,1\nl,2\nm,5\n", whole), kNoRow, "name", ""},
      {"a hole in a block", pair("name,a,b\np,1,2\nq,2,\nr,5,3\n", whole), 2, "b", ""},
  });
}

TEST(FailurePlace, IsToldByPredictions) {
  const Table trained(LinearTable(20, 3, 1), "t.csv");
  PLSRecipe recipe = RecipeOfY<PLSRecipe>("y");
  recipe.id = "name";
  const PLSResult plain = Fit(recipe, trained);
  recipe.steps = GivenSteps{"the steps", ParseSteps("exp", "the steps"), {}};
  const PLSResult stepped = Fit(recipe, trained);
  const Table words = Small("name,x1,x2,x3\np,1,2,3\nq,1,2,k\n"), large = Small("name,x1,x2,x3\np,1,2,3\nq,1,999,3\n");
  ExpectPlaces({
      {"a word among numbers", [&] { Predict(plain.model, words); }, 2, "x3", "k"},
      {"an id that is not there", [&] { Predict(plain.model, words, "id"); }, kNoRow, "", "id"},
      {"a cell that the steps do not take", [&] { Predict(stepped.model, large); }, 2, "x2", ""},
  });
}

}  // namespace
}  // namespace kalmia::analysis
