#include "kalmia/analysis/validation/Comparison.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "FailureOf.h"
#include "TestTables.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/OPLSValidation.h"
#include "kalmia/analysis/validation/PLSValidation.h"
#include "kalmia/analysis/validation/PairedTest.h"
#include "testing/RecordingProgress.h"
#include "validation/PlainPls.h"

namespace kalmia::analysis {
namespace {

using ::testing::HasSubstr;
using ::testing::Optional;
using ::testing::StartsWith;

Table Gasoline() { return CsvAt((std::filesystem::path(PathOfWine()).parent_path() / "gasoline.csv").string()); }

PLSRecipe Octane(NCScale::Scaling scaling = NCScale::ScalingUnitVariance, std::optional<int> components = {}) {
  PLSRecipe recipe;
  recipe.id = "sample";
  recipe.y = {"octane"};
  recipe.scaling = scaling;
  recipe.components = components;
  return recipe;
}

OPLSRecipe OctaneByOPLS(int orthogonal) {
  OPLSRecipe recipe;
  recipe.id = "sample";
  recipe.y = {"octane"};
  recipe.components = orthogonal;
  return recipe;
}

std::vector<double> ErrorsOf(const RefitValidation& validation) {
  std::vector<double> errors;
  for (std::size_t i = 0; i < validation.errors.rowErrors.rows; ++i) {
    errors.push_back(validation.errors.rowErrors(i, validation.model));
  }
  return errors;
}

TEST(Comparison, HasTheFiguresOfEachModelsOwnValidation) {
  const Table gasoline = Gasoline();
  const Comparison comparison = Compare({{"uv", Octane()}, {"centre", Octane(NCScale::ScalingCentre)},
                                         {"one", Octane(NCScale::ScalingCentre, 1)}, {"opls", OctaneByOPLS(2)}},
                                        gasoline);
  const PLSValidation uv = Validate(Octane(), gasoline), centre = Validate(Octane(NCScale::ScalingCentre), gasoline);
  const PLSValidation one = Validate(Octane(NCScale::ScalingCentre, 1), gasoline);
  const OPLSValidation opls = Validate(OctaneByOPLS(2), gasoline);
  const std::vector<RefitValidation> own = {uv, centre, one, opls};
  ASSERT_EQ(comparison.models.size(), own.size());
  EXPECT_EQ(comparison.rows, 60U);
  for (std::size_t m = 0; m < own.size(); ++m) {
    SCOPED_TRACE(comparison.models[m].name);
    EXPECT_EQ(comparison.models[m].components, own[m].components);
    // Over all rows, summed in another order.
    EXPECT_NEAR(comparison.models[m].q2, own[m].errors.q2[own[m].model], 1e-12);
    EXPECT_NEAR(comparison.models[m].rmsecv.front(), own[m].errors.rmsecv(own[m].model, 0), 1e-12);
    for (std::size_t other = 0; other < m; ++other) {
      EXPECT_EQ(comparison.p(m, other), ComparePaired(ErrorsOf(own[m]), ErrorsOf(own[other])).p);
      EXPECT_EQ(comparison.p(other, m), comparison.p(m, other));
    }
    EXPECT_EQ(comparison.p(m, m), 1.0);
  }
  EXPECT_EQ(comparison.best, 0U);  // 0.2165 beside 0.2450 with 4 components and more
  EXPECT_EQ(comparison.models[3].orthogonal, 2);
  EXPECT_TRUE(comparison.models[0].isChosen);
  EXPECT_FALSE(comparison.models[2].isChosen);
  EXPECT_EQ(comparison.p(2, 0), 0.001);  // one component is far behind
  EXPECT_GT(comparison.p(1, 0), 0.05);
}

TEST(Comparison, FindsNoDifferenceBetweenAModelAndItself) {
  const Comparison comparison = Compare({{"a", Octane()}, {"b", Octane()}}, Gasoline());
  EXPECT_EQ(comparison.p(0, 1), 1.0);
  EXPECT_EQ(comparison.best, 0U);
}

TEST(Comparison, CountsRowsThatAllModelsPredict) {
  const Table table(WithHoles(LinearTable(30, 6, 4), 11), "t.csv");
  PLSRecipe few, many;
  few.id = many.id = "name";
  few.y = many.y = {"y"};
  few.components = 1;
  many.components = 6;  // rows with holes can have five
  const Comparison comparison = Compare({{"few", few}, {"many", many}}, table);
  const PLSValidation ofFew = Validate(few, table), ofMany = Validate(many, table);
  EXPECT_EQ(ofFew.errors.unpredictedRows, 0U);
  EXPECT_EQ(comparison.rows, 30U - ofMany.errors.unpredictedRows);
  EXPECT_LT(comparison.rows, 30U);
  EXPECT_NE(comparison.models[0].rmsecv.front(), ofFew.errors.rmsecv(1, 0));
  EXPECT_THAT(comparison.notes.Lines().front(), StartsWith("many: not predicted while left out"));
}

TEST(Comparison, TakesGroupsForItsUnitsUnderAColumnOfGroups) {
  std::string text = "g,x1,x2,y\n";
  for (int i = 0; i < 24; ++i) {
    text += std::to_string(i / 4) + "," + std::to_string(i * i % 7) + "," + std::to_string(i * 5 % 11) + "," +
            std::to_string(i * i % 7 + i % 3) + "\n";
  }
  PLSRecipe one;
  one.y = {"y"};
  one.x = {"x1", "x2"};
  one.groupColumn = "g";
  one.components = 1;
  PLSRecipe none = one;
  none.components = 0;
  const Table table(text, "t.csv");
  const Comparison comparison = Compare({{"one", one}, {"none", none}}, table);
  const PLSValidation ofOne = Validate(one, table), ofNone = Validate(none, table);
  EXPECT_EQ(comparison.p(0, 1),
            ComparePaired(ErrorsOf(ofOne), ErrorsOf(ofNone), &ofOne.folds.groupOfRow.front()).p);
}

TEST(Comparison, RefusesWhatCannotBeCompared) {
  const Table table(LinearTable(20, 4, 1), "t.csv");
  PLSRecipe recipe;
  recipe.id = "name";
  recipe.y = {"y"};
  PLSRecipe ofX = recipe, ofMoreGroups = recipe, ofMany = recipe;
  ofX.y = {"x1"};
  ofMoreGroups.groups = 5;
  ofMany.components = 50;
  EXPECT_EQ(FailureOf<BadRequest>([&] { Compare({{"a", recipe}}, table); }),
            "a comparison needs two models at least");
  EXPECT_EQ(FailureOf<BadRequest>([&] { Compare({{"a", recipe}, {"a", recipe}}, table); }),
            "two of the models are called 'a'");
  EXPECT_EQ(FailureOf<BadRequest>([&] { Compare({{"a", recipe}, {"b", ofX}}, table); }),
            "'b' models another Y than 'a'");
  EXPECT_EQ(FailureOf<BadRequest>([&] { Compare({{"a", recipe}, {"b", ofMoreGroups}}, table); }),
            "'b' has other groups than 'a'");
  PLSRecipe unknown = recipe;
  unknown.x = {"nothing"};
  EXPECT_THAT(FailureOf<BadData>([&] { Compare({{"a", recipe}, {"b", unknown}}, table); }),
              Optional(StartsWith("'b': ")));
  const Table holed("name,x1,x2,y\na,1,,1\nb,2,1,2\nc,4,2,5\nd,,5,3\ne,3,4,2\nf,5,1,7\n", "t.csv");
  PLSRecipe first = recipe, second = recipe;
  first.x = {"x1"};
  second.x = {"x2"};
  EXPECT_THAT(FailureOf<BadData>([&] { Compare({{"a", recipe}, {"b", first}}, holed); }),
              Optional(HasSubstr("'b' sees other rows of the table than 'a': 5 beside 6")));
  EXPECT_THAT(FailureOf<BadData>([&] { Compare({{"a", first}, {"b", second}}, holed); }),
              Optional(HasSubstr("sees other rows of the table than 'a': 5 beside 5")));
}

TEST(Comparison, StopsWhereTheBarWantsTo) {
  const Table table(LinearTable(20, 4, 1), "t.csv");
  PLSRecipe recipe;
  recipe.id = "name";
  recipe.y = {"y"};
  PLSRecipe one = recipe;
  one.components = 1;
  ProgressLog whole;
  const auto bar = RecordingBar(&whole);
  Compare({{"a", recipe}, {"b", one}}, table, {}, bar.get());
  for (const double share : {0.1, 0.5, 0.9}) {
    ProgressLog log;
    log.stopAt = static_cast<int>(share * static_cast<double>(whole.calls.size()));
    const auto stopping = RecordingBar(&log);
    EXPECT_THROW(Compare({{"a", recipe}, {"b", one}}, table, {}, stopping.get()), Stopped);
  }
}

}  // namespace
}  // namespace kalmia::analysis
