#include "kalmia/analysis/figure/FigureSvg.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <random>

#include "SvgTexts.h"
#include "figure/FigureExamples.h"

namespace kalmia::analysis {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using Type = FigureMark::Type;

std::size_t CountOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

std::vector<std::string> WordsOf(const std::string& svg) {
  std::vector<std::string> words;
  for (const SvgText& text : TextsOf(svg)) words.push_back(text.text);
  return words;
}

/// Points at random places, all with names that are to stand beside them.
Figure Cloud(int points, const std::string& name, unsigned seed) {
  std::mt19937 random(seed);
  Figure figure;
  figure.name = "cloud";
  figure.title = "A cloud";
  FigurePanel panel;
  panel.x.label = "t1";
  panel.y.label = "t2";
  FigureMark mark;
  std::vector<std::string> names;
  for (int i = 0; i < points; ++i) {
    const double x = static_cast<double>(random()), y = static_cast<double>(random());
    mark.x.push_back(x / 4e9);
    mark.y.push_back(y / 4e9);
    names.push_back(name + std::to_string(i));
  }
  mark.names = NamesUnder("rows", names);
  mark.labels = true;
  panel.marks.push_back(mark);
  figure.panels.push_back(panel);
  return figure;
}

TEST(SvgTexts, NoticesTextsThatOverlapOrReachOutAndWhatIsNoXml) {
  const std::string begin = "<svg width=\"100.00\" height=\"50.00\">", end = "</svg>\n";
  const auto text = [](double x, const std::string& what) {
    return "<text x=\"" + std::to_string(x) + "\" y=\"20\" class=\"label\" text-anchor=\"start\">" + what + "</text>";
  };
  EXPECT_THAT(FaultsOf(begin + text(10, "good") + text(60, "too") + end), IsEmpty());
  EXPECT_EQ(FaultsOf(begin + text(10, "good") + text(20, "bad") + end).size(), 1U);
  EXPECT_EQ(FaultsOf(begin + text(90, "wide") + end).size(), 1U);
  EXPECT_THAT(FaultsOf(begin + text(10, "good") + "<g>" + end), Contains("closes nothing: svg"));
  EXPECT_EQ(FaultsOf(begin + "<line x1=\"nan\"/>" + end).size(), 1U);
  EXPECT_EQ(FaultsOf(begin + "<text transform=\"translate(5.00 20.00) rotate(-90)\" class=\"label\" "
                             "text-anchor=\"start\">upright</text>" + end).size(),
            1U);
}

TEST(FigureSvg, DrawsEveryMarkWithTextsInsideAndApart) {
  const Figure figure = FigureOfAllMarks();
  const std::string svg = FigureSvg(figure);
  EXPECT_THAT(FaultsOf(svg), IsEmpty());
  for (const char* word : {"All marks & <looks>", "t1", "t2", "a", "d", "limit 95 %", "first", "line", "17",
                           "a note"}) {
    EXPECT_THAT(WordsOf(svg), Contains(word));
  }
  EXPECT_THAT(svg, HasSubstr("<desc>4 rows.</desc>"));
  for (const char* name : {"\"point\"", "\"signal\"", "\"second-point\"", "\"faint\"", "\"run\"", "\"limit\"",
                           "\"class-bar c1\"", "\"cell\"", "\"band\"", "\"centre\"", "\"plain\""}) {
    EXPECT_THAT(svg, HasSubstr(std::string("class=") + name));
  }
}

TEST(FigureSvg, HasTheSizeAskedFor) {
  for (const double width : {240.0, 500.0, 4000.0}) {
    const std::string svg = FigureSvg(FigureOfAllMarks(), {width, 700});
    EXPECT_THAT(svg, HasSubstr("width=\"" + std::to_string(static_cast<int>(width)) + ".00\" height=\"700.00\""));
    EXPECT_THAT(FaultsOf(svg), IsEmpty());
  }
  EXPECT_THAT(FaultsOf(FigureSvg(FigureOfAllMarks(), {240, 240})), IsEmpty());
}

TEST(FigureSvg, PlacesNamesApartAndSaysHowManyHaveNoRoom) {
  const std::string few = FigureSvg(Cloud(12, "row ", 1));
  EXPECT_THAT(FaultsOf(few), IsEmpty());
  EXPECT_THAT(few, Not(HasSubstr("no room")));
  for (int i = 0; i < 12; ++i) EXPECT_THAT(WordsOf(few), Contains("row " + std::to_string(i)));
  const std::string many = FigureSvg(Cloud(900, "row ", 2));
  EXPECT_THAT(FaultsOf(many), IsEmpty());
  std::size_t shown = 0;
  for (const std::string& word : WordsOf(many)) shown += word.compare(0, 4, "row ") == 0 ? 1U : 0U;
  EXPECT_GT(shown, 20U);
  EXPECT_THAT(WordsOf(many), Contains(std::to_string(shown) + " of 900 names: there is no room for more"));
}

TEST(FigureSvg, NamesSelectedItemsFirst) {
  Figure figure = Cloud(900, "row ", 3);
  figure.panels[0].marks[0].selected = {450, 451, 452};
  const std::vector<std::string> words = WordsOf(FigureSvg(figure));
  for (const char* name : {"row 450", "row 451", "row 452"}) EXPECT_THAT(words, Contains(name));
}

TEST(FigureSvg, DrawsOneOfPointsOnOnePlaceAndSaysSo) {
  Figure figure = Cloud(2000, "", 4);
  FigureMark& mark = figure.panels[0].marks[0];
  mark.labels = false;
  for (std::size_t i = 0; i < 1900; ++i) mark.x[i] = mark.y[i] = 0.5;
  mark.x[7] = 2;
  const std::string svg = FigureSvg(figure);
  EXPECT_THAT(FaultsOf(svg), IsEmpty());
  EXPECT_EQ(CountOf(svg, "class=\"point\""), 102U);  // one for 1899, the far one, a hundred apart
  EXPECT_THAT(WordsOf(svg), Contains("102 of 2000 points: the others lie under them"));
}

TEST(FigureSvg, KeepsTheExtremesOfALongLine) {
  Figure figure = Cloud(0, "", 5);
  FigureMark& mark = figure.panels[0].marks[0];
  mark.type = Type::Line;
  for (int i = 0; i < 50000; ++i) {
    mark.x.push_back(i);
    mark.y.push_back(i == 33333 ? 9 : i == 44444 ? -9 : i % 2);
  }
  mark.names = nullptr;
  const std::string svg = FigureSvg(figure);
  EXPECT_LT(svg.size(), 40000U);
  const std::size_t begin = svg.find("points=\"") + 8;
  const std::string points = svg.substr(begin, svg.find('"', begin) - begin);
  double lowest = 1e9, highest = -1e9;
  for (std::size_t at = points.find(','); at != std::string::npos; at = points.find(',', at + 1)) {
    const double y = std::atof(points.c_str() + at + 1);
    lowest = std::min(lowest, y);
    highest = std::max(highest, y);
  }
  // The range has a margin of a twentieth on both sides of a panel of 350 pixels: 18 units are 350 / 1.1 pixels.
  EXPECT_NEAR(highest - lowest, 350 / 1.1, 0.02);
}

TEST(FigureSvg, TakesNamesOfAnyKindAndLength) {
  const std::string names[] = {std::string(10000, 'w'), "\xF0\x9F\xA7\xAA\xF0\x9F\x94\xA5 emoji ",
                               "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D \xD8\xB3\xD9\x84\xD8\xA7\xD9\x85 ", "<b>&\"'",
                               "line\nbreak\t\x01", "\xFF\xFE not UTF-8 "};
  for (const std::string& name : names) {
    Figure figure = Cloud(30, name, 6);
    figure.title = figure.alt = name;
    figure.notes = {name};
    figure.panels[0].x.label = figure.panels[0].y.label = name;
    FigureMark rule;
    rule.type = Type::Rule;
    rule.name = name;
    rule.y = {0.5};
    figure.panels[0].marks.push_back(rule);
    figure.panels.push_back(figure.panels[0]);
    figure.panels[1].x.kind = figure.panels[1].y.kind = FigureAxis::Kind::Category;
    figure.panels[1].x.categories = figure.panels[1].y.categories = NamesUnder("", {name, name, "x"});
    EXPECT_THAT(FaultsOf(FigureSvg(figure)), IsEmpty()) << name.substr(0, 20);
    EXPECT_THAT(FaultsOf(FigureSvg(figure, {240, 240})), IsEmpty()) << name.substr(0, 20);
  }
}

TEST(FigureSvg, TakesNumbersOfAnySize) {
  const std::vector<std::vector<double>> cases = {
      {}, {1}, {3, 3, 3}, {1e300, -1e300}, {1e308, 0, -1e308}, {1e-320, 2e-320}, {kNotANumber},
      {1e38, 1e38 + 1e30}, {INFINITY, 1}, {-1e-9, 1e9}, {1234567.25, 1234567.5}};
  for (const std::vector<double>& numbers : cases) {
    for (const Type type : {Type::Points, Type::Line, Type::Bars, Type::Rule, Type::Area, Type::Text}) {
      Figure figure = Cloud(0, "", 7);
      FigureMark& mark = figure.panels[0].marks[0];
      mark.type = type;
      mark.x = mark.y = numbers;
      mark.names = NamesUnder("", std::vector<std::string>(numbers.size(), "n"));
      EXPECT_THAT(FaultsOf(FigureSvg(figure)), IsEmpty()) << static_cast<int>(type) << ": " << numbers.size();
    }
  }
}

TEST(FigureSvg, ShowsAsManyClassesAsHaveRoom) {
  Figure figure = Cloud(4000, "", 8);
  FigureMark& mark = figure.panels[0].marks[0];
  mark.look = FigureLook::Class;
  mark.labels = false;
  for (int k = 0; k < 2000; ++k) figure.classNames.push_back("class " + std::to_string(k));
  for (int i = 0; i < 4000; ++i) mark.classes.push_back(i / 2);
  const std::string svg = FigureSvg(figure);
  EXPECT_THAT(FaultsOf(svg), IsEmpty());
  std::size_t named = 0;
  for (const std::string& word : WordsOf(svg)) named += word.compare(0, 6, "class ") == 0 ? 1U : 0U;
  EXPECT_GE(named, 15U);
  EXPECT_THAT(WordsOf(svg), Contains("and " + std::to_string(2000 - named) + " more"));
}

TEST(FigureSvg, DrawsNeighbouringClassesInOtherShapesAndDashes) {
  Figure figure = Cloud(16, "", 9);
  FigureMark& mark = figure.panels[0].marks[0];
  mark.look = FigureLook::Class;
  mark.labels = false;
  for (int i = 0; i < 16; ++i) {
    mark.classes.push_back(i);
    figure.classNames.push_back("k" + std::to_string(i));
  }
  const std::string svg = FigureSvg(figure);
  // Of 8 shapes one is a circle: classes 0 and 15, each in the panel and the legend.
  EXPECT_EQ(CountOf(svg, "<circle"), 4U);
  EXPECT_EQ(CountOf(svg, "<polygon"), 28U);
  mark.type = Type::Line;
  mark.classes = {1};
  EXPECT_THAT(FigureSvg(figure), HasSubstr("class=\"class-line c1 d1\""));
}

TEST(FigureSvg, IsTheSameInAnyLocale) {
  const std::string plain = FigureSvg(FigureOfAllMarks());
  for (const char* locale : {"de_DE.UTF-8", "C.UTF-8", "fr_FR.UTF-8"}) {
    if (std::setlocale(LC_ALL, locale) == nullptr) continue;
    EXPECT_EQ(FigureSvg(FigureOfAllMarks()), plain);
  }
  std::setlocale(LC_ALL, "C");
}

}  // namespace
}  // namespace kalmia::analysis
