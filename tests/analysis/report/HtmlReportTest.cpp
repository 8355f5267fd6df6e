#include "kalmia/analysis/report/HtmlReport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <nlohmann/json.hpp>

namespace kalmia::analysis {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

const ReportAssets kAssets = {"/* library */ const end = \"</script>\";\n", "/* script */\n", "main {}\n",
                              "Copyright <somebody> & others\n"};

/// Scores of the rows and a line over as many columns.
ReportPage ReportOf(const std::vector<std::string>& rows, const std::vector<double>& numbers) {
  ReportPage report;
  report.title = "a model";
  report.rowNames = rows;
  report.columns = {{"number", {}, numbers}, {"text", rows, {}}};
  Figure figure;
  figure.name = "scores";
  figure.title = "scores";
  figure.panels.resize(1);
  FigureMark points;
  points.names = std::make_shared<NameList>(NameList{"rows", rows});
  points.x = points.y = numbers;
  std::reverse(points.y.begin(), points.y.end());
  FigureMark line;
  line.type = FigureMark::Type::Line;
  line.x = line.y = numbers;
  figure.panels[0].marks = {points, line};
  report.figures = {figure};
  report.components = {{"scores", 0, 1, {{"t1", points.x, -1.0, 1.0}, {"t2", points.y, -1.0, 1.0}}}};
  return report;
}

/// The data block of that id.
nlohmann::json BlockOf(const std::string& page, const std::string& id) {
  const std::string tag = "<script type=\"application/json\" id=\"" + id + "\">";
  const std::size_t begin = page.find(tag) + tag.size();
  return nlohmann::json::parse(page.substr(begin, page.find("</script>", begin) - begin));
}

std::size_t CountOf(const std::string& what, const std::string& text) {
  std::size_t count = 0;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++count;
  return count;
}

TEST(HtmlReport, KeepsNamesAsDataWhateverTheySay) {
  const std::vector<std::string> names = {"<img src=x onerror=alert(1)>", "</script><script>alert(1)</script>",
                                          "<!-- <script>", "&amp; \"quoted\" 'single'", "\xF0\x9F\x8C\xBF \xD7\xA9"};
  ReportPage report = ReportOf(names, {1, 2, 3, 4, 5});
  report.title = names[0];
  report.notes = {names[1]};
  report.facts = {{names[2], names[3]}};
  const std::string page = HtmlText(report, kAssets);
  EXPECT_THAT(page, Not(HasSubstr("<img")));
  EXPECT_THAT(page, Not(HasSubstr("alert(1)<")));
  EXPECT_THAT(page, Not(HasSubstr("<!--")));
  // Two blocks of data, the library and the page's own script begin and end, and nothing else does.
  EXPECT_EQ(CountOf("<script", page), 4U);
  EXPECT_EQ(CountOf("</script", page), 4U);
  EXPECT_EQ(BlockOf(page, "kalmia-figures")["names"]["rows"], nlohmann::json(names));
  const nlohmann::json data = BlockOf(page, "kalmia-report");
  EXPECT_EQ(data["title"], names[0]);
  EXPECT_EQ(data["notes"][0], names[1]);
  EXPECT_EQ(data["columns"][1]["values"], nlohmann::json(names));
  EXPECT_THAT(page, HasSubstr("Copyright &lt;somebody> &amp; others"));
}

TEST(HtmlReport, TakesBytesThatAreNoText) {
  const std::string page = HtmlText(ReportOf({"\xFF\xFE", "b"}, {1, 2}), kAssets);
  EXPECT_EQ(BlockOf(page, "kalmia-report")["columns"][1]["values"][0], "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(HtmlReport, AllowsNoRequestAndNoForeignScript) {
  EXPECT_THAT(HtmlText(ReportOf({"a"}, {1}), kAssets),
              HasSubstr("content=\"default-src 'none'; script-src 'unsafe-inline'; style-src 'unsafe-inline'; "
                        "img-src data: blob:; form-action 'none'; base-uri 'none'\""));
}

TEST(HtmlReport, HasTheNumbersThemselvesWhereItIsSmall) {
  const std::vector<double> numbers = {0.1234567890123, 1e-300, std::nan("")};
  const std::string page = HtmlText(ReportOf({"a", "b", "c"}, numbers), kAssets);
  const nlohmann::json x = BlockOf(page, "kalmia-figures")["figures"][0]["marks"][0]["x"];
  EXPECT_EQ(x[0], numbers[0]);
  EXPECT_EQ(x[1], numbers[1]);
  EXPECT_TRUE(x[2].is_null());
  EXPECT_EQ(BlockOf(page, "kalmia-report")["notes"].size(), 0U);
}

/// So many rows, of which one lies far away.
ReportPage LongReport(std::size_t rows, std::size_t far) {
  std::vector<std::string> names;
  std::vector<double> numbers;
  for (std::size_t i = 0; i < rows; ++i) {
    names.push_back("r" + std::to_string(i));
    numbers.push_back(std::sin(static_cast<double>(i)));
  }
  numbers[far] = 9.0;
  return ReportOf(names, numbers);
}

TEST(HtmlReport, IsNoLargerThanAskedForAndSaysWhatItLeavesOut) {
  const std::string page = HtmlText(LongReport(50000, 31234), kAssets, 400000);
  EXPECT_LE(page.size(), 400000U);
  const nlohmann::json data = BlockOf(page, "kalmia-report"), figures = BlockOf(page, "kalmia-figures");
  const auto rows = figures["names"]["rows"].get<std::vector<std::string>>();
  EXPECT_THAT(data["notes"][0].get<std::string>(), HasSubstr("of 50000 rows it shows " + std::to_string(rows.size())));
  EXPECT_THAT(rows, Contains("r31234"));
  // What remains is in step: each row has its point, its cells and its components, under its own name.
  const nlohmann::json& points = figures["figures"][0]["marks"][0];
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::size_t row = points["index"][i];
    EXPECT_EQ(data["columns"][1]["values"][row], rows[row]);
    EXPECT_EQ(points["x"][i], data["columns"][0]["values"][row]);
    EXPECT_EQ(points["x"][i], data["components"][0]["list"][0]["values"][i]);
  }
  const auto line = figures["figures"][0]["marks"][1]["y"].get<std::vector<double>>();
  EXPECT_EQ(*std::max_element(line.begin(), line.end()), 9.0);
}

TEST(HtmlReport, RoundsToFiveDigitsOfTheRangeBeforeItLeavesAnythingOut) {
  const ReportPage report = LongReport(2000, 700);
  const std::size_t whole = HtmlText(report, kAssets).size();
  const std::string page = HtmlText(report, kAssets, whole - 1);
  const auto x = BlockOf(page, "kalmia-figures")["figures"][0]["marks"][0]["x"].get<std::vector<double>>();
  ASSERT_EQ(x.size(), 2000U);
  // The numbers range over 10: a unit of the fifth digit is 0.001, and nothing is off by more than half of it. Another
  // 1e-15 is what the decimals themselves are off.
  for (std::size_t i = 0; i < x.size(); ++i) EXPECT_NEAR(x[i], report.columns[0].numbers[i], 0.0005 + 1e-15);
  EXPECT_THAT(BlockOf(page, "kalmia-report")["notes"][0].get<std::string>(), HasSubstr("rounded to five digits"));
}

TEST(HtmlReport, CutsLongNamesBetweenCodePointsWhereTheyMakeItLarge) {
  std::string name;
  for (int i = 0; i < 5000; ++i) name += "\xC3\xA9";
  const std::string page = HtmlText(ReportOf({name, "b"}, {1, 2}), kAssets, 8000);
  EXPECT_LE(page.size(), 8000U);
  EXPECT_THAT(page, Not(HasSubstr("\xEF\xBF\xBD")));
}

TEST(HtmlReport, HasAPageWithoutRowsAndFigures) {
  ReportPage report;
  report.title = "nothing";
  const std::string page = HtmlText(report, kAssets);
  EXPECT_EQ(BlockOf(page, "kalmia-figures")["figures"], nlohmann::json::array());
}

}  // namespace
}  // namespace kalmia::analysis
