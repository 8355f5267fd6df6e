// `kalmia opls --save-cv` and `--resume`: going on from a stored cross-validation, and what is refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "FramedFile.h"
#include "TestTables.h"
#include "Words.h"
#include "kalmia/analysis/file/OPLSCvFile.h"

namespace {

using kalmia::analysis::OPLSCvFileBytes;
using kalmia::analysis::ReadOPLSCvFile;
using kalmia::analysis::StoredOPLSCv;
using ::testing::HasSubstr;

using namespace framed;

/// What a run prints, and the files that it writes, but for the names of files.
struct Result {
  nlohmann::json printed;
  std::vector<std::string> files;
  std::string crossValidation;
};

bool operator==(const Result& a, const Result& b) {
  return a.printed == b.printed && a.files == b.files && a.crossValidation == b.crossValidation;
}

Result ResultOf(const ScratchFolder& folder, const Words& arguments) {
  const std::string csv = folder.Path("results"), cv = folder.Path("result.cv");
  Result result;
  const Words outputs = {"--json", "--csv", csv, "--save-cv", cv, "--save", folder.Path("m")};
  result.printed = RunWell(arguments + outputs).Json();
  for (const auto& file : result.printed["csvFiles"]) result.files.push_back(ReadWholeFile(file));
  EXPECT_EQ(result.files.size(), 12U);
  result.files.push_back(ReadWholeFile(folder.Path("m")));
  result.crossValidation = ReadWholeFile(cv);
  return result;
}

/// The words for tables with one complete Y and with holes in X and several Y.
std::vector<Words> Fits(const ScratchFolder& folder) {
  return {{"opls", folder.Write("one.csv", LinearTable(30, 6, 2)), "--y", "y", "--id", "name"},
          {"opls", folder.Write("several.csv", WithHoles(UnrelatedTable(24, 6, 3, 5), 11)), "--y", "y1,y2,y3",
           "--predictive", "2", "--groups", "5", "--scale", "pareto"}};
}

TEST(OPLSResume, EqualsAnUninterruptedRunWhereverTheFirstOneStopped) {
  const ScratchFolder folder;
  for (const Words& fit : Fits(folder)) {
    const Result whole = ResultOf(folder, fit + Words{"--orthogonal", "4"});
    ASSERT_EQ(whole.printed["orthogonal"], 4);
    for (const char* stop : {"0", "1", "2", "3", "4"}) {
      const std::string cv = folder.Path("cv");
      RunWell(fit + Words{"--orthogonal", stop, "--save-cv", cv});
      EXPECT_TRUE(ResultOf(folder, fit + Words{"--orthogonal", "4", "--resume", cv}) == whole) << stop;
    }
  }
}

TEST(OPLSResume, TakesFewerComponentsThanTheFileHasFromItsHistory) {
  const ScratchFolder folder;
  for (const Words& fit : Fits(folder)) {
    const std::string cv = folder.Path("cv");
    RunWell(fit + Words{"--orthogonal", "3", "--save-cv", cv});
    for (const char* fewer : {"0", "1", "2"}) {
      const Result resumed = ResultOf(folder, fit + Words{"--orthogonal", fewer, "--resume", cv});
      const Result fresh = ResultOf(folder, fit + Words{"--orthogonal", fewer});
      EXPECT_EQ(resumed.printed, fresh.printed) << fewer;
      EXPECT_EQ(resumed.files, fresh.files) << fewer;
      EXPECT_EQ(resumed.crossValidation, ReadWholeFile(cv)) << "what was judged is not forgotten";
    }
  }
}

TEST(OPLSResume, GoesOnBehindAComponentThatAutoDidNotKeep) {
  const ScratchFolder folder;
  for (const Words& fit : Fits(folder)) {
    const std::string cv = folder.Path("cv");
    const Result automatic = ResultOf(folder, fit + Words{"--orthogonal", "auto"});
    ASSERT_EQ(automatic.printed["components"].back()["kept"], false);
    folder.Write("cv", automatic.crossValidation);
    EXPECT_TRUE(ResultOf(folder, fit + Words{"--resume", cv}) == automatic);
    const Result whole = ResultOf(folder, fit + Words{"--orthogonal", "4"});
    EXPECT_TRUE(ResultOf(folder, fit + Words{"--orthogonal", "4", "--resume", cv}) == whole);
  }
}

TEST(OPLSResume, EndsAsEarlyAsAnUninterruptedRun) {
  const ScratchFolder folder;
  const Words fit = {"opls", folder.Write("t.csv", "a,b,y\n1,2,1\n2,1,3\n3,5,2\n4,3,5\n5,4,4\n6,7,6\n"), "--y", "y",
                     "--groups", "4"};
  const Result whole = ResultOf(folder, fit + Words{"--orthogonal", "2"});
  ASSERT_NE(whole.printed["endedEarly"], nullptr);
  const std::string cv = folder.Path("cv");
  for (const char* stop : {"0", "1", "2"}) {
    RunWell(fit + Words{"--orthogonal", stop, "--save-cv", cv});
    EXPECT_TRUE(ResultOf(folder, fit + Words{"--orthogonal", "2", "--resume", cv}) == whole) << stop;
  }
}

TEST(OPLSResume, TakesTheQ2OfJudgedComponentsFromTheFile) {
  const ScratchFolder folder;
  const Words fit = Fits(folder).front();
  StoredOPLSCv stored = ReadOPLSCvFile(ResultOf(folder, fit + Words{"--orthogonal", "2"}).crossValidation, "cv");
  stored.state.steps[1].q2Cum = 0.125F;  // no such Q2 comes out of the table
  const std::string cv = folder.Write("cv", OPLSCvFileBytes(stored));
  const auto components = RunWell(fit + Words{"--orthogonal", "2", "--resume", cv, "--json"}).Json()["components"];
  EXPECT_EQ(components[1]["q2Cum"], 0.125);
}

TEST(OPLSResume, MayGoOnInTheSameFileAndReadStandardInput) {
  const ScratchFolder folder;
  const Words fit = Fits(folder).front();
  const std::string cv = folder.Path("cv");
  RunWell(fit + Words{"--orthogonal", "1", "--save-cv", cv});
  const std::string first = ReadWholeFile(cv);
  const CommandResult run = RunWell(fit + Words{"--orthogonal", "3", "--resume", cv, "--save-cv", cv});
  EXPECT_THAT(run.output, HasSubstr("Saved the cross-validation as " + cv + "\n"));
  EXPECT_EQ(ReadWholeFile(cv), ResultOf(folder, fit + Words{"--orthogonal", "3"}).crossValidation);
  EXPECT_EQ(RunWell(fit + Words{"--orthogonal", "3", "--resume", "-", "--json"}, first).Json(),
            RunWell(fit + Words{"--orthogonal", "3", "--validation", "component", "--json"}).Json());
}

TEST(OPLSResume, RefusesAnotherTableOtherGroupsScalingOrBlockWithOneLineEach) {
  const ScratchFolder folder;
  const std::string text = UnrelatedTable(12, 3, 2, 1);
  std::string otherCell = text;
  otherCell.replace(otherCell.find_last_of(',') + 1, 1, "7");
  if (otherCell == text) otherCell.replace(otherCell.find_last_of(',') + 1, 1, "8");
  std::string otherName = text;
  otherName.replace(otherName.find("x2"), 2, "z2");
  const std::string table = folder.Write("t.csv", text), cv = folder.Path("cv");
  const std::string withCell = folder.Write("cell.csv", otherCell), withName = folder.Write("name.csv", otherName);
  std::string exchanged = text;
  exchanged.replace(exchanged.find("x2"), 2, "x1").replace(exchanged.find("x1"), 2, "x2");
  std::string more;
  for (std::size_t from = 0, line = 0; from < text.size(); ++line) {
    const std::size_t end = text.find('\n', from);
    more += (line == 0 ? "new" : std::to_string(line)) + "," + text.substr(from, end + 1 - from);
    from = end + 1;
  }
  const std::string turned = folder.Write("turned.csv", exchanged), withColumn = folder.Write("more.csv", more);
  const std::string steps = folder.Write("steps", "linear:2");
  const Words judged = {"--predictive", "1", "--orthogonal", "1"};
  RunWell(Words{"opls", table, "--y", "y1,y2", "--save-cv", cv} + judged);
  struct Case {
    Words words;
    std::string message;
  };
  const Case cases[] = {
      {Words{"opls", withCell, "--y", "y1,y2"} + judged,
       cv + " was made of another table or with other steps: its cells are others"},
      {Words{"opls", table, "--y", "y1,y2", "--steps-file", steps} + judged,
       cv + " was made of another table or with other steps: its cells are others"},
      {Words{"opls", withName, "--y", "y1,y2"} + judged,
       cv + " was made of another table or with other steps: its X columns are others, 'x2' was among them"},
      {Words{"opls", table, "--y", "y1,y2", "--exclude", "x3"} + judged, "others, 'x3' was among them"},
      {Words{"opls", withColumn, "--y", "y1,y2"} + judged, "its X columns are others, 'new' was not among them"},
      {Words{"opls", turned, "--y", "y1,y2"} + judged, "its X columns are others, their order is another"},
      {Words{"opls", table, "--y", "y2,y1"} + judged, "of another table: its Y is y1 and y2, not y2 and y1"},
      {Words{"opls", table, "--y", "y1,y2", "--groups", "4"} + judged,
       cv + " was made with 7 cross-validation groups, not 4"},
      {Words{"opls", table, "--y", "y1,y2", "--scale", "centre"} + judged,
       cv + " was made with scaling uv, not centre"},
      {{"opls", table, "--y", "y1,y2", "--predictive", "2", "--orthogonal", "1"},
       cv + " was made with 1 predictive component, not 2"}};
  for (const Case& each : cases) {
    const std::string out = folder.Path("never");
    ExpectFailure(RunKalmia(each.words + Words{"--resume", cv, "--save-cv", out, "--save", folder.Path("nor")}), 1,
                  each.message);
  }
  EXPECT_EQ(folder.Names(), (Words{"cell.csv", "cv", "more.csv", "name.csv", "steps", "t.csv", "turned.csv"}));
}

TEST(OPLSResume, RefusesAsManyGroupsThatDivideTheRowsInAnotherWay) {
  const ScratchFolder folder;
  const std::string table = folder.Write(
      "t.csv", "a,b,y,g,h\n1,2,1,u,u\n2,1,3,u,v\n3,5,2,v,v\n4,3,5,v,u\n5,4,4,u,v\n6,7,6,v,u\n");
  const std::string cv = folder.Path("cv");
  const Words fit = {"opls", table, "--y", "y", "--x", "a..b", "--orthogonal", "0"};
  RunWell(fit + Words{"--group-column", "g", "--save-cv", cv});
  ExpectFailure(RunKalmia(fit + Words{"--group-column", "h", "--resume", cv}), 1,
                cv + " was made with other cross-validation groups: its rows are divided in another way");
  RunWell(fit + Words{"--group-column", "g", "--resume", cv});
}

TEST(OPLSResume, DoesNotMindOtherNamesOfRows) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(12, 4, 1)), cv = folder.Path("cv");
  RunWell({"opls", table, "--y", "y", "--id", "name", "--orthogonal", "1", "--save-cv", cv});
  const Words unnamed = {"opls", table, "--y", "y", "--exclude", "name", "--orthogonal", "2", "--json",
                         "--validation", "component"};
  EXPECT_EQ(RunWell(unnamed + Words{"--resume", cv}).Json(), RunWell(unnamed).Json());
}

TEST(OPLSResume, NamesFilesThatWouldBeLost) {
  const ScratchFolder folder;
  const Words fit = Fits(folder).front();
  const std::string cv = folder.Path("cv");
  RunWell(fit + Words{"--save-cv", cv});
  ExpectFailure(RunKalmia(fit + Words{"--save-cv", fit[1]}), 2, "--save-cv would overwrite the table");
  ExpectFailure(RunKalmia(fit + Words{"--save-cv", cv, "--save", cv}), 2, "would both write " + cv);
  ExpectFailure(RunKalmia(fit + Words{"--resume", cv, "--save", cv}), 2, "--save would overwrite the file of --resume");
  ExpectFailure(RunKalmia({"opls", "-", "--y", "y", "--resume", "-"}), 2,
                "only one of TABLE and --resume can be -, standard input");
  ExpectFailure(RunKalmia(fit + Words{"--resume", folder.Path("none")}), 3, folder.Path("none"));
}

/// The bytes of a cross-validation of 8 rows, 3 X columns and 2 Y columns with one orthogonal component.
std::string SmallCvFile() {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", UnrelatedTable(8, 3, 2, 1)), cv = folder.Path("cv");
  RunWell({"opls", table, "--y", "y1,y2", "--predictive", "1", "--orthogonal", "1", "--groups", "2", "--save-cv", cv});
  return ReadWholeFile(cv);
}

TEST(OPLSResume, RefusesABrokenFileWithOneLineAndExitCode3) {
  const ScratchFolder folder;
  const std::string bytes = SmallCvFile();
  const std::string table = folder.Write("t.csv", UnrelatedTable(8, 3, 2, 1)), model = folder.Path("m");
  RunWell({"opls", table, "--y", "y1,y2", "--orthogonal", "0", "--save", model});
  std::string damaged = bytes;
  damaged.back() = static_cast<char>(damaged.back() ^ 1);
  const std::pair<std::string, const char*> files[] = {
      {"a,b\n1,2\n", " is no cross-validation of kalmia opls"},
      {ReadWholeFile(model), " is a model file, no cross-validation of kalmia opls"},
      {"", " is empty, no cross-validation of kalmia opls"},
      {bytes.substr(0, 400), " is cut: 348 of "},
      {bytes.substr(0, 30), " is cut: it ends within its header"},
      {WithLength(bytes, std::uint64_t{1} << 62U), " is cut"},
      {bytes + "x", " is damaged: it goes on behind its end"},
      {damaged, " is damaged: its checksum does not match"},
      {WithVersion(bytes, 0), " is damaged: there is no version 0"},
      {WithVersion(bytes, 2), " is a cross-validation file of version 2; this kalmia reads versions up to 1"}};
  for (const auto& [content, message] : files) {
    const std::string cv = folder.Write("cv", content);
    ExpectFailure(RunKalmia({"opls", table, "--y", "y1,y2", "--resume", cv}), 3, "kalmia: " + cv + message);
  }
  ExpectFailure(RunKalmia({"info", folder.Write("cv", damaged)}), 3,
                folder.Path("cv") + " is damaged: its checksum does not match");
}

TEST(OPLSResume, TakesAFileThatInfoShows) {
  const ScratchFolder folder;
  const std::string cv = folder.Path("cv");
  const nlohmann::json fit = RunWell({"opls", folder.Write("t.csv", LinearTable(30, 6, 2)), "--y", "y", "--id", "name",
                                      "--orthogonal", "2", "--groups", "5", "--save-cv", cv, "--json"}).Json();
  const std::string text = RunWell({"info", cv}).output;
  for (const char* part : {"of kalmia opls\n", "Rows              30, in 5 groups\n", "Y                 y\n",
                           "X columns         6, ", "x1, x2, x3, x4, x5, x6\n", "1 predictive component  ",
                           "orthogonal 1  ", "orthogonal 2  "}) {
    EXPECT_THAT(text, HasSubstr(part));
  }
  const nlohmann::json info = RunWell({"info", cv, "--json"}).Json();
  ASSERT_EQ(fit["components"].size(), 3U);
  for (std::size_t a = 0; a < 3; ++a) EXPECT_EQ(info["q2Cum"][a], fit["components"][a]["q2Cum"]) << a;
  EXPECT_EQ(info["groupOfRow"][6], 3);  // row i is in group i mod 5, counted from 0
  EXPECT_EQ(info["x"].size(), 6U);
}

TEST(OPLSResume, IsNamedByTheHelp) {
  const std::string help = RunWell({"opls", "--help"}).output;
  for (const char* option : {"--save-cv FILE", "--resume FILE"}) EXPECT_THAT(help, HasSubstr(option));
}

/// What the checksum does not see and the shapes of the file's own parts do not tell: the rounds' matrices.
TEST(OPLSResume, RefusesMatricesOfOtherShapes) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", UnrelatedTable(8, 3, 2, 1)), cv = folder.Path("cv");
  const Words fit = {"opls", table, "--y", "y1,y2", "--predictive", "1", "--orthogonal", "1", "--groups", "2"};
  RunWell(fit + Words{"--save-cv", cv});
  StoredOPLSCv stored = ReadOPLSCvFile(ReadWholeFile(cv), "cv");
  stored.state.data.POPerRound[1] = NCDataMatrix<float>(1, 2, 0.5F);
  folder.Write("cv", OPLSCvFileBytes(stored));
  ExpectFailure(RunKalmia(fit + Words{"--resume", cv}), 3, cv + " is damaged: its parts do not fit together");
}

}  // namespace
