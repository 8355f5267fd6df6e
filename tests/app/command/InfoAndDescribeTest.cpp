// `kalmia info`, `kalmia describe`, and the texts that answer by themselves.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <sstream>
#include <vector>

#include "CommandRun.h"
#include "TestTables.h"
#include "kalmia/analysis/text/Version.h"

namespace {

using nlohmann::json;

const std::string kWrittenBy = std::string("kalmia ") + kalmia::analysis::kVersion;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

json Describe(const std::string& table) {
  const CommandResult run = RunKalmia({"describe", "-", "--json"}, table);
  EXPECT_EQ(run.exitCode, 0) << run.error;
  return run.Json();
}

TEST(Info, ShowsVersionScalingNamesAndQ2OfAStoredModel) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(30, 4, 1));
  const std::string model = folder.Path("m");
  const json fit = RunKalmia({"pls", table, "--y", "y", "--id", "name", "--scale", "pareto", "--groups", "5", "--json",
                              "--validation", "component", "--save", model})
                       .Json();
  const CommandResult text = RunKalmia({"info", model});
  EXPECT_EQ(text.exitCode, 0);
  for (const std::string& part : std::vector<std::string>{"version 5", "Parts             prediction, judgement and rows", "Digest",
                                                          "Limits", kWrittenBy, "Pareto scaled", "x1, x2, x3, x4",
                                                          "5 groups", "Q2 cum", "named by column name"}) {
    EXPECT_THAT(text.output, HasSubstr(part));
  }
  const json info = RunKalmia({"info", model, "--json"}).Json();
  EXPECT_EQ(info["scaling"], "pareto");
  EXPECT_EQ(info["quality"], fit["quality"]);
  EXPECT_EQ(info["digest"], fit["digest"]);
  EXPECT_EQ(info["limits"], fit["limits"]);
  EXPECT_EQ(info["rowCount"], 30);
  EXPECT_EQ(info["rows"].size(), 30);
  ASSERT_EQ(info["components"].size(), fit["kept"].get<std::size_t>());
  for (std::size_t a = 0; a < info["components"].size(); ++a) EXPECT_EQ(info["components"][a], fit["components"][a]);
}

/// A column of a CSV file that the command wrote, without the first line below the titles.
std::vector<std::string> FieldsOf(const std::string& file, std::size_t column) {
  std::istringstream lines(ReadWholeFile(file));
  std::vector<std::string> fields;
  for (std::string line; std::getline(lines, line);) {
    std::size_t from = 0;
    for (std::size_t c = 0; c < column; ++c) from = line.find(',', from) + 1;
    fields.push_back(line.substr(from, line.find(',', from) - from));
  }
  return {fields.begin() + 2, fields.end()};
}

TEST(Info, ShowsWhatJudgedAModelAsItsFitDid) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(30, 4, 1)), model = folder.Path("m");
  const std::string csv = folder.Path("csv");
  for (const char* family : {"pls", "opls", "pca"}) {
    std::vector<std::string> words = {family, table, "--id", "name", "--json", "--save", model, "--csv", csv};
    const bool isPCA = words[0] == "pca";
    if (!isPCA) words.insert(words.end(), {"--y", "y", "--permutations", "9"});
    const json fit = RunKalmia(words).Json(), info = RunKalmia({"info", model, "--json"}).Json();
    EXPECT_EQ(info["validation"], fit["validation"]) << family;
    const std::string text = RunKalmia({"info", model}).output;
    EXPECT_THAT(text, HasSubstr("By number of components, cross-validated by refits in 7 groups (interleaved)"));
    EXPECT_THAT(text, HasSubstr("chosen"));
    if (isPCA) continue;
    EXPECT_EQ(info["cvAnova"], fit["cvAnova"]) << family;
    EXPECT_THAT(text, HasSubstr("CV-ANOVA"));
    EXPECT_THAT(text, HasSubstr("Permutation test, against 9 models"));
    json permutation = fit["permutation"];
    permutation.erase("runs");
    EXPECT_EQ(info["permutation"], permutation);
    EXPECT_EQ(info["classes"], nullptr);
    const json& ofY = info["jackKnife"]["coefficients"]["y"];
    const std::string coefficients = csv + "/coefficients.csv";  // column, y, standard error, lower, upper, p
    const char* const fields[] = {"standardErrors", "lower", "upper", "p"};
    for (std::size_t f = 0; f < 4; ++f) {
      const std::vector<std::string> written = FieldsOf(coefficients, f + 2);
      ASSERT_EQ(written.size(), 4U);
      for (std::size_t k = 0; k < 4; ++k) {
        // The refits compute coefficients in double, the stored model has its matrices in single precision: t and the
        // limits differ by some 1e-7, p of t beyond 50 by as many times more.
        const double expected = std::stod(written[k]);
        EXPECT_NEAR(ofY[fields[f]][k], expected, f < 3 ? 1e-6 : 1e-4 * expected) << fields[f] << k;
      }
    }
    EXPECT_EQ(info["jackKnife"]["vip"].is_null(), std::string(family) == "opls");
  }
}

TEST(Info, ShowsBothWaysOfATwoBlockModelAndTheClassesOfOthers) {
  const ScratchFolder folder;
  const TwoBlocks blocks = SharedBlocks(40, 1);
  const std::string x = folder.Write("x.csv", blocks.x), y = folder.Write("y.csv", blocks.y), model = folder.Path("m");
  const json fit = RunKalmia({"o2pls", x, y, "--id", "name", "--json", "--save", model}).Json();
  EXPECT_EQ(RunKalmia({"info", model, "--json"}).Json()["validation"], fit["validation"]);
  EXPECT_THAT(RunKalmia({"info", model}).output, HasSubstr("Q2 of X from Y"));
  for (const char* method : {"refit", "component", "none"}) {
    json wine = RunKalmia({"pls", ExampleTable("wine.csv"), "--classes", "cultivar", "--id", "sample",
                                 "--components", "2", "--validation", method, "--json", "--save", model})
                          .Json();
    for (const char* ofRows : {"measured", "assigned", "assignedCv"}) wine["classes"].erase(ofRows);  // of the fit alone
    EXPECT_EQ(RunKalmia({"info", model, "--json"}).Json()["classes"], wine["classes"]);
    EXPECT_THAT(RunKalmia({"info", model}).output, HasSubstr("as 3"));
  }
}

TEST(Info, ShowsNoTableOfComponentsThatAModelHasNot) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(12, 4, 1)), model = folder.Path("m");
  for (const std::vector<std::string>& line : {std::vector<std::string>{"pls", table, "--y", "y", "--components", "0"},
                                               std::vector<std::string>{"pca", table, "--components", "0"}}) {
    std::vector<std::string> words = line;
    words.insert(words.end(), {"--id", "name", "--save", model});
    RunWell(words);
    const std::string text = RunWell({"info", model}).output;
    EXPECT_THAT(text, HasSubstr("\n\nThe model has no component.\n")) << line.front();
    EXPECT_THAT(text, Not(HasSubstr("Q2 cum")));
    EXPECT_THAT(text, Not(HasSubstr("R2X cum")));
  }
}

TEST(Info, HasCentresAndFactorsOfTheScaling) {
  const ScratchFolder folder;
  const std::string model = folder.Path("m");
  ASSERT_EQ(RunKalmia({"pls", "-", "--y", "y", "--components", "1", "--groups", "2", "--save", model},
                      "a,y\n1,4\n2,9\n3,8\n6,11\n")
                .exitCode,
            0);
  const json info = RunKalmia({"info", model, "--json"}).Json();
  EXPECT_EQ(info["x"][0]["name"], "a");
  EXPECT_EQ(info["x"][0]["centre"], 3.0);
  EXPECT_FLOAT_EQ(info["x"][0]["factor"], 1.0F / std::sqrt(14.0F / 3.0F));
  EXPECT_EQ(info["y"][0]["centre"], 8.0);
}

TEST(Describe, GivesTheStatisticsOfEachColumn) {
  const json described = Describe("a,b\n1,10\n2,NA\n4,20\n9,60\n");
  const json& a = described["columns"][0];
  EXPECT_EQ(a["name"], "a");
  EXPECT_EQ(a["n"], 4);
  EXPECT_EQ(a["missing"], 0);
  EXPECT_DOUBLE_EQ(a["mean"], 4.0);
  EXPECT_DOUBLE_EQ(a["standardDeviation"], std::sqrt(38.0 / 3));
  EXPECT_EQ(a["min"], 1.0);
  EXPECT_EQ(a["max"], 9.0);
  // n / ((n - 1)(n - 2)) sum(z^3), with deviations -3, -2, 0, 5.
  EXPECT_DOUBLE_EQ(a["skewness"], 4.0 / (3.0 * 2.0) * (-27.0 - 8.0 + 125.0) / std::pow(38.0 / 3, 1.5));
  EXPECT_EQ(described["columns"][1]["n"], 3);
  EXPECT_EQ(described["columns"][1]["missing"], 1);
  EXPECT_DOUBLE_EQ(described["columns"][1]["mean"], 30.0);
}

/// The JSON description of one column of numbers.
json DescribeColumn(const std::vector<double>& numbers) {
  std::ostringstream text;
  text << std::setprecision(9) << "x\n";
  for (const double number : numbers) text << number << "\n";
  return Describe(text.str())["columns"][0];
}

TEST(Describe, PrintsASkewnessThatIsNothingButRoundingAsZero) {
  std::vector<double> whole, tenths, far;
  for (int i = 1; i <= 60; ++i) {
    whole.push_back(i);
    tenths.push_back(i / 10.0);  // single precision holds none but the halves
    far.push_back(1e6 + i / 10.0);
  }
  for (const std::vector<double>& numbers : {whole, tenths, far}) {
    EXPECT_EQ(DescribeColumn(numbers)["skewness"].dump(), "0.0") << numbers[0];
  }
}

TEST(Describe, KeepsASkewnessThatSingleDigitsOfTheCellsTell) {
  // 1000 ... 1060, the last one 0.001 more. To first order g becomes
  // 3 n / ((n - 1) (n - 2)) (z^2 - (n - 1) / n) 0.001 / s with n = 61, s = 17.7529, z = 30 / s: 5.4513e-6; the next
  // order is 0.001 / s of that, below 1e-9.
  std::vector<double> numbers;
  for (int i = 0; i <= 60; ++i) numbers.push_back(1000 + i);
  EXPECT_EQ(DescribeColumn(numbers)["skewness"], 0.0);
  numbers.back() += 0.001;
  const double skewness = DescribeColumn(numbers)["skewness"];
  EXPECT_NEAR(skewness, 5.4513e-6, 1e-9);
}

TEST(Describe, NamesTextConstantAndEmptyColumns) {
  const json described = Describe("a,k,e,t,one\n1,7,,x,\n2,7,NA,y,3\n");
  EXPECT_THAT(described["constantColumns"].get<std::vector<std::string>>(), ElementsAre("k", "one"));
  EXPECT_THAT(described["emptyColumns"].get<std::vector<std::string>>(), ElementsAre("e"));
  EXPECT_THAT(described["textColumns"].get<std::vector<std::string>>(), ElementsAre("t"));
  const CommandResult text = RunKalmia({"describe", "-"}, "a,k,e,t,one\n1,7,,x,\n2,7,NA,y,3\n");
  EXPECT_THAT(text.output, HasSubstr("Text columns: t\nConstant columns: k and one\nEmpty columns: e\n"));
}

TEST(Describe, SaysNothingWhereThereAreTooFewCells) {
  const json columns = Describe("none,one,two,same\n,1,1,5\n,,3,5\n")["columns"];
  EXPECT_EQ(columns[0]["mean"], nullptr);
  EXPECT_EQ(columns[0]["min"], nullptr);
  EXPECT_EQ(columns[1]["mean"], 1.0);
  EXPECT_EQ(columns[1]["standardDeviation"], nullptr);
  EXPECT_DOUBLE_EQ(columns[2]["standardDeviation"], std::sqrt(2.0));
  EXPECT_EQ(columns[2]["skewness"], nullptr);  // 0 / 0 by the formula
  EXPECT_EQ(columns[3]["standardDeviation"], 0.0);
  EXPECT_EQ(columns[3]["skewness"], nullptr);
}

TEST(Describe, CountsAndShowsStrayWordsAmongNumbers) {
  const std::string table = "a,b\n1,x\nNA,2\n\"two\nlines\",4\ninf,y\n5,1e99\n,z\n";
  const json columns = Describe(table)["columns"];
  EXPECT_EQ(columns[0]["n"], 2);
  EXPECT_EQ(columns[0]["missing"], 2);
  EXPECT_EQ(columns[0]["words"], 2);
  EXPECT_EQ(columns[0]["mean"], 3.0);
  EXPECT_EQ(columns[0]["firstWords"], json::parse(R"([{"word": "two\nlines", "row": 3, "line": 4},
                                                      {"word": "inf", "row": 4, "line": 6}])"));
  EXPECT_EQ(columns[1]["n"], 2);
  EXPECT_EQ(columns[1]["missing"], 0);
  EXPECT_EQ(columns[1]["words"], 4);
  EXPECT_EQ(columns[1]["firstWords"].size(), 3);
  const CommandResult text = RunKalmia({"describe", "-"}, table);
  EXPECT_EQ(text.exitCode, 0);
  EXPECT_THAT(text.output, HasSubstr("  column  n  missing  words     mean"));
  EXPECT_THAT(text.output, HasSubstr("Words among the numbers of a: 'two\\nlines' in row 3 (line 4) and 'inf' in row 4 "
                                     "(line 6)\n"));
  EXPECT_THAT(text.output, HasSubstr("Words among the numbers of b: 'x' in row 1 (line 2), 'y' in row 4 (line 6), "
                                     "'1e99' in row 5 (line 7) and 1 more\n"));
}

TEST(Describe, HasNoWordsInAColumnOfNumbersOrOfTextAlone) {
  const json described = Describe("a,t\n1,x\n2,y\n");
  EXPECT_EQ(described["columns"][0]["words"], 0);
  EXPECT_THAT(described["columns"][0]["firstWords"].get<std::vector<json>>(), IsEmpty());
  EXPECT_EQ(described["columns"].size(), 1);
}

TEST(Describe, TellsAMeanOf99FromAMissingOne) {
  const json column = Describe("a\n-98\n-100\n")["columns"][0];
  EXPECT_EQ(column["mean"], -99.0);
  EXPECT_EQ(column["n"], 2);
}

TEST(Describe, ShowsAMeasured99AsItIs) {
  const CommandResult run = RunKalmia({"describe", "-", "--json"}, "a\n-99\n5\n");
  EXPECT_EQ(run.error, "");
  EXPECT_EQ(run.Json()["columns"][0]["missing"], 0);
  EXPECT_EQ(run.Json()["columns"][0]["min"], -99.0);
}

TEST(Describe, HasAllDigitsOfItsCells) {
  const json column = Describe("a\n123456789.125\n123456789.375\n")["columns"][0];  // singles there are 8 apart
  EXPECT_EQ(column["min"], 123456789.125);
  EXPECT_EQ(column["mean"], 123456789.25);
  EXPECT_DOUBLE_EQ(column["standardDeviation"], std::sqrt(0.25 * 0.25 / 2));
}

TEST(Describe, AlignsItsColumns) {
  const CommandResult run = RunKalmia({"describe", "-"}, "a,\xC3\xA9t\xC3\xA9 long\n1,10\n2,20\n4,30.5\n");
  EXPECT_EQ(run.output,
            "standard input: 3 rows, 2 columns\n\n"
            "  column    n  missing     mean       sd  min   max   skewness\n"
            "  a         3        0  2.33333  1.52753    1     4   0.935220\n"
            "  \xC3\xA9t\xC3\xA9 long  3        0  20.1667  10.2510   10  30.5  0.0731441\n");
}

/// The commands as the refusal of a line without one lists them: "... commands pls, pca and quantile; see ...".
std::vector<std::string> AllCommands() {
  std::string list = RunKalmia(std::vector<std::string>{}).error;
  list.erase(0, list.find("commands ") + 9);
  list.erase(list.find(';'));
  list.replace(list.find(" and "), 5, ", ");
  std::vector<std::string> commands;
  for (std::size_t end = 0; end != std::string::npos; list.erase(0, end + 2)) {
    end = list.find(", ");
    commands.push_back(list.substr(0, end));
    if (end == std::string::npos) break;
  }
  return commands;
}

TEST(Help, NamesEachCommandAndHasAnExampleForIt) {
  const std::vector<std::string> commands = AllCommands();
  EXPECT_EQ(commands.size(), 17U);
  for (const char* option : {"--help", "-h"}) {
    const CommandResult run = RunKalmia({option});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.error, "");
    for (const std::string& command : commands) EXPECT_THAT(run.output, HasSubstr("\n  " + command + " "));
  }
  for (const std::string& command : commands) {
    const CommandResult run = RunKalmia({command, "--help"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.error, "");
    EXPECT_THAT(run.output, HasSubstr("\nExample"));
    EXPECT_THAT(run.output, HasSubstr("\n  kalmia " + command + " "));
  }
}

TEST(Help, NamesEveryOptionOfPLS) {
  const std::string help = RunKalmia({"pls", "--help"}).output;
  for (const char* option : {"--y", "--id", "--x", "--exclude", "--scale", "--components", "--groups", "--group-column",
                             "--save", "--json", "--csv"}) {
    EXPECT_THAT(help, HasSubstr(std::string("  ") + option + " "));
  }
}

TEST(Version, IsTheProjects) {
  const CommandResult run = RunKalmia({"--version"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.output, kWrittenBy + "\n");
}

TEST(CommandLine, TakesOptionsAndFilesInAnyOrder) {
  const std::string table = LinearTable(20, 4, 1);
  const ScratchFolder folder;
  const std::string path = folder.Write("t.csv", table);
  const json first = RunKalmia({"pls", path, "--y", "y", "--id", "name", "--json"}).Json();
  EXPECT_EQ(RunKalmia({"pls", "--json", "--id=name", "--y", "y", path}).Json(), first);
  EXPECT_EQ(RunKalmia({"pls", "--exclude", "x4", "--y", "y", path, "--json"}).exitCode, 0);
}

TEST(Describe, SaysSoWhereTheSeparatorSeemsToBeAnother) {
  const CommandResult blanks = RunKalmia({"describe", "-"}, "x y\n1 2\n3 4\n");
  EXPECT_EQ(blanks.exitCode, 0);
  EXPECT_EQ(blanks.error, "note: the table has one column only, of text: columns are separated by commas, ; or tabs\n");
  EXPECT_EQ(RunKalmia({"describe", "-"}, "x\n1\n3\n").error, "");
}

TEST(Describe, NamesTheFirstWordsOfEveryColumnOfAWideTable) {
  std::string header, numbers, holes, words;
  for (int c = 0; c < 3000; ++c) {
    const std::string comma = c == 0 ? "" : ",";
    header += comma + "x" + std::to_string(c);
    numbers += comma + "1";
    holes += comma;
    words += comma + "w" + std::to_string(c);
  }
  holes.insert(0, "NA");
  std::string text = header + "\n" + numbers + "\n";
  for (int r = 0; r < 20; ++r) text += holes + "\n";
  for (int r = 0; r < 4; ++r) text += words + "\n" + numbers + "\n";
  const auto described = RunKalmia({"describe", "-", "--json"}, text).Json();
  ASSERT_EQ(described["columns"].size(), 3000U);
  for (int c = 0; c < 3000; ++c) {
    const auto& column = described["columns"][static_cast<std::size_t>(c)];
    ASSERT_EQ(column["words"], 4);
    ASSERT_EQ(column["firstWords"].size(), 3U);
    for (int k = 0; k < 3; ++k) {
      const auto& word = column["firstWords"][static_cast<std::size_t>(k)];
      ASSERT_EQ(word["word"], "w" + std::to_string(c));
      ASSERT_EQ(word["row"], 22 + 2 * k);
      ASSERT_EQ(word["line"], 23 + 2 * k);
    }
  }
}

TEST(Describe, ShowsTheBeginningOfALongWord) {
  const std::string text = "a\n1\n" + std::string(39, 'x') + "\xC3\xA9" + std::string(100, 'y') + "\n";
  const auto described = RunKalmia({"describe", "-", "--json"}, text).Json();
  EXPECT_EQ(described["columns"][0]["firstWords"][0]["word"], std::string(39, 'x') + "...") << "never half a letter";
}

}  // namespace
