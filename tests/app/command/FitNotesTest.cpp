// Notes of fits on tables that mislead, and their silence on those that do not.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "CommandRun.h"
#include "TestTables.h"
#include "Words.h"

namespace {

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::Not;

/// The table with one more column, called `name`, that `cell` makes of the number of the row, from 0, and its line.
template <class CellOf>
std::string WithColumn(const std::string& table, const std::string& name, const CellOf& cell) {
  std::istringstream lines(table);
  std::string line, wider;
  for (int row = -1; std::getline(lines, line); ++row) wider += line + "," + (row < 0 ? name : cell(row, line)) + "\n";
  return wider;
}

std::string LastCell(const std::string& line) { return line.substr(line.rfind(',') + 1); }

TEST(FitNotes, NameAColumnThatCopiesY) {
  const std::string table = LinearTable(20, 4, 1);
  const std::string copied = WithColumn(table, "yield", [](int, const std::string& line) {
    return std::to_string(100 - 2 * std::stod(LastCell(line)));
  });
  for (const char* command : {"pls", "opls"}) {
    const Words line = {command, "-", "--y", "y", "--id", "name"};
    const std::string notes = RunWell(line, copied).error;
    const std::string note = "note: column 'yield' of X is a copy of y, but for shift and scale, so that any model of "
                             "it predicts well: --exclude leaves it out\n";
    EXPECT_THAT(notes, HasSubstr(note));
    EXPECT_EQ(notes.find(note), notes.rfind(note)) << "said once";
    EXPECT_THAT(RunWell(line, table).error, Not(HasSubstr("a copy of")));
    EXPECT_THAT(RunWell(line + Words{"--exclude", "yield"}, copied).error, Not(HasSubstr("a copy of")));
  }
  // A copy with an error of a thousandth of its spread is a measurement.
  const std::string measured = WithColumn(table, "yield", [](int row, const std::string& line) {
    return std::to_string(std::stod(LastCell(line)) + (row % 2 == 0 ? 0.05 : -0.05));
  });
  EXPECT_THAT(RunWell({"pls", "-", "--y", "y", "--id", "name"}, measured).error, Not(HasSubstr("a copy of")));
}

TEST(FitNotes, NameAColumnThatTellsClassesByItself) {
  const std::string table = WithColumn(LinearTable(20, 4, 1), "code", [](int row, const std::string&) {
    return std::to_string(row % 3 == 0 ? 7 : 3);
  });
  const std::string classes = WithColumn(table, "kind", [](int row, const std::string&) {
    return std::string(row % 3 == 0 ? "oak" : "elm");
  });
  const std::string notes = RunWell({"pls", "-", "--y", "kind", "--id", "name", "--exclude", "y"}, classes).error;
  EXPECT_THAT(notes, HasSubstr("note: column 'code' of X is a copy of the dummies of classes elm and oak, but for "
                               "shift and scale"));
  const Words without = {"pls", "-", "--y", "kind", "--id", "name", "--exclude", "y,code"};
  EXPECT_THAT(RunWell(without, classes).error, Not(HasSubstr("a copy of")));
}

TEST(FitNotes, SayThatACopiedNumberIsTheNameOfAClass) {
  std::string table = "name,kind,code,x\n";  // of three classes the column tells one, which many rows do not have
  for (int i = 0; i < 60; ++i) {
    table += "r" + std::to_string(i) + "," + std::to_string(1 + i / 20) + (i / 20 == 0 ? ",5," : ",2,") +
             std::to_string(i * 7 % 11 + 2 * (i / 20)) + "\n";
  }
  EXPECT_THAT(RunWell({"pls", "-", "--classes", "kind", "--id", "name"}, table).error,
              HasSubstr("note: column 'code' of X is a copy of the dummy of class 1, but for shift and scale"));
}

TEST(FitNotes, FindACopyWhereverItsRowsStandAndNoneThatOneRowLeaves) {
  // 200 rows of a Y that is constant but for ten rows. The line of a copy passes through all of them.
  for (const int first : {0, 95, 190}) {
    std::string copied = "name,y,x,copy\n", left = copied;
    for (int i = 0; i < 200; ++i) {
      const int y = i >= first && i < first + 10 ? 3 + i % 3 : 1;
      const std::string cells =
          "r" + std::to_string(i) + "," + std::to_string(y) + "," + std::to_string(i * 7 % 11) + ",";
      copied += cells + std::to_string(10 - 2 * y) + "\n";
      left += cells + std::to_string(i == 137 ? 9.5 : 10 - 2 * y) + "\n";
    }
    const Words line = {"pls", "-", "--y", "y", "--id", "name", "--components", "1", "--validation", "none"};
    EXPECT_THAT(RunWell(line, copied).error, HasSubstr("column 'copy' of X is a copy of y")) << first;
    EXPECT_THAT(RunWell(line, left).error, Not(HasSubstr("a copy of"))) << first;
  }
}

TEST(FitNotes, NeedFiveCommonCellsForACopy) {
  const auto table = [](int common) {
    return WithColumn(LinearTable(20, 4, 1), "copy", [common](int row, const std::string& line) {
      return row < common ? LastCell(line) : "";
    });
  };
  const Words line = {"pls", "-", "--y", "y", "--id", "name"};
  EXPECT_THAT(RunWell(line, table(5)).error, HasSubstr("a copy of"));
  EXPECT_THAT(RunWell(line, table(4)).error, Not(HasSubstr("a copy of")));
}

TEST(FitNotes, TellThatReplicatesShouldStayTogether) {
  const std::string table = WithColumn(LinearTable(20, 4, 1), "batch", [](int row, const std::string&) {
    return "b" + std::to_string(row / 2);
  });
  for (const char* method : {"refit", "component"}) {
    for (const char* command : {"pls", "opls"}) {
      const Words line = {command, "-", "--y", "y", "--exclude", "name", "--validation", method, "--id"};
      const std::string notes = RunWell(line + Words{"batch"}, table).error;
      EXPECT_THAT(notes, HasSubstr("note: names of several rows: b0, b1, b2 and 7 more. Replicates should be left "
                                   "out together, or a row's twin that stays in tells its value: --group-column "
                                   "does it\n"));
      EXPECT_EQ(notes.find("Replicates"), notes.rfind("Replicates")) << "said once";
      EXPECT_THAT(RunWell(line + Words{"batch", "--group-column", "batch"}, table).error, Not(HasSubstr("Replicates")));
      EXPECT_THAT(RunWell(line + Words{"name"}, table).error, Not(HasSubstr("Replicates")));
    }
  }
  EXPECT_THAT(RunWell({"pca", "-", "--exclude", "name", "--id", "batch"}, table).error, HasSubstr("Replicates"));
  const std::string turned = WithColumn(LinearTable(20, 4, 1), "batch", [](int row, const std::string&) {
    return row < 18 ? "c" + std::to_string(9 - row / 6) : std::string("c" + std::to_string(row));
  });
  EXPECT_THAT(RunWell({"pca", "-", "--exclude", "name", "--id", "batch"}, turned).error,
              HasSubstr("note: names of several rows: c9, c8 and c7.")) << "in the order of the rows";
  EXPECT_THAT(RunWell({"pls", "-", "--y", "y", "--exclude", "name", "--id", "batch", "--validation", "none",
                       "--components", "1"},
                      table)
                  .error,
              Not(HasSubstr("Replicates")));
}

TEST(FitNotes, TellThatLimitsCountRowsAndNotGroups) {
  const std::string table = WithColumn(LinearTable(20, 4, 1), "batch", [](int row, const std::string&) {
    return "b" + std::to_string(row / 2);
  });
  constexpr auto kNote = "note: limits of rows, intervals and degrees of freedom count 20 rows, not the 10 groups of "
                         "batch";
  for (const char* command : {"pls", "opls"}) {
    const Words line = {command, "-", "--y", "y", "--id", "name", "--group-column"};
    EXPECT_THAT(RunWell(line + Words{"batch"}, table).error, HasSubstr(kNote));
  }
  EXPECT_THAT(RunWell({"pca", "-", "--id", "name", "--group-column", "batch"}, table).error,
              HasSubstr("note: limits of rows count 20 rows, not the 10 groups of batch")) << "it has no intervals";
  const std::string classes = WithColumn(table, "kind", [](int row, const std::string&) {
    return std::string(row % 6 < 2 ? "oak" : "elm");
  });
  EXPECT_THAT(RunWell({"pls", "-", "--y", "kind", "--id", "name", "--exclude", "y", "--group-column", "batch",
                       "--components", "1"},
                      classes)
                  .error,
              HasSubstr("note: limits of rows count 20 rows, not the 10 groups of batch")) << "nor have classes";
  const std::string alone = WithColumn(LinearTable(20, 4, 1), "batch", [](int row, const std::string&) {
    return "b" + std::to_string(row);
  });
  EXPECT_THAT(RunWell({"pls", "-", "--y", "y", "--id", "name", "--group-column", "batch"}, alone).error,
              Not(HasSubstr("count 20 rows")));
}

TEST(FitText, CountsTheRowsBeyondALimitAndNamesThem) {
  const json rows =
      RunWell({"pls", ExampleTable("wine.csv"), "--classes", "cultivar", "--id", "sample", "--json"}).Json();
  std::vector<std::string> beyond;
  for (const json& row : rows["rowStatistics"]) {
    const std::string flags = row["flags"].dump();
    if (flags.find("99 %") != std::string::npos) beyond.push_back(row["row"]);
  }
  ASSERT_GT(beyond.size(), 0U);
  const std::string text = RunWell({"pls", ExampleTable("wine.csv"), "--classes", "cultivar", "--id", "sample"}).output;
  EXPECT_THAT(text, HasSubstr(std::to_string(beyond.size()) + " beyond one of 99 %: " + beyond.front()));
}

TEST(FitNotes, TellThatAFilterHasSeenY) {
  const ScratchFolder folder;
  const Words made = {"filter", "-", "--y", "y", "--id", "name", "--components", "1", "--out", folder.Path("f.csv"),
                      "--save", folder.Path("m")};
  EXPECT_THAT(RunWell(made, LinearTable(20, 4, 1)).error, HasSubstr("note: the filter has seen Y of all rows"));
  const Words applied = {"filter", "-", "--model", folder.Path("m"), "--out", folder.Path("g.csv")};
  constexpr auto kOwn = "note: the filter was made of these rows and has seen their Y: a cross-validation of a model";
  const std::string own = LinearTable(20, 4, 1);
  EXPECT_THAT(RunWell(applied, own).error, HasSubstr(kOwn));
  EXPECT_THAT(RunWell(applied, own + "new,1,2,3,4,5\n").error, HasSubstr(kOwn)) << "beside another one";
  EXPECT_EQ(RunWell(applied, LinearTable(20, 4, 2)).error, "") << "other rows with the same names";
  EXPECT_EQ(RunWell(applied, own.substr(0, own.rfind("\n", own.size() - 2) + 1)).error, "") << "all but one";
  RunWell(made + Words{"--no-rows"}, own);
  EXPECT_EQ(RunWell(applied, own).error, "") << "a filter that does not know its rows";
}

TEST(FitNotes, KeepSilentOnOrdinaryTables) {
  const Words lines[] = {{"pls", ExampleTable("gasoline.csv"), "--y", "octane", "--id", "sample"},
                         {"opls", ExampleTable("gasoline.csv"), "--y", "octane", "--id", "sample", "--scale", "centre"},
                         {"pls", ExampleTable("wine.csv"), "--classes", "cultivar", "--id", "sample"},
                         {"pls", ExampleTable("wine.csv"), "--y", "alcohol", "--id", "sample", "--exclude", "cultivar"},
                         {"pca", ExampleTable("wine.csv"), "--id", "sample", "--exclude", "cultivar"},
                         {"pls", ExampleTable("oliveoil.csv"), "--y", "yellow,green", "--id", "sample"}};
  for (const Words& line : lines) {
    const std::string notes = RunWell(line).error;
    for (const char* words : {"a copy of", "Replicates", "the jack-knife has", "not predicted while left out",
                              "keeps no component"}) {
      EXPECT_THAT(notes, Not(HasSubstr(words))) << line[1];
    }
  }
}

}  // namespace
