// kalmia cluster where it cannot go on: one line, the right exit code, no files left.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "TestTables.h"

namespace {

using ::testing::HasSubstr;

struct BadClusterTable {
  const char* what;
  const char* table;
  const char* message;
};

const BadClusterTable kBadClusterTables[] = {
    {"no rows", "x,y\n", "has a header but no data rows"},
    {"nothing", "", "standard input is empty"},
    {"one row", "x,y\n1,2\n", "standard input: there is only one row: clusters take two or more"},
    {"every cell missing", "x,y\n,NA\nNA,\n", "every cell is missing; empty columns: x and y"},
    {"a row without a cell", "id,x,y\na,1,2\nb,,\nc,3,5\n", "more than half of the cells are missing in row b"},
    {"rows without more than half of their cells", "id,x,y,z\na,1,2,3\nb,1,,\nc,,,5\n",
     "more than half of the cells are missing in rows b and c"},
    {"two rows without a common cell", "id,w,x,y,z\na,1,2,,\nb,,,3,4\nc,5,6,7,8\n",
     "the rows 'a' and 'b' have 0 of 4 columns in common"},
    {"an infinite cell", "id,x\na,1\nb,inf\n", "row 2 (line 3), column 'x': 'inf' is infinite"},
    {"a cell beyond single precision", "id,x\na,1\nb,1e39\n", "'1e39' is too large for single precision"},
    {"a word among numbers", "id,x\na,1\nb,one\n", "'one' is not a number"},
    {"text alone", "id,x\na,u\nb,v\n", "no column of numbers is left; text columns: x"},
    {"distances beyond single precision", "id,x\na,-3e38\nb,3e38\n", "distances are too large for single precision"}};

TEST(FailureOfCluster, IsOneLineWithExitCode1ForBadDataAndLeavesNoFile) {
  for (const BadClusterTable& bad : kBadClusterTables) {
    for (const char* method : {"ward", "single"}) {
      SCOPED_TRACE(std::string(bad.what) + ", " + method);
      const ScratchFolder folder;
      const bool named = std::string(bad.table).rfind("id,", 0) == 0;
      std::vector<std::string> arguments = {"cluster", "-", "--method", method, "--scale", "none", "--svg",
                                            folder.Path("s"), "--merges", folder.Path("m"), "--newick",
                                            folder.Path("n"), "--csv", folder.Path("c"), "--cut", "1"};
      if (named) arguments.insert(arguments.end(), {"--id", "id"});
      ExpectFailure(RunKalmia(arguments, bad.table), 1, bad.message);
      EXPECT_EQ(folder.Names(), std::vector<std::string>());
    }
  }
}

TEST(FailureOfCluster, SaysWhatIsConstantWhereNothingCanBeScaled) {
  ExpectFailure(
      RunKalmia({"cluster", "-", "--method", "ward"}, "x,y\n1,2\n1,2\n"), 1,
      "no column varies, so none can be scaled (without scaling they would be taken); constant columns: x and y");
}

TEST(FailureOfCluster, RefusesMoreRowsThanAreNumberedAndMoreClustersThanRows) {
  std::string table = "x\n";
  for (int i = 0; i < 65536; ++i) table += std::to_string(i) + "\n";
  ExpectFailure(RunKalmia({"cluster", "-", "--method", "single"}, table), 1,
                "65536 rows are too many for a cluster tree, which takes up to 65535");
  ExpectFailure(RunKalmia({"cluster", "-", "--method", "single", "--cut", "3"}, "x\n1\n2\n"), 1,
                "2 rows cannot be cut into 3 clusters");
}

TEST(FailureOfCluster, IsExitCode2ForACommandLineThatMakesNoSense) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", "x\n1\n2\n");
  const std::pair<std::vector<std::string>, const char*> lines[] = {
      {{}, "cluster needs --method METHOD"},
      {{"--method", "average"}, "--method takes one of ward and single, not 'average'"},
      {{"--method", "ward", "--cut", "0"}, "--cut takes a whole number from 1 on, not '0'"},
      {{"--method", "ward", "--height", "-1"}, "--height takes a number from 0 on, not '-1'"},
      {{"--method", "ward", "--height", "1", "--cut", "2"}, "do not go together"},
      {{"--method", "ward", "--csv", folder.Path("c")}, "--csv writes clusters: give --cut or --height"},
      {{"--method", "ward", "--memory", "0"}, "--memory takes a number of bytes above 0, such as 800000, 500M or 4G"},
      {{"--method", "ward", "--memory", "1Q"}, "not '1Q'"},
      {{"--method", "ward", "--memory", "K"}, "not 'K'"},
      {{"--method", "ward", "--memory", "-1"}, "not '-1'"},
      {{"--method", "ward", "--memory", "1.5G"}, "not '1.5G'"},
      {{"--method", "ward", "--memory", "1GB"}, "not '1GB'"},
      {{"--method", "ward", "--memory", "16777216T"}, "not '16777216T'"},  // 2^64 bytes
      {{"--method", "ward", "--svg", table}, "--svg would overwrite the table"},
      {{"--method", "ward", "--svg", folder.Path("a"), "--merges", folder.Path("a")},
       "--svg and --merges would both write"}};
  for (const auto& [more, message] : lines) {
    std::vector<std::string> arguments = {"cluster", table};
    arguments.insert(arguments.end(), more.begin(), more.end());
    ExpectFailure(RunKalmia(arguments), 2, message);
  }
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
}

TEST(FailureOfCluster, LeavesNoneOfItsFilesWhereOneCannotBeWritten) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", UnrelatedTable(10, 3, 1, 1));
  for (const char* option : {"--svg", "--merges", "--newick", "--csv"}) {
    std::vector<std::string> arguments = {"cluster", table, "--method", "single", "--cut", "2"};
    for (const char* each : {"--svg", "--merges", "--newick", "--csv"}) {
      arguments.insert(arguments.end(), {each, std::string(each) == option ? table + "/x" : folder.Path(each)});
    }
    ExpectFailure(RunKalmia(arguments), 3, "cannot write " + table + "/x");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
  }
}

// Distances that find no room in memory.

/// 2000 rows have 1999000 distances, 23 MiB; 400 rows 79800, 0.9 MiB.
std::vector<std::string> OnDisk(const std::string& table, const std::string& temporary) {
  return {"cluster", table, "--method", "single", "--memory", "100K", "--temp", temporary};
}

TEST(FailureOfCluster, IsWantOfMemoryForWardWhichHasNoWayOverTheDisk) {
  ExpectFailure(RunKalmia({"cluster", "-", "--method", "ward", "--memory", "900K"}, UnrelatedTable(400, 3, 1, 1)), 1,
                "the 79800 distances of 400 rows take 935.2 KiB, more than there is memory for them; --method single "
                "can use the disk");
  EXPECT_EQ(RunKalmia({"cluster", "-", "--method", "ward", "--memory", "1M"}, UnrelatedTable(400, 3, 1, 1)).exitCode,
            0);
}

TEST(FailureOfCluster, NamesAFolderForTemporaryFilesThatIsNotThereOrCannotBeWritten) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", UnrelatedTable(400, 3, 1, 1));
  const std::pair<std::string, const char*> places[] = {{folder.Path("none"), "No such file or directory"},
                                                        {table, "Not a directory"},
                                                        {"/proc", ""}};  // not even for root
  for (const auto& [place, reason] : places) {
    ExpectFailure(RunKalmia(OnDisk(table, place)), 3, "cannot make temporary files in " + place + ": " + reason);
    CommandRun byEnvironment;
    byEnvironment.arguments = {"cluster", table, "--method", "single", "--memory", "100K"};
    byEnvironment.environment = {"TMPDIR=" + place};
    ExpectFailure(RunKalmia(byEnvironment), 3, "cannot make temporary files in " + place + ": " + reason);
  }
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
}

TEST(FailureOfCluster, LeavesNoTemporaryFileWhereTheDiskFillsUp) {
  const ScratchFolder folder, temporary;
  for (const long room : {0L, 50000L, 500000L}) {  // of 957600 bytes of distances: a disk that is full by then
    CommandRun run;
    run.arguments = OnDisk(folder.Write("t.csv", UnrelatedTable(400, 3, 1, 1)), temporary.Path("."));
    run.arguments.insert(run.arguments.end(), {"--merges", folder.Path("m.csv")});
    run.largestFile = std::max(room, 4096L);  // standard error and what the OpenMP runtime notes of itself need some
    ExpectFailure(RunKalmia(run), 3, "temporary files in " + temporary.Path(".") + " fail (the disk may be full");
    EXPECT_EQ(temporary.Names(), std::vector<std::string>());
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
  }
}

TEST(FailureOfCluster, LeavesNoTemporaryFileWhereTheyAreTooManyToBeOpen) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizers' check of virtual tables opens a pipe, and takes any object for bad without one";
#endif
  const ScratchFolder folder, temporary;
  CommandRun run;
  run.arguments = OnDisk(folder.Write("t.csv", UnrelatedTable(400, 3, 1, 1)), temporary.Path("."));
  run.arguments[5] = "10K";  // of 935 KiB: 187 files
  EXPECT_EQ(RunKalmia(run).exitCode, 0);
  run.mostFiles = 60;
  ExpectFailure(RunKalmia(run), 3, "; give more --memory");
  EXPECT_EQ(temporary.Names(), std::vector<std::string>());
}

TEST(FailureOfCluster, RefusesADiskThatIsTooSmallBeforeItBegins) {
  // The folder with the least room; 65535 rows take 51 GB.
  std::string folder;
  double room = INFINITY;
  for (const char* place : {"/dev/shm", "/run", "/tmp"}) {
    std::error_code error;
    const auto space = std::filesystem::space(place, error);
    if (error || space.available == 0 || static_cast<double>(space.available) >= room) continue;
    folder = place;
    room = static_cast<double>(space.available);
  }
  const int rows = static_cast<int>(std::sqrt(1.1 * room / 12)) + 2;
  if (rows > 65535) GTEST_SKIP() << folder << " has room for the distances of any table";
  std::string table = "x\n";
  for (int i = 0; i < rows; ++i) table += std::to_string(i) + "\n";
  const CommandResult run =
      RunKalmia({"cluster", "-", "--method", "single", "--memory", "1K", "--temp", folder}, table);
  ExpectFailure(run, 3, "distances of " + std::to_string(rows) + " rows take ");
  EXPECT_THAT(run.error, HasSubstr(" of temporary files, and " + folder + " has "));
  EXPECT_THAT(run.error, HasSubstr(" free: name another folder with --temp, or give more --memory\n"));
}

TEST(Interrupt, StopsAClusterAnalysisAtEachOfItsStepsAndLeavesNothingBehind) {
  const ScratchFolder folder, temporary;
  const std::string table = folder.Write("t.csv", UnrelatedTable(3000, 3, 1, 1));
  const std::string few = folder.Write("few.csv", UnrelatedTable(1500, 3, 1, 1));
  // Many columns: distances are nearly alike, and so in few segments, which have to be divided again.
  const std::string wide = folder.Write("wide.csv", UnrelatedTable(2000, 150, 1, 1));
  const std::pair<const char*, std::vector<std::string>> steps[] = {
      {"Sorting", {"cluster", few, "--method", "ward"}},
      {"Merging clusters", {"cluster", few, "--method", "ward"}},
      {"Calculating and saving", {"cluster", table, "--method", "single", "--memory", "1M", "--temp",
                                  temporary.Path(".")}},
      {"Splitting distances", {"cluster", table, "--method", "single", "--memory", "1M", "--temp",
                               temporary.Path(".")}},
      {"Re-partitioning", {"cluster", wide, "--method", "single", "--memory", "1M", "--temp", temporary.Path(".")}},
      {"Sorting", {"cluster", table, "--method", "single"}},
      {"Merging clusters", {"cluster", table, "--method", "single"}},
      {"Comparing heights with distances", {"cluster", wide, "--method", "single"}}};
  for (const auto& [step, arguments] : steps) {
    std::vector<std::string> all = arguments;
    all.insert(all.end(), {"--merges", folder.Path("m.csv")});
    const CommandResult run = RunOnTerminal(all, step);
    EXPECT_EQ(run.exitCode, 130) << step;
    EXPECT_THAT(run.error, HasSubstr("kalmia: stopped"));
    EXPECT_EQ(temporary.Names(), std::vector<std::string>());
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"few.csv", "t.csv", "wide.csv"}));
  }
}

TEST(Interrupt, ATerminatedClusterAnalysisAndOneWhoseTerminalIsGoneLeaveNothingBehind) {
  const ScratchFolder folder, temporary;
  const std::string table = folder.Write("t.csv", UnrelatedTable(3000, 3, 1, 1));
  for (const int signal : {SIGTERM, SIGHUP}) {
    const CommandResult run = RunOnTerminal(
        {"cluster", table, "--method", "single", "--memory", "1M", "--temp", temporary.Path("."), "--merges",
         folder.Path("m.csv")},
        "Calculating and saving", signal);
    EXPECT_EQ(run.exitCode, 128 + signal);
    EXPECT_THAT(run.error, HasSubstr("kalmia: stopped"));
    EXPECT_EQ(temporary.Names(), std::vector<std::string>());
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
  }
}

TEST(SecondCtrlC, RemovesTheTemporaryFilesOfAClusterAnalysis) {
  const ScratchFolder folder, temporary;
  const std::string table = folder.Write("t.csv", UnrelatedTable(3000, 3, 1, 1));
  for (const char* step : {"Calculating and saving", "Splitting distances"}) {
    const CommandResult run = RunOnTerminal(
        {"cluster", table, "--method", "single", "--memory", "1M", "--temp", temporary.Path(".")}, step, SIGINT, 2);
    EXPECT_EQ(run.exitCode, 130) << step;
    EXPECT_THAT(run.error, HasSubstr("kalmia: stopped"));
    EXPECT_EQ(temporary.Names(), std::vector<std::string>()) << step;
  }
}

}  // namespace
