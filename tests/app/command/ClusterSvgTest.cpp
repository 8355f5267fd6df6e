// The drawing of kalmia cluster: everything in its place, labels apart from each other.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "CommandRun.h"
#include "TestTables.h"

namespace {

using ::testing::HasSubstr;

/// The elements of a name, each as its text up to the end of its tag and what stands in it.
std::vector<std::string> ElementsOf(const std::string& svg, const std::string& name) {
  std::vector<std::string> elements;
  for (std::size_t at = svg.find("<" + name + " "); at != std::string::npos; at = svg.find("<" + name + " ", at + 1)) {
    elements.push_back(svg.substr(at, svg.find('\n', at) - at));
  }
  return elements;
}

double Attribute(const std::string& element, const std::string& name) {
  const std::string key = " " + name + "=\"";
  const std::size_t at = element.find(key);
  return at == std::string::npos ? NAN : std::stod(element.substr(at + key.size()));
}

bool Has(const std::string& element, const std::string& text) { return element.find(text) != std::string::npos; }

/// Where an upright text begins, and the size of its letters.
struct Upright {
  double x, y, size;
};

std::vector<Upright> LabelsOf(const std::string& svg) {
  std::vector<Upright> labels;
  for (const std::string& text : ElementsOf(svg, "text")) {
    const std::size_t at = text.find("translate(");
    if (at == std::string::npos || Has(text, "axis")) continue;
    std::size_t used = 0;
    const double x = std::stod(text.substr(at + 10), &used);
    const double y = std::stod(text.substr(at + 10 + used));
    labels.push_back({x, y, Has(text, "small") ? 7.0 : 11.0});
  }
  std::sort(labels.begin(), labels.end(), [](const Upright& a, const Upright& b) { return a.x < b.x; });
  return labels;
}

std::string Drawing(const ScratchFolder& folder, const std::string& table, std::vector<std::string> more) {
  more.insert(more.begin(), {"cluster", "-", "--scale", "none", "--svg", folder.Path("t.svg")});
  const CommandResult run = RunKalmia(more, table);
  EXPECT_EQ(run.exitCode, 0) << run.error;
  return ReadWholeFile(folder.Path("t.svg"));
}

TEST(ClusterSvg, DrawsABarForEachMergeAndAStemForEachNodeWithinThePicture) {
  const ScratchFolder folder;
  for (const int rows : {2, 3, 40, 84, 200, 500}) {
    const std::string svg = Drawing(folder, UnrelatedTable(rows, 3, 1, 5), {"--method", "single"});
    int lines = 0;
    for (const std::string& line : ElementsOf(svg, "line")) {
      lines += Has(line, "class=\"branch\"") ? 1 : 0;
      for (const char* x : {"x1", "x2"}) {
        EXPECT_GE(Attribute(line, x), 0);
        EXPECT_LE(Attribute(line, x), Attribute(svg, "width"));
      }
      for (const char* y : {"y1", "y2"}) {
        EXPECT_GE(Attribute(line, y), 46);
        EXPECT_LE(Attribute(line, y), Attribute(svg, "height"));
      }
    }
    EXPECT_EQ(lines, 3 * (rows - 1));
  }
}

TEST(ClusterSvg, NeverPrintsOneLabelOverAnother) {
  const ScratchFolder folder;
  for (const int rows : {2, 10, 83, 84, 125, 200, 201, 1000}) {
    const std::vector<Upright> labels =
        LabelsOf(Drawing(folder, UnrelatedTable(rows, 3, 1, 5), {"--method", "single", "--cut", "2"}));
    if (rows <= 200) {
      EXPECT_EQ(labels.size(), static_cast<std::size_t>(rows));
    }
    EXPECT_GE(labels.size(), static_cast<std::size_t>(std::min(rows, 100)));
    for (std::size_t k = 1; k < labels.size(); ++k) EXPECT_GE(labels[k].x - labels[k - 1].x, labels[k].size);
  }
}

TEST(ClusterSvg, MakesRoomForLongNamesAndCutsVeryLongOnes) {
  const ScratchFolder folder;
  const std::string longName(100, 'w');
  const std::string svg = Drawing(folder, "id,x\nshort,1\n" + longName + ",2\nabcdefghijklmnopqrstuvwx,4\n",
                                  {"--method", "ward", "--id", "id"});
  EXPECT_THAT(svg, HasSubstr(">short</text>"));
  EXPECT_THAT(svg, HasSubstr(">abcdefghijklmnopqrstuvwx</text>"));
  EXPECT_THAT(svg, HasSubstr(">" + std::string(23, 'w') + "\xE2\x80\xA6</text>"));
  for (const Upright& label : LabelsOf(svg)) {
    EXPECT_LE(label.y + 24 * 6.4, Attribute(svg, "height"));  // so much room has each letter
    for (const std::string& line : ElementsOf(svg, "line")) {
      if (!Has(line, "class=\"branch\"")) continue;
      EXPECT_LT(Attribute(line, "y1"), label.y);
    }
  }
}

TEST(ClusterSvg, CutsNamesBetweenLettersAndEscapesThem) {
  const ScratchFolder folder;
  std::string name;
  for (int i = 0; i < 40; ++i) name += "\xC3\xA9";
  const std::string svg =
      Drawing(folder, "id,x\n" + name + ",1\n<&>,2\n", {"--method", "ward", "--id", "id"});
  EXPECT_THAT(svg, HasSubstr(">" + name.substr(0, 46) + "\xE2\x80\xA6</text>"));
  EXPECT_THAT(svg, HasSubstr(">&lt;&amp;&gt;</text>"));
}

TEST(ClusterSvg, HasAnAxisOfHeightsOnWhichTheMergesStandAtTheirOwn) {
  const ScratchFolder folder;
  const std::string svg = Drawing(folder, "x\n0\n1\n3\n7\n", {"--method", "single"});
  EXPECT_THAT(svg, HasSubstr(">height</text>"));
  // Of 0.0, 0.5, ... 4.0 those at 1, 2 and 4 are on a level with the bars of the merges.
  std::vector<double> ticks, bars;
  for (const std::string& line : ElementsOf(svg, "line")) {
    if (Has(line, "class=\"grid\"")) ticks.push_back(Attribute(line, "y1"));
    if (Has(line, "class=\"branch\"") && Attribute(line, "y1") == Attribute(line, "y2")) {
      bars.push_back(Attribute(line, "y1"));
    }
  }
  ASSERT_EQ(ticks.size(), 9U);
  std::sort(ticks.rbegin(), ticks.rend());
  std::sort(bars.rbegin(), bars.rend());
  ASSERT_EQ(bars.size(), 3U);
  // Both are rounded to a hundredth, one of them to single precision before.
  EXPECT_NEAR(bars[0], ticks[2], 0.02);
  EXPECT_NEAR(bars[1], ticks[4], 0.02);
  EXPECT_NEAR(bars[2], ticks[8], 0.02);
}

TEST(ClusterSvg, ColoursEachClusterAndNamesItBelow) {
  const ScratchFolder folder;
  const std::string svg = Drawing(folder, "x\n0\n1\n3\n7\n", {"--method", "single", "--cut", "2"});
  int first = 0, second = 0, above = 0;
  for (const std::string& line : ElementsOf(svg, "line")) {
    first += Has(line, "class=\"k0\"") ? 1 : 0;
    second += Has(line, "class=\"k1\"") ? 1 : 0;
    above += Has(line, "class=\"branch\"") ? 1 : 0;
  }
  EXPECT_EQ(first, 1);       // on the left, the stem of the fourth row
  EXPECT_EQ(second, 2 + 5);  // two bars, the stems of three rows and two merges
  EXPECT_EQ(above, 1);       // the bar of the last merge
  int strips = 0;
  for (const std::string& strip : ElementsOf(svg, "rect")) strips += Has(strip, "class=\"k") ? 1 : 0;
  EXPECT_EQ(strips, 2);
  EXPECT_THAT(svg, HasSubstr(">cluster 1</text>"));
  EXPECT_THAT(svg, HasSubstr(">cluster 2</text>"));
}

TEST(ClusterSvg, GivesNeighboursDifferentColours) {
  const ScratchFolder folder;
  const std::string svg = Drawing(folder, UnrelatedTable(60, 3, 1, 5), {"--method", "ward", "--cut", "40"});
  std::string before;
  int strips = 0;
  for (const std::string& strip : ElementsOf(svg, "rect")) {
    const std::size_t at = strip.find("class=\"k");
    if (at == std::string::npos) continue;
    EXPECT_NE(strip.substr(at), before);
    before = strip.substr(at);
    ++strips;
  }
  EXPECT_EQ(strips, 40);
}

TEST(ClusterSvg, DrawsTheCutBetweenTheMergesThatItParts) {
  const ScratchFolder folder;
  const std::string table = "x\n0\n1\n3\n7\n";  // merges at 1, 2 and 4, 420 pixels less the labels high
  const auto level = [&](const std::vector<std::string>& cut) {
    std::vector<std::string> arguments = {"--method", "single"};
    arguments.insert(arguments.end(), cut.begin(), cut.end());
    const std::string svg = Drawing(folder, table, arguments);
    double base = 0, y = NAN;
    for (const std::string& line : ElementsOf(svg, "line")) {
      if (Has(line, "class=\"grid\"")) base = std::max(base, Attribute(line, "y1"));
      if (Has(line, "class=\"cut\"")) y = Attribute(line, "y1");
    }
    return (base - y) / (base - 46) * 4;
  };
  EXPECT_NEAR(level({"--cut", "2"}), 3.0, 1e-3);  // lines are rounded to a hundredth of some 400 pixels
  EXPECT_NEAR(level({"--cut", "3"}), 1.5, 1e-3);
  EXPECT_NEAR(level({"--cut", "4"}), 0.5, 1e-3);
  EXPECT_NEAR(level({"--height", "2.2"}), 2.2, 1e-3);
  EXPECT_TRUE(std::isnan(level({"--cut", "1"})));  // nothing is undone
}

TEST(ClusterSvg, DrawsNoCutBetweenEqualHeights) {
  const ScratchFolder folder;
  const std::string svg = Drawing(folder, "x\n0\n1\n2\n", {"--method", "single", "--cut", "2"});
  for (const std::string& line : ElementsOf(svg, "line")) EXPECT_FALSE(Has(line, "class=\"cut\""));
}

TEST(ClusterSvg, GivesATreeWhoseHeightsFallTheRoomOfItsHighestMerge) {
  const ScratchFolder folder;
  const std::string table = WithHoles(UnrelatedTable(5, 3, 1, 115), 7);  // its root is lower than a merge below it
  const nlohmann::json json =
      RunKalmia({"cluster", "-", "--method", "ward", "--scale", "none", "--json"}, table).Json();
  std::vector<double> heights;
  for (const nlohmann::json& merge : json["merges"]) heights.push_back(merge["height"]);
  ASSERT_LT(heights.back(), *std::max_element(heights.begin(), heights.end()));
  double highest = INFINITY;
  for (const std::string& line : ElementsOf(Drawing(folder, table, {"--method", "ward"}), "line")) {
    if (Has(line, "branch")) highest = std::min(highest, Attribute(line, "y1"));
  }
  EXPECT_NEAR(highest, 46, 0.01);  // lines are rounded to a hundredth
}

}  // namespace
