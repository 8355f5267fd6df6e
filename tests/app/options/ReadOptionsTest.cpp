// The options of every command that reads a table.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "Words.h"

namespace {

using ::testing::HasSubstr;

/// A run on a table of columns id, x, y that gives a result of the table alone.
struct TableReader {
  std::string command;
  Words options;
};

const TableReader kReaders[] = {
    {"describe", {}},
    {"pls", {"--y", "y", "--id", "id", "--components", "1", "--groups", "2"}},
    {"pca", {"--id", "id", "--components", "1", "--groups", "2"}},
    {"opls", {"--y", "y", "--id", "id", "--predictive", "1", "--orthogonal", "0", "--groups", "2"}},
    {"cluster", {"--id", "id", "--method", "single"}},
    {"chart", {"--column", "x", "--type", "individual"}},
    {"histogram", {"--column", "x"}},
    {"spectrum", {"--column", "x", "--json"}},
    {"fisher", {}}};

/// The same table, for readers with their options and without.
const std::string kPlain = "id,x,y\na,1,2\nb,,1\nc,4,3\nd,3,5\ne,6,4\n";
const std::string kOdd = "a report\nof \"today\n# units: m\nid,x,y\na,1,2\n#b,7,7\nb,-9,1\nc,4,3\nd,3,5\ne,6,4\n";
const Words kReading = {"--skip-lines", "2", "--comment", "#", "--na", "-9"};

TEST(ReadOptions, AreUnderstoodByEveryCommandThatReadsATable) {
  const ScratchFolder plain, odd;
  const std::string plainTable = plain.Write("t.csv", kPlain), oddTable = odd.Write("t.csv", kOdd);
  for (const TableReader& reader : kReaders) {
    SCOPED_TRACE(reader.command);
    Words words = {reader.command, plainTable};
    words.insert(words.end(), reader.options.begin(), reader.options.end());
    if (reader.command == "fisher") continue;  // takes no hole: below
    const CommandResult expected = RunKalmia(words);
    EXPECT_EQ(expected.exitCode, 0) << expected.error;
    words[1] = oddTable;
    words.insert(words.end(), kReading.begin(), kReading.end());
    CommandResult result = RunKalmia(words);
    for (std::size_t at = result.output.find(oddTable); at != std::string::npos; at = result.output.find(oddTable)) {
      result.output.replace(at, oddTable.size(), plainTable);
    }
    EXPECT_EQ(result.output, expected.output) << result.error;
  }
  const std::string counts = odd.Write("c.csv", "title\na,b\n#\n3,1\n2,4\n");
  EXPECT_EQ(RunKalmia({"fisher", counts, "--skip-lines", "1", "--comment", "#"}).exitCode, 0);
  ExpectFailure(RunKalmia({"fisher", counts, "--skip-lines", "1", "--comment", "#", "--na", "4"}), 1,
                "row 2 (line 5), column 'b': a count is missing");
}

TEST(ReadOptions, AreToldByTheHelpOfEveryCommandThatReadsATableWithWhatItUnderstandsBesides) {
  for (const std::string command : {"describe", "pls", "pca", "opls", "o2pls", "predict", "fill", "filter",
                                    "preprocess", "cluster", "chart", "histogram", "spectrum", "fisher"}) {
    const std::string help = RunKalmia({command, "--help"}).output;
    for (const char* word : {"--na WORD", "--skip-lines N", "--comment CHAR", "sep=;", ".gz"}) {
      EXPECT_THAT(help, HasSubstr(word)) << command;
    }
  }
}

TEST(ReadOptions, AreUnderstoodByBothTablesOfO2PLS) {
  const ScratchFolder folder;
  const std::string x = folder.Write("x.csv", "# \"\nid,a,b\nu,1,3\nv,2,1\nw,4,4\nz,5,2\n");
  const std::string y = folder.Write("y.csv", "id,c,d\n# \"\nu,1,2\nv,2,4\nw,4,1\nz,7,3\n");
  EXPECT_EQ(RunKalmia({"o2pls", x, y, "--id", "id", "--comment", "#", "--joint", "1", "--x-unique", "0", "--y-unique",
                       "0", "--groups", "2"})
                .exitCode,
            0);
}

TEST(ReadOptions, LeaveWhatTheyPassOverWhereATableIsWrittenAgain) {
  const ScratchFolder folder;
  std::string text = "a \"report\nsep=;\nid;x;y;z\r\n# x\";\"\r\n";
  for (int r = 0; r < 12; ++r) {
    text += "r" + std::to_string(r) + ";" + std::to_string(r * r) + ",5;" + std::to_string(3 * r) + ";" +
            (r == 5 ? "?" : std::to_string(7 - r)) + "\n";
  }
  const std::string table = folder.Write("t.csv", text), out = folder.Path("o.csv");
  const CommandResult run = RunKalmia({"fill", table, "--out", out, "--id", "id", "--components", "0", "--na", "?",
                                       "--skip-lines", "1", "--comment", "#"});
  EXPECT_EQ(run.exitCode, 0) << run.error;
  const std::string filled = ReadWholeFile(out);
  const std::size_t hole = text.find('?');
  EXPECT_EQ(filled.substr(0, hole), text.substr(0, hole));
  EXPECT_THAT(filled, HasSubstr(text.substr(hole + 1)));
  EXPECT_EQ(filled.find('?'), std::string::npos);
  const std::string filtered = folder.Path("f.csv");
  EXPECT_EQ(RunKalmia({"filter", out, "--out", filtered, "--y", "y", "--components", "1", "--id", "id", "--skip-lines",
                       "1", "--comment", "#"})
                .exitCode,
            0);
  EXPECT_EQ(ReadWholeFile(filtered).substr(0, text.find("r0")), text.substr(0, text.find("r0")));
}

/// A table in which -999 is missing in a column that is filled, in one that is not, and in a name.
const std::string kMinus = "id,a,b,c\n-999,1,2,-999\nv,-999,3,1\nw,3,NA,\nz,2,1,4\n";
const Words kMinusMissing = {"--na=-999", "--id", "id"};

TEST(ReadOptions, TellHowManyCellsStayMissingByAWordThatTheNextReaderDoesNotKnow) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", kMinus), out = folder.Path("o.csv");
  Words fill = {"fill", table, "--exclude", "c", "--components", "0", "--out", out, "--json"};
  fill.insert(fill.end(), kMinusMissing.begin(), kMinusMissing.end());
  const CommandResult filled = RunKalmia(fill);
  EXPECT_EQ(filled.exitCode, 0);
  EXPECT_EQ(ReadWholeFile(out), "id,a,b,c\n-999,1,2,-999\nv,2,3,1\nw,3,2,\nz,2,1,4\n");
  const std::string note = "1 missing cell stays -999 in the output: read it with the same words too";
  EXPECT_EQ(filled.Json()["notes"].back(), note);
  EXPECT_THAT(filled.error, HasSubstr("note: " + note));

  Words filter = {"filter", table, "--y", "b", "--components", "1", "--out", out, "--na", "?"};
  filter.insert(filter.end(), kMinusMissing.begin(), kMinusMissing.end());
  const CommandResult filtered = RunKalmia(filter);
  EXPECT_EQ(filtered.exitCode, 0) << filtered.error;
  EXPECT_THAT(filtered.error,
              HasSubstr("note: 2 missing cells stay ? or -999 in the output: read it with the same words too"));

  const std::string plain = folder.Write("p.csv", "id,a,b\nu,1,2\nv,-999,3\nw,NA,1\n");
  EXPECT_THAT(RunKalmia({"fill", plain, "--components", "0", "--out", out, "--na=-999", "--id", "id"}).error,
              ::testing::Not(HasSubstr("in the output"))) << "it is filled";
}

TEST(ReadOptions, LeaveEmptyFieldsWhereATableIsWrittenAnewSoThatNobodyHasToKnowTheirWords) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", kMinus), out = folder.Path("o.csv");
  Words fill = {"fill", table, "--exclude", "c", "--components", "0", "--out", out, "--separator", "semicolon"};
  fill.insert(fill.end(), kMinusMissing.begin(), kMinusMissing.end());
  const CommandResult filled = RunKalmia(fill);
  EXPECT_EQ(filled.exitCode, 0);
  EXPECT_EQ(ReadWholeFile(out), "id;a;b;c\n-999;1;2;\nv;2;3;1\nw;3;2;\nz;2;1;4\n") << "names stay";
  EXPECT_THAT(filled.error, ::testing::Not(HasSubstr("in the output")));
  Words steps = {"preprocess", table, "--x", "a", "--steps", "linear", "--out", out};
  steps.insert(steps.end(), kMinusMissing.begin(), kMinusMissing.end());
  EXPECT_EQ(RunKalmia(steps).exitCode, 0);
  EXPECT_EQ(ReadWholeFile(out), "id,b,c,a\n-999,2,,1\nv,3,1,\nw,,,3\nz,1,4,2\n");
  const std::string alone = folder.Write("a.csv", "a\n-999\n1\n");
  EXPECT_EQ(RunKalmia({"fill", alone, "--components", "0", "--out", out, "--na=-999", "--decimal", "point"}).exitCode,
            0);
  EXPECT_EQ(ReadWholeFile(out), "a\n\"\"\n1\n") << "a blank line would be no row";
}

TEST(ReadOptions, AreUnderstoodByPredictAndPreprocess) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", kPlain), odd = folder.Write("o.csv", kOdd), model = folder.Path("m");
  ASSERT_EQ(RunKalmia({"pls", table, "--y", "y", "--id", "id", "--components", "1", "--groups", "2", "--save", model})
                .exitCode,
            0);
  const Words reading = kReading;
  Words predict = {"predict", model, odd};
  predict.insert(predict.end(), reading.begin(), reading.end());
  EXPECT_EQ(RunKalmia(predict).exitCode, 0);
  Words preprocess = {"preprocess", odd, "--steps", "linear", "--id", "id", "--out", folder.Path("p.csv")};
  preprocess.insert(preprocess.end(), reading.begin(), reading.end());
  EXPECT_EQ(RunKalmia(preprocess).exitCode, 0);
  EXPECT_THAT(ReadWholeFile(folder.Path("p.csv")), HasSubstr("\nb,,1\n"));
}

TEST(ReadOptions, RefuseWhatIsNoCommentCharacterAndNoNumberOfLines) {
  for (const std::string comment : {"//", " ", ",", ";", "\"", "\t", "-", "+", ".", "0", "7", "§", "\xA7"}) {
    ExpectFailure(RunKalmia({"describe", "-", "--comment=" + comment}), 2, "--comment takes one ASCII character");
  }
  ExpectFailure(RunKalmia({"describe", "-", "--skip-lines", "-1"}), 2, "--skip-lines takes a whole number from 0 on");
  ExpectFailure(RunKalmia({"describe", "-", "--skip-lines", "3"}, "a\n1\n"), 1,
                "standard input is empty but for the 3 lines skipped");
  ExpectFailure(RunKalmia({"describe", "-", "--comment", "#"}, "#a\n#1\n"), 1, "is empty but for comments");
}

}  // namespace
