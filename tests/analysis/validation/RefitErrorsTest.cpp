#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "TestTables.h"
#include "kalmia/analysis/validation/ComponentChoice.h"
#include "kalmia/analysis/validation/PLSValidation.h"

// Refits of real tables, with and without holes, beside left_out_errors.csv: the same refits in double precision, of
// which those of complete tables agree with scikit-learn. Its script says what each case is.

namespace kalmia::analysis {
namespace {

/// Of themselves: cells and components are stored in single precision, and rounds for several Y end earlier here.
constexpr double kTolerance = 1e-4;

bool IsHole(int row, int column) { return (7 * row * row + 13 * column + 5 * row * column) % 19 == 0; }

Table Example(const std::string& file) { return CsvAt(KALMIA_ANALYSIS_DATA_DIR "/../../../examples/data/" + file); }

/// A table of examples/data, some of whose cells are empty: `isHole` is asked with the row, the column's name and its
/// number among those of X (0 for others). Numbers count from 1.
template <class IsHoleOf>
Table ExampleWithHoles(const std::string& file, const std::vector<std::string>& yColumns, IsHoleOf isHole) {
  const Table table = Example(file);
  std::string text;
  for (int c = 0; c < table.Columns(); ++c) {
    text += (c > 0 ? "," : "") + table.ColumnNames()[static_cast<std::size_t>(c)];
  }
  for (int i = 1; i <= table.Rows(); ++i) {
    text += '\n';
    int k = 0;
    for (int c = 0; c < table.Columns(); ++c) {
      const std::string& name = table.ColumnNames()[static_cast<std::size_t>(c)];
      const bool isY = std::find(yColumns.begin(), yColumns.end(), name) != yColumns.end();
      const bool isX = c > 0 && name != "cultivar" && !isY;
      k += isX ? 1 : 0;
      if (c > 0) text += ',';
      if (!isHole(i, name, isX ? k : 0)) text += table.Cell(i - 1, c);
    }
  }
  return {text + '\n', file};
}

PLSRecipe RecipeOf(const std::vector<std::string>& y, int components) {
  PLSRecipe recipe;
  recipe.id = "sample";
  recipe.y = y;
  recipe.components = components;
  return recipe;
}

struct Expected {
  std::vector<double> press, q2;             ///< under 0, 1, ... components
  std::vector<std::vector<double>> rmsecv;  ///< the same, of each Y
  std::size_t chosen = 0;
};

Expected ExpectedOf(const std::string& wanted) {
  const Table table = CsvAt(KALMIA_ANALYSIS_DATA_DIR "/left_out_errors.csv");
  const auto number = [&](int row, int column) { return std::stod(std::string(table.Cell(row, column))); };
  Expected expected;
  for (int i = 0; i < table.Rows(); ++i) {
    if (table.Cell(i, 0) != wanted) continue;
    if (number(i, 1) + 1 > static_cast<double>(expected.press.size())) {
      expected.press.push_back(number(i, 3));
      expected.q2.push_back(number(i, 4));
      expected.rmsecv.emplace_back();
    }
    expected.rmsecv.back().push_back(number(i, 5));
    expected.chosen = static_cast<std::size_t>(number(i, 6));
  }
  return expected;
}

/// Expects the case's errors under all numbers of components, and the one that they choose. `recipe` has as many as the
/// case.
void ExpectErrorsOf(const std::string& wanted, const PLSRecipe& recipe, const Table& table) {
  SCOPED_TRACE(wanted);
  const Expected expected = ExpectedOf(wanted);
  ASSERT_FALSE(expected.press.empty());
  const PLSValidation validation = Validate(recipe, table);
  ASSERT_EQ(validation.errors.MostComponents() + 1, expected.press.size());
  for (std::size_t a = 0; a < expected.press.size(); ++a) {
    EXPECT_NEAR(validation.errors.press[a] / expected.press[a], 1.0, kTolerance) << a << " components";
    EXPECT_NEAR(validation.errors.q2[a], expected.q2[a], kTolerance * std::abs(expected.q2[a])) << a << " components";
    for (std::size_t j = 0; j < recipe.y.size(); ++j) {
      EXPECT_NEAR(validation.errors.rmsecv(a, j) / expected.rmsecv[a][j], 1.0, kTolerance)
          << a << " components, " << recipe.y[j];
    }
  }
  EXPECT_EQ(ChooseComponents(validation.errors.rowErrors, {}).chosen, expected.chosen);
}

TEST(RefitErrors, OfGasolineAreThoseOfRefitsInDoublePrecision) {
  PLSRecipe recipe = RecipeOf({"octane"}, 8);
  ExpectErrorsOf("gasoline", recipe, Example("gasoline.csv"));
  recipe.scaling = NCScale::ScalingCentre;
  ExpectErrorsOf("gasoline-centre", recipe, Example("gasoline.csv"));
}

TEST(RefitErrors, OfSixYColumnsAreThoseOfRefitsInDoublePrecision) {
  ExpectErrorsOf("oliveoil", RecipeOf({"yellow", "green", "brown", "glossy", "transp", "syrup"}, 5),
                 Example("oliveoil.csv"));
}

TEST(RefitErrors, OfAlcoholInWineAreThoseOfRefitsInDoublePrecision) {
  PLSRecipe recipe = RecipeOf({"alcohol"}, 8);
  recipe.exclude = {"cultivar"};
  ExpectErrorsOf("wine", recipe, Example("wine.csv"));
}

TEST(RefitErrors, OfATableWithHolesInXAndYAreThoseOfRefitsInDoublePrecision) {
  const Table table = ExampleWithHoles("gasoline.csv", {"octane"}, [](int row, const std::string& name, int x) {
    return x > 0 ? IsHole(row, x) : name == "octane" && row % 19 == 0;
  });
  ExpectErrorsOf("gasoline-holes", RecipeOf({"octane"}, 8), table);
}

TEST(RefitErrors, OfSeveralYColumnsWithHolesAreThoseOfRefitsInDoublePrecision) {
  const std::vector<std::string> y = {"alcohol", "hue", "proline"};
  const Table table = ExampleWithHoles("wine.csv", y, [&](int row, const std::string& name, int x) {
    if (x > 0) return IsHole(row, x);
    const auto place = std::find(y.begin(), y.end(), name);
    return place != y.end() && (row == 50 || (row + (place - y.begin()) + 1) % 17 == 0);
  });
  PLSRecipe recipe = RecipeOf(y, 5);
  recipe.exclude = {"cultivar"};
  ExpectErrorsOf("wine-holes", recipe, table);
}

}  // namespace
}  // namespace kalmia::analysis
