// --separator and --decimal, in all CSV that is written.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "TestTables.h"
#include "Words.h"
#include "kalmia/analysis/table/CsvMarks.h"

namespace {

using kalmia::analysis::Table;
using ::testing::HasSubstr;
using ::testing::Not;

/// Every command with its options that write CSV, each into the folder.
std::vector<Words> AllThatWrite(const std::string& table, const std::string& model, const std::string& folder) {
  return {{"pls", table, "--y", "y", "--id", "name", "--csv", folder + "/pls"},
          {"pca", table, "--id", "name", "--components", "2", "--csv", folder + "/pca"},
          {"opls", table, "--y", "y", "--id", "name", "--csv", folder + "/opls"},
          {"o2pls", table, table, "--id", "name", "--x", "x1..x3", "--y", "x4,y", "--joint", "1", "--x-unique", "0",
           "--y-unique", "0", "--fill", "--csv", folder + "/o2pls"},
          {"predict", model, table, "--csv", folder + "/predict"},
          {"fill", table, "--id", "name", "--out", folder + "/fill.csv"},
          {"filter", table, "--id", "name", "--y", "y", "--components", "1", "--out", folder + "/filter.csv"},
          {"preprocess", table, "--id", "name", "--steps", "snv", "--exclude", "y", "--out", folder + "/steps.csv"},
          {"cluster", table, "--id", "name", "--method", "ward", "--cut", "3", "--csv", folder + "/cluster.csv",
           "--merges", folder + "/merges.csv"},
          {"chart", table, "--column", "y", "--type", "individual", "--csv", folder + "/chart.csv"},
          {"histogram", table, "--column", "y", "--csv", folder + "/histogram.csv"},
          {"spectrum", table, "--column", "y", "--csv", folder + "/spectrum"}};
}

/// The CSV files in a folder and those below it, by their paths within it.
Words FilesBelow(const std::string& folder) {
  Words files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) files.push_back(std::filesystem::relative(entry.path(), folder).string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

bool IsNumber(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789+-.e") == std::string::npos;
}

class CsvMarksOfAllCommands : public ::testing::Test {
 protected:
  CsvMarksOfAllCommands() {
    std::string text = WithHoles(LinearTable(24, 4, 3), 17);
    for (std::size_t at = text.find('\n'); at + 1 < text.size(); at = text.find('\n', at + 1)) {
      text.replace(at + 1, 1, "1.");  // r1, r2 ... become 1.1, 1.2: names that could be numbers
    }
    table_ = folder_.Write("t.csv", text);
    EXPECT_EQ(RunKalmia({"pls", table_, "--y", "y", "--id", "name", "--save", model_}).exitCode, 0);
  }

  /// Runs all commands with these options; the folder that they wrote to.
  std::string RunAll(const std::string& name, const Words& marks) const {
    const std::string folder = folder_.Path(name);
    std::filesystem::create_directory(folder);
    for (const Words& command : AllThatWrite(table_, model_, folder)) {
      const CommandResult run = RunKalmia(command + marks);
      EXPECT_EQ(run.exitCode, 0) << command.front() << ": " << run.error;
    }
    return folder;
  }

  ScratchFolder folder_;
  std::string table_;
  std::string model_ = folder_.Path("m");
};

TEST_F(CsvMarksOfAllCommands, ShapeEveryFileWithoutChangingWhatItSays) {
  const std::string plain = RunAll("plain", {});
  const struct {
    Words options;
    char separator;
    char decimal;
  } marks[] = {{{"--decimal", "comma"}, ';', ','},
               {{"--separator", "tab"}, '\t', '.'},
               {{"--separator", ";", "--decimal", "."}, ';', '.'},
               {{"--separator", "tab", "--decimal", ","}, '\t', ','}};
  for (std::size_t m = 0; m < std::size(marks); ++m) {
    const std::string shaped = RunAll("shaped" + std::to_string(m), marks[m].options);
    ASSERT_EQ(FilesBelow(shaped), FilesBelow(plain));
    for (const std::string& file : FilesBelow(plain)) {
      SCOPED_TRACE(file + " " + marks[m].options[1]);
      const Table before = CsvAt(plain + "/" + file), after = CsvAt(shaped + "/" + file);
      EXPECT_EQ(before.Separator(), ',');
      EXPECT_EQ(after.Separator(), marks[m].separator);
      ASSERT_EQ(after.ColumnNames(), before.ColumnNames());
      ASSERT_EQ(after.Rows(), before.Rows());
      for (int row = 0; row < before.Rows(); ++row) {
        for (int column = 0; column < before.Columns(); ++column) {
          std::string cell(before.Cell(row, column));
          const std::string& title = before.ColumnNames()[static_cast<std::size_t>(column)];
          const bool isName = title == "row" || title == "name";
          if (IsNumber(cell) && !isName) std::replace(cell.begin(), cell.end(), '.', marks[m].decimal);
          EXPECT_EQ(after.Cell(row, column), cell);
        }
      }
    }
  }
  EXPECT_THAT(ReadWholeFile(folder_.Path("shaped0/pls/scores.csv")), HasSubstr("\n1.1;"));
}

TEST(CsvMarks, LeaveTheTableOfFillAndFilterAsItIsWhereTheyAreNotAskedFor) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", "id;a;b; text \r\n1;1,5;2;\"x;y\"\r\n2;;3,25;NA\r\n3;0,5;1;,z\r\n");
  const std::string out = folder.Path("out");
  const auto filled = [&](const Words& marks) {
    const CommandResult run = RunKalmia(Words{"fill", table, "--id", "id", "--components", "0", "--out", out} + marks);
    EXPECT_EQ(run.exitCode, 0) << run.error;
    return ReadWholeFile(out);
  };
  EXPECT_EQ(filled({}), "id;a;b; text \r\n1;1,5;2;\"x;y\"\r\n2;1;3,25;NA\r\n3;0,5;1;,z\r\n");
  EXPECT_EQ(filled({"--separator", "tab"}), "id\ta\tb\ttext\n1\t1,5\t2\t\"x;y\"\n2\t1\t3,25\tNA\n3\t0,5\t1\t\",z\"\n");
  EXPECT_EQ(filled({"--decimal", "point"}), "id;a;b;text\n1;1.5;2;\"x;y\"\n2;1;3.25;NA\n3;0.5;1;\",z\"\n");
  EXPECT_EQ(filled({"--separator", "comma"}), "id,a,b,text\n1,1.5,2,\"x;y\"\n2,1,3.25,NA\n3,0.5,1,\",z\"\n")
      << "the decimal comma gives way";
  const std::string points = folder.Write("p.csv", "a,b\n1.5,2\n,3.25\n0.5,1\n");
  EXPECT_EQ(RunKalmia({"fill", points, "--components", "0", "--out", out, "--decimal", "comma"}).exitCode, 0);
  EXPECT_EQ(ReadWholeFile(out), "a;b\n1,5;2\n1;3,25\n0,5;1\n") << "the separator gives way";
}

TEST(CsvMarks, AreReadAgainAsTheyWereWritten) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(24, 4, 3)), steps = folder.Path("s.csv");
  const Words preprocess = {"preprocess", table, "--id", "name", "--steps", "snv", "--exclude", "y", "--out", steps};
  ASSERT_EQ(RunKalmia(preprocess).exitCode, 0);
  const std::string plain = RunKalmia({"describe", steps}).output;
  ASSERT_EQ(RunKalmia(preprocess + Words{"--decimal", "comma"}).exitCode, 0);
  EXPECT_THAT(ReadWholeFile(steps), Not(HasSubstr(".")));
  EXPECT_EQ(RunKalmia({"describe", steps}).output, plain);
}

TEST(CsvMarks, KeepASeparatorThatTheFirstLineNamesWithThatLine) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", "sep=|\nid|\"a|b\"|c\n\"x|y\"|1,5|2\nu||3,25\nv;w|0,5|1\n");
  const std::string out = folder.Path("out");
  const auto filled = [&](const Words& marks) {
    const CommandResult run = RunKalmia(Words{"fill", table, "--id", "id", "--components", "0", "--out", out} + marks);
    EXPECT_EQ(run.exitCode, 0) << run.error;
    return ReadWholeFile(out);
  };
  EXPECT_EQ(filled({"--decimal", "point"}), "sep=|\nid|\"a|b\"|c\n\"x|y\"|1.5|2\nu|1|3.25\n\"v;w\"|0.5|1\n");
  const Table again = CsvAt(out);
  EXPECT_EQ(again.Separator(), '|');
  EXPECT_EQ(again.Cell(0, 0), "x|y");
  EXPECT_EQ(filled({"--decimal", "comma"}), "sep=|\nid|\"a|b\"|c\n\"x|y\"|1,5|2\nu|1|3,25\n\"v;w\"|0,5|1\n");
  EXPECT_EQ(filled({"--separator", "semicolon"}), "id;a|b;c\nx|y;1,5;2\nu;1;3,25\n\"v;w\";0,5;1\n");
  EXPECT_EQ(filled({"--separator", "comma"}), "id,a|b,c\nx|y,1.5,2\nu,1,3.25\n\"v;w\",0.5,1\n");
}

TEST(CsvMarks, NameTheSeparatorWhereDecimalCommasOfOneColumnWouldBeTakenForIt) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", "a\n1.5\nNA\n0.5\n"), out = folder.Path("out");
  ASSERT_EQ(RunKalmia({"fill", table, "--components", "0", "--out", out, "--decimal", "comma"}).exitCode, 0);
  EXPECT_EQ(ReadWholeFile(out), "sep=;\na\n1,5\nNA\n0,5\n");
  EXPECT_EQ(CsvAt(out).Column(0).numbers[2], 0.5);
}

TEST(CsvMarks, KeepQuotationMarksAroundWhatWouldBeAComment) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", "id;a;b\n\"#r1\";1,5;2\n# left out\nr2;;3\nr3;0,5;1\n");
  const std::string out = folder.Path("out"), steps = folder.Path("steps");
  const Words reading = {"--id", "id", "--comment", "#"};
  ASSERT_EQ(
      RunKalmia(Words{"fill", table, "--components", "0", "--out", out, "--separator", "comma"} + reading).exitCode, 0);
  EXPECT_EQ(ReadWholeFile(out), "id,a,b\n\"#r1\",1.5,2\nr2,1,3\nr3,0.5,1\n");
  ASSERT_EQ(RunKalmia(Words{"preprocess", table, "--steps", "linear", "--out", steps} + reading).exitCode, 0);
  EXPECT_THAT(ReadWholeFile(steps), HasSubstr("\n\"#r1\",1.5,2\n"));
}

TEST(CsvMarks, NameTheSeparatorOfOneColumnThatPreprocessWritesToo) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", "a\n1.5\nNA\n0.5\n"), out = folder.Path("out");
  const Words preprocess = {"preprocess", table, "--steps", "linear", "--out", out};
  ASSERT_EQ(RunKalmia(preprocess + Words{"--decimal", "comma"}).exitCode, 0);
  EXPECT_EQ(ReadWholeFile(out), "sep=;\na\n1,5\nNA\n0,5\n");
  ASSERT_EQ(RunKalmia(preprocess + Words{"--separator", "tab"}).exitCode, 0);
  EXPECT_EQ(ReadWholeFile(out), "a\n1.5\nNA\n0.5\n") << "points are no separators";
}

TEST(CsvMarks, TellWhereDecimalCommasOfTheTableBecomePoints) {
  const ScratchFolder folder;
  const std::string commas = folder.Write("c.csv", "a;b\n1,5;2\n;3,25\n0,5;1\n"), out = folder.Path("out");
  const std::string points = folder.Write("p.csv", "a;b\n1.5;2\n;3.25\n0.5;1\n");
  const auto notes = [&](const std::string& table, const Words& marks) {
    return RunKalmia(Words{"fill", table, "--components", "0", "--out", out} + marks).error;
  };
  const std::string note =
      "note: the decimal commas of the table are written as points, as commas separate its columns "
      "now\n";
  EXPECT_THAT(notes(commas, {"--separator", "comma"}), HasSubstr(note));
  EXPECT_THAT(notes(commas, {"--separator", "comma", "--decimal", "point"}), Not(HasSubstr(note))) << "was asked for";
  EXPECT_THAT(notes(commas, {"--separator", "tab"}), Not(HasSubstr(note)));
  EXPECT_THAT(notes(points, {"--separator", "comma"}), Not(HasSubstr(note)));
}

TEST(CsvMarks, AreRefusedWhereNoCsvIsWritten) {
  const std::pair<Words, const char*> commands[] = {{{"pls", "t.csv", "--y", "y"}, "--csv"},
                                                    {{"pca", "t.csv"}, "--csv"},
                                                    {{"opls", "t.csv", "--y", "y"}, "--csv"},
                                                    {{"o2pls", "t.csv", "u.csv"}, "--csv"},
                                                    {{"predict", "m", "t.csv"}, "--csv"},
                                                    {{"cluster", "t.csv", "--method", "ward"}, "--csv or --merges"},
                                                    {{"chart", "t.csv", "--column", "y", "--type", "cusum"}, "--csv"},
                                                    {{"histogram", "t.csv", "--column", "y"}, "--csv"},
                                                    {{"spectrum", "t.csv", "--column", "y"}, "--csv"}};
  for (const auto& [command, needed] : commands) {
    for (const Words& mark : {Words{"--separator", "tab"}, Words{"--decimal", "comma"}}) {
      ExpectFailure(RunKalmia(command + mark), 2, mark[0] + " is for CSV that is written: give " + needed + " too");
    }
  }
}

TEST(CsvMarks, AreRefusedWhereTheyMakeNoSense) {
  const std::pair<Words, const char*> lines[] = {
      {{"--separator", "|"}, "--separator takes comma, semicolon or tab, not '|'"},
      {{"--decimal", "dot"}, "--decimal takes point or comma, not 'dot'"},
      {{"--separator", "comma", "--decimal", ","}, "would cut numbers in two"}};
  for (const auto& [marks, message] : lines) {
    ExpectFailure(RunKalmia(Words{"pca", "t.csv", "--csv", "d"} + marks), 2, message);
    ExpectFailure(RunKalmia(Words{"fill", "t.csv", "--out", "o"} + marks), 2, message);
  }
}

}  // namespace
