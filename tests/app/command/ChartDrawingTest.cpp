// What `kalmia chart --svg` draws.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ChartTables.h"
#include "CommandRun.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TEST(Chart, DrawsTheTitleAndTheAxisTextsGiven) {
  const ScratchFolder folder;
  const std::string svg = folder.Path("c.svg");
  const std::vector<std::string> line = {"chart", "-", "--column", "x", "--type", "cusum", "--svg", svg};
  ASSERT_EQ(RunKalmia(line, kTwelve).exitCode, 0);
  for (const char* text : {">x of standard input: cusum chart</text>", ">row</text>", ">x</text>",
                           ">CuSum of x</text>", ">high CuSum</text>", ">low CuSum</text>"}) {
    EXPECT_THAT(ReadWholeFile(svg), HasSubstr(text));
  }
  std::vector<std::string> named = line;
  named.insert(named.end(), {"--title", "Bath <3>", "--x-label", "hour", "--y-label", "pH"});
  ASSERT_EQ(RunKalmia(named, kTwelve).exitCode, 0);
  for (const char* text : {">Bath &lt;3&gt;</text>", "<title>Bath &lt;3&gt;</title>", ">hour</text>", ">pH</text>",
                           ">CuSum of pH</text>"}) {
    EXPECT_THAT(ReadWholeFile(svg), HasSubstr(text));
  }
}

TEST(Chart, TellsHighAndLowCuSumApartByColourDashesAndShape) {
  const ScratchFolder folder;
  const std::string svg = folder.Path("c.svg");
  ASSERT_EQ(RunKalmia({"chart", "-", "--column", "x", "--type", "cusum", "--svg", svg}, kTwelve).exitCode, 0);
  const std::string drawing = ReadWholeFile(svg);
  // Twelve points each, and one in the legend; the values of the panel above are twelve circles more.
  EXPECT_EQ(CountOf(drawing, "class=\"second-point\""), 13);
  EXPECT_EQ(CountOf(drawing, "class=\"point\""), 25);
  EXPECT_EQ(CountOf(drawing, "<polyline"), 3);
  EXPECT_EQ(CountOf(drawing, "class=\"second-data\""), 2);
  EXPECT_THAT(drawing, HasSubstr(".second-data { stroke: #d55e00; stroke-width: 1.2; stroke-dasharray: 5 3;"));
}

TEST(Chart, DrawsEveryPointAndMarksEverySignal) {
  const ScratchFolder folder;
  const std::string svg = folder.Path("c.svg"), table = folder.Write("t.csv", Series(100, 50, 0.05));
  const CommandResult run = RunKalmia(ChartOf(table, "individual", {"--target", "7", "--sigma", "0.4", "--svg", svg}));
  ASSERT_EQ(run.exitCode, 0) << run.error;
  const std::string drawing = ReadWholeFile(svg);
  EXPECT_EQ(CountOf(drawing, "class=\"point\""), 100);
  EXPECT_EQ(CountOf(drawing, "class=\"limit\""), 2);
  EXPECT_EQ(CountOf(drawing, "class=\"centre\""), 1);
  const int signals = CountOf(run.output, "value above");
  EXPECT_GT(signals, 0);
  EXPECT_EQ(CountOf(drawing, "class=\"signal\""), signals);
  EXPECT_THAT(run.output, HasSubstr("\nWrote " + svg + "\n"));
}

TEST(Chart, ThinsOutALongSeriesButLosesNoSignal) {
  const ScratchFolder folder;
  std::string text = "x\n";
  for (int i = 0; i < 20000; ++i) text += i == 12345 ? "50\n" : i % 2 == 0 ? "0\n" : "1\n";
  const std::string svg = folder.Path("c.svg");
  const CommandResult run = RunKalmia({"chart", "-", "--column", "x", "--type", "individual", "--svg", svg}, text);
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("12346  value above"));
  const std::string drawing = ReadWholeFile(svg);
  EXPECT_LT(drawing.size(), 40000U);
  EXPECT_EQ(CountOf(drawing, "class=\"signal\""), 1);
}

TEST(Chart, ThinsOutRingsOfRunsThatShareAPlace) {
  std::string text = "x\n";
  for (int i = 0; i < 12000; ++i) text += i < 6000 ? "0.5\n" : i % 2 == 0 ? "-0.5\n" : "0.5\n";
  const ScratchFolder folder;
  const std::string svg = folder.Path("c.svg");
  const CommandResult run = RunKalmia({"chart", "-", "--column", "x", "--type", "individual", "--target", "0",
                                       "--sigma", "1", "--rules", "western-electric", "--svg", svg},
                                      text);
  EXPECT_THAT(run.output, HasSubstr("5993 signals"));  // from the eighth on
  const std::string drawing = ReadWholeFile(svg);
  // Twenty points share a place: one ring at the first signal, then one at each whole score up to 6000.
  EXPECT_EQ(CountOf(drawing, "class=\"run\""), 300);
  EXPECT_EQ(CountOf(drawing, ">4</text>"), 1);
}

TEST(Chart, NamesWithMarkupStayTextInTheDrawing) {
  const ScratchFolder folder;
  const std::string svg = folder.Path("c.svg");
  const CommandResult run = RunKalmia({"chart", "-", "--column", "<b>&\"\xff", "--type", "individual", "--svg", svg},
                                      "\"<b>&\"\"\xff\"\n1\n2\n3\n");
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_THAT(ReadWholeFile(svg), HasSubstr("<title>&lt;b&gt;&amp;&quot;\xEF\xBF\xBD of standard input"));
}

TEST(Chart, LimitsBeyondSinglePrecisionAreNumbersInTheDrawing) {
  const ScratchFolder folder;
  const std::string svg = folder.Path("c.svg");
  const std::string values = "x\n-3e38\n3e38\n-3e38\n3e38\n";
  ASSERT_EQ(RunKalmia({"chart", "-", "--column", "x", "--type", "individual", "--sigma", "5e38", "--svg", svg}, values)
                .exitCode,
            0);
  const std::string drawing = ReadWholeFile(svg);
  for (const char* text : {">upper 1.5e+39</text>", ">lower -1.5e+39</text>", ">1e+39</text>"}) {
    EXPECT_THAT(drawing, HasSubstr(text));
  }
  EXPECT_THAT(drawing, Not(HasSubstr("></text>")));
}

TEST(Chart, LegendShowsPointsOnlyWhereThePointsAreDrawn) {
  const ScratchFolder folder;
  const std::string svg = folder.Path("c.svg");
  for (const int size : {150, 151}) {
    const std::string table = folder.Write("t.csv", Series(size, 1000, 0));
    ASSERT_EQ(RunKalmia(ChartOf(table, "cusum", {"--svg", svg})).exitCode, 0);
    const std::string drawing = ReadWholeFile(svg);
    EXPECT_EQ(CountOf(drawing, "class=\"second-point\""), size == 150 ? 151 : 0);
    EXPECT_EQ(CountOf(drawing, "class=\"second-data\""), 2);  // the line and its sample
  }
}

}  // namespace
