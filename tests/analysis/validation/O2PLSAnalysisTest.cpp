#include "kalmia/analysis/validation/O2PLSAnalysis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "TestTables.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {
namespace {

O2PLSRecipe NamedBlocks(std::optional<O2PLSNumbers> numbers = std::nullopt) {
  O2PLSRecipe recipe;
  recipe.id = "name";
  recipe.numbers = numbers;
  return recipe;
}

ValidationRecipe ByThe(ValidationMethod method) {
  ValidationRecipe validation;
  validation.method = method;
  return validation;
}

class O2PLSAnalysisOfBlocks : public ::testing::Test {
 protected:
  TwoBlocks blocks_ = SharedBlocks(40, 7);
  Table x_{blocks_.x, "x.csv"};
  Table y_{blocks_.y, "y.csv"};
};

TEST_F(O2PLSAnalysisOfBlocks, JudgesTheNumbersThatTheFitFound) {
  const O2PLSAnalysis analysis = Analyse(NamedBlocks(), x_, y_);
  ASSERT_TRUE(analysis.validation);
  const O2PLSResult fit = Fit(NamedBlocks(), x_, y_);
  EXPECT_EQ(analysis.fit.model.Joint(), fit.model.Joint());
  EXPECT_EQ(analysis.validation->numbers.joint, fit.model.Joint());
  EXPECT_EQ(analysis.validation->numbers.xUnique, fit.model.XUnique());
  EXPECT_TRUE(analysis.fit.components.front().IsJudged());  // by the search
  EXPECT_EQ(analysis.validation->y.press, Validate(NamedBlocks(), x_, y_).y.press);
}

TEST_F(O2PLSAnalysisOfBlocks, DoesNotJudgeGivenNumbersByComponent) {
  for (const ValidationMethod method : {ValidationMethod::Refit, ValidationMethod::None}) {
    const O2PLSAnalysis analysis = Analyse(NamedBlocks(O2PLSNumbers{1, 1, 1}), x_, y_, ByThe(method));
    ASSERT_EQ(analysis.fit.components.size(), 3U);
    for (const O2PLSComponentRecord& record : analysis.fit.components) {
      EXPECT_FALSE(record.IsJudged());
      EXPECT_TRUE(std::isnan(record.q2));
      EXPECT_EQ(record.verdict, SignificanceE::NA);
    }
    EXPECT_EQ(analysis.validation.has_value(), method == ValidationMethod::Refit);
  }
  const O2PLSAnalysis judged =
      Analyse(NamedBlocks(O2PLSNumbers{1, 1, 1}), x_, y_, ByThe(ValidationMethod::Component));
  EXPECT_TRUE(judged.fit.components.front().IsJudged());
  EXPECT_THROW(Analyse(NamedBlocks(), x_, y_, ByThe(ValidationMethod::None)), BadRequest);
}

TEST_F(O2PLSAnalysisOfBlocks, JudgesTheMeanWhereNothingIsInCommon) {
  O2PLSRecipe recipe;
  recipe.x = {"x1..x5"};
  recipe.y = {"y1..y4"};
  const O2PLSAnalysis analysis = Analyse(recipe, Table(UnrelatedTable(30, 5, 1, 3), "x.csv"),
                                         Table(UnrelatedTable(30, 1, 4, 9), "y.csv"));
  EXPECT_FALSE(analysis.fit.AnyKept());
  ASSERT_TRUE(analysis.validation);
  EXPECT_EQ(analysis.validation->y.press.size(), 1U);
}

}  // namespace
}  // namespace kalmia::analysis
