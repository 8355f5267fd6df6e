// What `kalmia spectrum` prints, writes and draws, and every way in which it fails.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "SvgTexts.h"
#include "TestTables.h"
#include "kalmia/signal/FFT.h"

namespace {

using kalmia::analysis::Table;
using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

CommandResult RunSpectrum(const std::string& table, std::vector<std::string> more = {}) {
  more.insert(more.begin(), {"spectrum", "-", "--column", "x"});
  return RunKalmia(more, table);
}

/// Columns x, with a period of 8 rows, and y, which says the same two rows later.
std::string Waves(int rows) {
  std::string text = "x,y\n";
  for (int row = 1; row <= rows; ++row) {
    for (const int delay : {0, 2}) {
      const double value = 5 + std::sin(std::acos(-1.0) * (row - delay) / 4) + 0.25 * ((row - delay) * 7 % 13 - 6) / 6;
      text += std::to_string(value) + (delay == 0 ? "," : "\n");
    }
  }
  return text;
}

NCDataVector<float> CellsAt(const Table& table, const std::string& column) {
  NCDataVector<float> cells;
  for (const double value : NumbersOf(table, column)) {
    cells.push_back(std::isnan(value) ? kalmia::kMissingCell<float> : static_cast<float>(value));
  }
  return cells;
}

std::vector<double> NumbersIn(const NCDataVector<float>& cells) { return {cells.begin(), cells.end()}; }

TEST(Spectrum, FindsThePeriodOfAColumn) {
  const CommandResult run = RunSpectrum(Waves(200), {"--segment", "64", "--lags", "8"});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("x of standard input: 200 rows, mean removed\n"));
  EXPECT_THAT(run.output, HasSubstr("Autocorrelation of x (*: beyond 0.1386, as 1 of 20 would be by chance)\n"));
  EXPECT_THAT(run.output, HasSubstr("\n    0       1.0000  *\n"));
  EXPECT_THAT(run.output, HasSubstr("Power of x in 6 half-overlapping segments of 64 rows, hann window\n"
                                    "Largest at frequency 0.12500, a period of 8.000 rows\n"));
}

TEST(Spectrum, LooksForThePeakBesideFrequencyZero) {
  // The level of 5, which stays in, is most of all at 0; the window lets half of it through at the next frequency.
  const json result = RunSpectrum(Waves(200), {"--segment", "64", "--detrend", "none", "--json"}).Json();
  const json& spectrum = result["columns"][0]["spectrum"];
  EXPECT_GT(spectrum[0]["power"], spectrum[1]["power"]);
  EXPECT_EQ(result["columns"][0]["peakFrequency"], 1.0 / 64);
}

TEST(Spectrum, TellsWhichColumnFollowsWhich) {
  const std::string table = Waves(200);
  EXPECT_THAT(RunSpectrum(table, {"--with", "y", "--lags", "5"}).output,
              HasSubstr("Correlation of x with y (*: beyond 0.1386, as 1 of 20 would be by chance)\n"
                        "Furthest from 0 at lag -2: y follows x by 2 rows\n"));
  EXPECT_THAT(RunKalmia({"spectrum", "-", "--column", "y", "--with", "x", "--lags", "5"}, table).output,
              HasSubstr("Furthest from 0 at lag 2: y follows x by 2 rows\n"));
  EXPECT_THAT(RunSpectrum(table, {"--with", "x", "--lags", "5"}).output,
              HasSubstr("Furthest from 0 at lag 0: x and x go together\n"));
}

TEST(Spectrum, GivesWhatTheLibraryGivesInJsonAndInItsFiles) {
  const ScratchFolder folder;
  const std::string path = ExampleTable("tank.csv");
  const CommandResult run =
      RunKalmia({"spectrum", path, "--column", "level", "--with", "inflow", "--lags", "5", "--segment", "32",
                 "--window", "welch", "--detrend", "linear", "--json", "--csv", folder.Path("d")});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  const Table table = CsvAt(path);
  const NCDataVector<float> level = CellsAt(table, "level"), inflow = CellsAt(table, "inflow");
  NCDataVector<float> correlation, power, powerOfInflow;
  FFT::CrossCorrelation(&level, &inflow, FFT::DetrendLinear, 5, &correlation);
  FFT::PowerSpectrum(&level, 32, true, FFT::DetrendLinear, FFT::ScalingPlain, FFT::WindowWelch, &power);
  FFT::PowerSpectrum(&inflow, 32, true, FFT::DetrendLinear, FFT::ScalingPlain, FFT::WindowWelch, &powerOfInflow);

  const Table correlations = CsvAt(folder.Path("d/correlation.csv")), powers = CsvAt(folder.Path("d/power.csv"));
  EXPECT_EQ(NumbersOf(correlations, "correlation"), NumbersIn(correlation));
  EXPECT_THAT(NumbersOf(correlations, "lag"), ElementsAre(-5, -4, -3, -2, -1, 0, 1, 2, 3, 4, 5));
  EXPECT_EQ(NumbersOf(powers, "power of level"), NumbersIn(power));
  EXPECT_EQ(NumbersOf(powers, "power of inflow"), NumbersIn(powerOfInflow));
  EXPECT_EQ(NumbersOf(powers, "frequency")[4], 0.125);
  EXPECT_EQ(NumbersOf(powers, "period")[4], 8);
  EXPECT_EQ(powers.Cell(0, 1), "");

  const json result = run.Json();
  EXPECT_EQ(result["rows"], 480);
  EXPECT_EQ(result["segments"], 30);  // 480 rows are 30 halves of a segment, and half of that pairs of segments
  EXPECT_EQ(result["correlations"].size(), 11U);
  EXPECT_EQ(result["correlations"][8]["lag"], 3);
  EXPECT_EQ(result["correlations"][8]["correlation"], static_cast<double>(correlation[9]));
  EXPECT_EQ(result["columns"][0]["name"], "level");
  EXPECT_EQ(result["columns"][0]["missing"], 4);
  EXPECT_EQ(result["columns"][1]["missing"], 0);
  EXPECT_EQ(result["columns"][0]["spectrum"][16]["power"], static_cast<double>(power[17]));
  EXPECT_TRUE(result["columns"][0]["spectrum"][0]["period"].is_null());
  EXPECT_THAT(run.error, HasSubstr("note: 4 missing cells of 'level' are filled along straight lines"));
}

TEST(Spectrum, TakesWindowsAndDetrendingByTheirNames) {
  const std::string table = Waves(40);
  std::vector<std::string> outputs;
  for (const char* window : {"hann", "welch", "bartlett"})
    for (const char* detrend : {"none", "mean", "linear"}) {
      const CommandResult run = RunSpectrum(table, {"--window", window, "--detrend", detrend, "--json"});
      ASSERT_EQ(run.exitCode, 0) << run.error;
      EXPECT_EQ(run.Json()["window"], window);
      EXPECT_EQ(run.Json()["detrend"], detrend);
      const json power = run.Json()["columns"][0]["spectrum"];
      for (const std::string& other : outputs) EXPECT_NE(power.dump(), other);
      outputs.push_back(power.dump());
    }
  EXPECT_EQ(RunSpectrum(table, {"--json"}).Json()["columns"][0]["spectrum"].dump(), outputs[1]);  // hann, mean
}

TEST(Spectrum, ChoosesLagsAndSegmentsThatGoWithTheRows) {
  struct Choice {
    int rows, lags, segment;
  };
  for (const Choice& choice : {Choice{2, 1, 2}, Choice{3, 1, 2}, Choice{40, 10, 16}, Choice{200, 30, 64},
                               Choice{1000, 30, 128}}) {
    const json result = RunSpectrum(Waves(choice.rows), {"--json"}).Json();
    EXPECT_EQ(result["lags"], choice.lags) << choice.rows;
    EXPECT_EQ(result["segment"], choice.segment) << choice.rows;
  }
}

TEST(Spectrum, ShowsNoMoreLinesThanAReaderReads) {
  const CommandResult run = RunSpectrum(Waves(400), {"--lags", "100", "--segment", "256"});
  EXPECT_THAT(run.output, HasSubstr("\n   64  "));
  EXPECT_THAT(run.output, HasSubstr("  and 36 more: CSV or JSON gives them all\n"));
  EXPECT_THAT(run.output, HasSubstr("  and 64 more: CSV or JSON gives them all\n"));
  const CommandResult cross = RunSpectrum(Waves(400), {"--with", "y", "--lags", "33"});
  EXPECT_THAT(cross.output, HasSubstr("\n  -32  "));
  EXPECT_THAT(cross.output, HasSubstr("  and 2 more: CSV or JSON gives them all\n"));
  EXPECT_THAT(RunSpectrum(Waves(400), {"--lags", "64", "--segment", "128"}).output, Not(HasSubstr(" more; ")));
}

TEST(Spectrum, DrawsAStemForEachLagAndALineForEachSpectrum) {
  const ScratchFolder folder;
  const std::string svg = folder.Path("s.svg");
  const CommandResult run = RunSpectrum(Waves(200), {"--with", "y", "--lags", "10", "--svg", svg});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("\nWrote " + svg + "\n"));
  const std::string drawing = ReadWholeFile(svg);
  const auto count = [&](const std::string& what) {
    int found = 0;
    for (std::size_t at = drawing.find(what); at != std::string::npos; at = drawing.find(what, at + 1)) ++found;
    return found;
  };
  EXPECT_EQ(count("<circle"), 21 + 2);  // each lag, and the peak of each spectrum
  EXPECT_EQ(count("<polyline"), 2);
  EXPECT_THAT(FaultsOf(drawing), IsEmpty());
  EXPECT_EQ(count("class=\"limit\""), 2);
}

TEST(Spectrum, SaysThatThereIsNoPowerWhereDetrendingLeavesNothing) {
  const ScratchFolder folder;
  const CommandResult run =
      RunSpectrum("x\n1\n-1\n", {"--lags", "0", "--svg", folder.Path("s"), "--detrend", "linear"});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("\nNo power at any frequency above 0\n"));
  EXPECT_THAT(run.output, Not(HasSubstr("Largest")));
  const std::string drawing = ReadWholeFile(folder.Path("s"));
  EXPECT_THAT(drawing, Not(HasSubstr("nan")));
  EXPECT_EQ(drawing.find("<circle"), drawing.rfind("<circle"));  // that of lag 0; a spectrum without peak has none
  const std::string two = "x,y\n1,2\n2,0\n3,7\n4,1\n";
  const CommandResult cross = RunSpectrum(two, {"--with", "y", "--detrend", "linear"});
  EXPECT_THAT(cross.output, HasSubstr("\nNo correlation: nothing is left of a column\n"));
  EXPECT_THAT(cross.output, Not(HasSubstr("Furthest")));
  const json columns = RunSpectrum(two, {"--with", "y", "--detrend", "linear", "--json"}).Json()["columns"];
  EXPECT_TRUE(columns[0]["peakFrequency"].is_null());
  EXPECT_TRUE(columns[1]["peakFrequency"].is_number());
}

TEST(Spectrum, TakesTheRoundingOfAStraightLineForNothing) {
  for (const int scale : {1, 7, 1000}) {
    std::string table = "x,u\n";
    for (int row = 0; row < 100; ++row) {
      const std::string missing = row == 50 ? "NA" : std::to_string(0.1 * scale * row - 3);
      table += missing + "," + std::to_string(3 + 0.7 * row) + "\n";
    }
    const CommandResult run = RunSpectrum(table, {"--detrend", "linear"});
    EXPECT_THAT(run.output, HasSubstr("\nNo power at any frequency above 0\n")) << scale;
    EXPECT_THAT(run.output, Not(HasSubstr("  *"))) << scale;
    EXPECT_THAT(RunSpectrum(table, {"--with", "u", "--detrend", "linear"}).output,
                HasSubstr("\nNo correlation: nothing is left of a column\n"));
  }
  // A hundred-thousandth of the column is more than rounding; and of a mean nothing that varies is.
  std::string wave = "x\n", steps = "x\n";
  for (int row = 0; row < 64; ++row) {
    wave += std::to_string(1000 + row + (row % 4 < 2 ? 0.01 : -0.01)) + "\n";
    steps += row % 4 < 2 ? "16777216\n" : "16777218\n";
  }
  EXPECT_THAT(RunSpectrum(wave, {"--detrend", "linear"}).output, HasSubstr("Largest at frequency 0.25000"));
  EXPECT_THAT(RunSpectrum(steps).output, HasSubstr("Largest at frequency 0.25000"));
}

struct BadSpectrumTable {
  const char* table;
  std::vector<std::string> more;
  const char* message;
};

TEST(FailureOfSpectrum, IsOneLineWithExitCode1ForBadData) {
  const BadSpectrumTable bads[] = {
      {"y\n1\n", {}, "standard input: there is no column 'x'"},
      {"x\n1\n2\n", {"--with", "y"}, "standard input: there is no column 'y'"},
      {"x\na\nb\n", {}, "the column 'x' holds text, not numbers"},
      {"x,y\n1,a\n2,b\n", {"--with", "y"}, "the column 'y' holds text, not numbers"},
      {"x\n1\none\n", {}, "row 2 (line 3), column 'x': 'one' is not a number"},
      {"x\n1\ninf\n", {}, "row 2 (line 3), column 'x': 'inf' is infinite"},
      {"x,y\n,1\nNaN,2\n", {}, "the column 'x' has no measurement"},
      {"x\n3\n3\nNA\n", {}, "the column 'x' does not vary: it has neither correlations nor a spectrum"},
      {"x,y\n1,3\n2,3\n", {"--with", "y"}, "the column 'y' does not vary"},
      {"x\n3\n", {}, "the column 'x' does not vary"},
      {"x\n1\n2\n3\n", {"--lags", "4"}, "the column 'x' has 3 rows: its correlations go to lag 3, not 4 (--lags)"},
      {"x\n1\n2\n3\n", {"--segment", "8"}, "has 3 rows: a segment takes up to 4, not 8 (--segment)"},
      {"x\n1\n2\n3\n4\n", {"--segment", "8"}, "has 4 rows: a segment takes up to 4, not 8 (--segment)"},
      {"x\n1e30\n-1e30\n1e30\n", {}, "the column 'x' has a power beyond single precision"},
      {"x\n1e-21\n-1e-21\n3e-21\n", {}, "its values are too large or too small, change their unit"},
      {"x\n1e-30\n-1e-30\n3e-30\n", {}, "the column 'x' has a power beyond single precision"},
      {"x\n0\n1e-45\n", {}, "the column 'x' has a power beyond single precision"},
      {"x\n1e-40\n-1e-40\n3e-40\n", {"--detrend", "none"}, "its values are too large or too small"},
      {"x,y\n1,1e-30\n2,3e-30\n1,1e-30\n", {"--with", "y"}, "the column 'y' has a power beyond single precision"},
      {"x\n", {}, "has a header but no data rows"}};
  for (const BadSpectrumTable& bad : bads) {
    SCOPED_TRACE(bad.message);
    const ScratchFolder folder;
    std::vector<std::string> more = bad.more;
    more.insert(more.end(), {"--csv", folder.Path("c"), "--svg", folder.Path("s")});
    ExpectFailure(RunSpectrum(bad.table, more), 1, bad.message);
    EXPECT_EQ(folder.Names(), std::vector<std::string>());
  }
}

TEST(Spectrum, TakesLagsAndSegmentsUpToTheirLimits) {
  EXPECT_EQ(RunSpectrum("x\n1\n2\n3\n", {"--lags", "3", "--segment", "4"}).exitCode, 0);
  EXPECT_EQ(RunSpectrum("x\n1\n2\n3\n4\n5\n", {"--lags", "0", "--segment", "8"}).exitCode, 0);
}

TEST(FailureOfSpectrum, IsExitCode2ForACommandLineThatMakesNoSense) {
  ExpectFailure(RunKalmia({"spectrum", "t.csv"}), 2, "spectrum needs --column NAME: ");
  ExpectFailure(RunKalmia({"spectrum", "--column", "x"}), 2, "spectrum needs a TABLE: ");
  ExpectFailure(RunSpectrum("", {"--segment", "100"}), 2,
                "a segment of a spectrum has a power of two of rows, such as 64, not 100 (--segment); see kalmia "
                "spectrum --help");
  ExpectFailure(RunSpectrum("", {"--segment", "2147483647"}), 2, "such as 1073741824, not 2147483647");
  ExpectFailure(RunSpectrum("", {"--segment", "1"}), 2, "--segment takes a whole number from 2 on, not '1'");
  ExpectFailure(RunSpectrum("", {"--lags", "-1"}), 2, "--lags takes a whole number from 0 on, not '-1'");
  ExpectFailure(RunSpectrum("", {"--window", "hamming"}), 2, "--window takes one of hann, welch and bartlett, not");
  ExpectFailure(RunSpectrum("", {"--detrend", "x"}), 2, "--detrend takes one of none, mean and linear, not 'x'");
}

TEST(FailureOfSpectrum, NeverWritesOverItsTableAndLeavesNothingWhereAFileCannotBeWritten) {
  const ScratchFolder folder;
  const std::string table = folder.Write("power.csv", "x\n1\n2\n");
  const std::vector<std::string> run = {"spectrum", table, "--column", "x"};
  const auto with = [&](std::vector<std::string> more) {
    more.insert(more.begin(), run.begin(), run.end());
    return RunKalmia(more);
  };
  ExpectFailure(with({"--svg", table}), 2, "would overwrite the table");
  ExpectFailure(with({"--csv", folder.Path("")}), 2, "would overwrite the table");
  ExpectFailure(with({"--csv", folder.Path("d"), "--svg", table + "/s"}), 3, "cannot write " + table + "/s");
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"power.csv"});
  EXPECT_EQ(ReadWholeFile(table), "x\n1\n2\n");
}

TEST(Spectrum, HelpGivesAnExampleAndTheValidRanges) {
  const CommandResult run = RunKalmia({"spectrum", "--help"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.output, HasSubstr("kalmia spectrum tank.csv --column level --lags 48 --svg level.svg"));
  EXPECT_THAT(run.output, HasSubstr("a power of two below twice the number of rows"));
  EXPECT_THAT(run.output, HasSubstr("at most the number of rows"));
}

}  // namespace
