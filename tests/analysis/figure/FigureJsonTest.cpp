#include "kalmia/analysis/figure/FigureJson.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "figure/FigureExamples.h"

namespace kalmia::analysis {
namespace {

TEST(FigureJson, HasSharedNamesOnceAndOwnOnesInTheirPlace) {
  const nlohmann::json json = nlohmann::json::parse(FigureJson({FigureOfAllMarks(), FigureOfAllMarks()}));
  EXPECT_EQ(json["format"], "kalmia-figure");
  EXPECT_EQ(json["names"], nlohmann::json({{"rows", {"a", "b", "c", "d"}}}));
  ASSERT_EQ(json["figures"].size(), 2U);
  const nlohmann::json& figure = json["figures"][1];
  EXPECT_EQ(figure["marks"][0]["names"], "rows");
  ASSERT_EQ(figure["below"].size(), 1U);
  const nlohmann::json& below = figure["below"][0];
  EXPECT_EQ(below["x"]["categories"], "rows");
  EXPECT_EQ(below["marks"].back()["names"], nlohmann::json({"17"}));
  EXPECT_EQ(below["marks"][0]["class"], nlohmann::json({0, 1, 2, -1}));
}

TEST(FigureJson, HasNumbersThatReadBackAndNullForGaps) {
  Figure figure = FigureOfAllMarks();
  const std::vector<double> numbers = {0.1, 1.0 / 3.0, 5e-324, 1.7976931348623157e308, -0.0};
  figure.panels.resize(1);
  figure.panels[0].marks.resize(1);
  FigureMark& mark = figure.panels[0].marks[0];
  mark.x = mark.y = numbers;
  mark.y[1] = kNotANumber;
  const nlohmann::json json = nlohmann::json::parse(FigureJson({figure}));
  EXPECT_EQ(json["figures"][0]["marks"][0]["x"].get<std::vector<double>>(), numbers);
  EXPECT_TRUE(json["figures"][0]["marks"][0]["y"][1].is_null());
  EXPECT_NE(FigureJson({figure}).find(" 0.1,"), std::string::npos);
}

}  // namespace
}  // namespace kalmia::analysis
