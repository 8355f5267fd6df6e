#include "kalmia/analysis/figure/internal/FigureParts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SvgTexts.h"
#include "kalmia/analysis/figure/FigureSvg.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/ClassFigures.h"

namespace kalmia::analysis {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST(FigureParts, OfManyClassesAreDrawnAsFarAsThereIsRoom) {
  constexpr int kClasses = 200;
  std::vector<std::string> names;
  std::vector<int> classOfRow;
  RealMatrix values(2 * kClasses, kClasses, -1.0);
  for (int k = 0; k < kClasses; ++k) {
    names.push_back("class " + std::to_string(k));
    for (const int row : {2 * k, 2 * k + 1}) {
      classOfRow.push_back(k);
      const int nearest = row % 7 == 0 ? (k + 1) % kClasses : k;
      values(static_cast<std::size_t>(row), static_cast<std::size_t>(nearest)) = 1.0;
    }
  }
  const ClassFigures figures = JudgeClasses(classOfRow, values);
  const Figure confusion = ConfusionFigure(figures, names, true, "PLS", {});
  EXPECT_LE(confusion.panels[0].marks[0].x.size(), 2U * kClasses);  // cells without a row are not there
  EXPECT_THAT(confusion.alt, HasSubstr("400 rows of 200 classes"));
  EXPECT_THAT(FaultsOf(FigureSvg(confusion)), IsEmpty());
  const Figure roc = RocFigure(classOfRow, values, figures, names, true, "PLS", {});
  EXPECT_THAT(FaultsOf(FigureSvg(roc)), IsEmpty());
  EXPECT_THAT(roc.notes, ::testing::ElementsAre("the first 8 of 200 classes"));
}

TEST(FigureParts, RefuseAxesThatAModelDoesNotHave) {
  FigureRecipe recipe;
  EXPECT_EQ(AxesOf(recipe, 1).y, std::nullopt);
  EXPECT_EQ(AxesOf(recipe, 2).y, std::optional<std::size_t>(1));
  recipe.axes = std::make_pair(3, 1);
  EXPECT_EQ(AxesOf(recipe, 3).x, 2U);
  EXPECT_THROW(AxesOf(recipe, 2), Failure);
  recipe.axes = std::make_pair(1, 1);
  EXPECT_THROW(AxesOf(recipe, 2), Failure);
}

}  // namespace
}  // namespace kalmia::analysis
