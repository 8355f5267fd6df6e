// Where results go: tried before the work, never over what is read.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "TestTables.h"
#include "Words.h"

namespace {

/// A command up to the option whose place is tried, and that option.
struct Output {
  Words command;
  std::string option;
};

/// Every option with which a command writes.
std::vector<Output> AllOutputs(const std::string& table, const std::string& other) {
  std::vector<Output> outputs;
  const auto add = [&](const Words& command, const Words& options) {
    for (const std::string& option : options) outputs.push_back({command, option});
  };
  const Words model = {"--save", "--csv"}, opls = {"--save", "--csv", "--save-cv"}, csv = {"--csv"},
              out = {"--out"}, save = {"--save"}, drawn = {"--csv", "--svg"},
              chart = {"--csv", "--svg", "--save-limits"}, tree = {"--csv", "--svg", "--merges", "--newick"};
  add({"pls", table, "--y", "y"}, model);
  add({"pca", table}, model);
  add({"opls", table, "--y", "y"}, opls);
  add({"o2pls", table, table}, model);
  add({"predict", table, table}, csv);
  add({"fill", table}, out);
  add({"filter", table, "--y", "y", "--components", "1"}, out);
  add({"filter", table, "--y", "y", "--components", "1", "--out", other}, save);
  add({"preprocess", table, "--steps", "snv"}, out);
  add({"preprocess", table, "--steps", "snv", "--out", other}, save);
  add({"cluster", table, "--method", "ward", "--cut", "2"}, tree);
  add({"chart", table, "--column", "y", "--type", "individual"}, chart);
  add({"histogram", table, "--column", "y"}, drawn);
  add({"spectrum", table, "--column", "y"}, drawn);
  return outputs;
}

TEST(OutputPlaces, AreTriedBeforeTheTableIsReadByEveryCommandAndEveryOption) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", "header only\n");  // which every command refuses once it reads
  for (const Output& output : AllOutputs(table, folder.Path("other"))) {
    SCOPED_TRACE(output.command.front() + " " + output.option);
    for (const std::string& place : {folder.Path("no/such/place"), table + "/below"}) {
      const CommandResult run = RunKalmia(output.command + Words{output.option, place});
      ExpectFailure(run, 3, place);
    }
    const CommandResult run = RunKalmia(output.command + Words{output.option, folder.Path("new")});
    EXPECT_EQ(run.exitCode, output.command.front() == "predict" ? 3 : 1) << run.error;  // for want of data, or a model
    EXPECT_NE(run.error.find("t.csv"), std::string::npos) << run.error;
    EXPECT_EQ(folder.Names(), Words{"t.csv"}) << "the trial leaves nothing behind";
  }
}

TEST(OutputPlaces, KeepAnExistingFileAsItIsWhereTheWorkFails) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", "header only\n");
  const std::string old = folder.Write("old", "what was there");
  const auto written = std::filesystem::last_write_time(old);
  for (const Output& output : AllOutputs(table, folder.Path("other"))) {
    if (output.option == "--csv" && output.command.front() != "cluster") continue;  // may be a folder
    EXPECT_NE(RunKalmia(output.command + Words{output.option, old}).exitCode, 0);
    EXPECT_EQ(ReadWholeFile(old), "what was there") << output.command.front() << " " << output.option;
    EXPECT_EQ(std::filesystem::last_write_time(old), written);
    EXPECT_EQ(folder.Names(), (Words{"old", "t.csv"}));
  }
}

TEST(OutputPlaces, AreNoFolderOfTheNameOfStandardOutput) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1));
  const Words commands[] = {{"pls", table, "--y", "y", "--id", "name"}, {"pca", table, "--id", "name"},
                            {"opls", table, "--y", "y", "--id", "name"}, {"spectrum", table, "--column", "y"}};
  for (const Words& command : commands) {
    ExpectFailure(RunKalmia(command + Words{"--csv", "-"}), 2,
                  "--csv takes a folder, not '-': standard output shows the results");
  }
  EXPECT_FALSE(std::filesystem::exists("-"));
}

TEST(OutputPlaces, AreWhereADanglingLinkPoints) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1));
  std::filesystem::create_directory(folder.Path("models"));
  std::filesystem::create_symlink("models/hop", folder.Path("link"));
  std::filesystem::create_symlink(folder.Path("real"), folder.Path("models/hop"));
  const Words fit = {"pls", table, "--y", "y", "--id", "name", "--save", folder.Path("link")};
  ASSERT_EQ(RunKalmia(fit).exitCode, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("link")));
  EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("models/hop")));
  EXPECT_TRUE(std::filesystem::is_regular_file(folder.Path("real")));
  EXPECT_EQ(RunKalmia({"info", folder.Path("real")}).exitCode, 0);

  std::filesystem::create_symlink("nowhere/at/all", folder.Path("lost"));
  ExpectFailure(RunKalmia({"pca", table, "--save", folder.Path("lost")}), 3, "cannot write " + folder.Path("lost"));
  std::filesystem::create_symlink("circle", folder.Path("circle"));
  ExpectFailure(RunKalmia({"pca", table, "--save", folder.Path("circle")}), 3,
                "cannot write " + folder.Path("circle") + ": Too many levels of symbolic links");
  EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("circle")));
}

TEST(OutputPlaces, AreOneWhereADanglingLinkLeadsToTheOther) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1));
  std::filesystem::create_symlink("m", folder.Path("link"));
  ExpectFailure(RunKalmia({"opls", table, "--y", "y", "--save", folder.Path("m"), "--save-cv", folder.Path("link")}), 2,
                "--save and --save-cv would both write");
}

TEST(OutputPlaces, AreNoFileWhereTheFolderOfOtherResultsIs) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(40, 4, 1)), place = folder.Path("oo");
  const Words fit = {"--id", "name", "--y", "y"};
  ExpectFailure(RunKalmia(Words{"pls", table} + fit + Words{"--save", place, "--csv", place}), 2,
                "--save would write the file " + place + ", which is the folder of --csv");
  ExpectFailure(RunKalmia(Words{"opls", table} + fit + Words{"--save-cv", place, "--csv", folder.Path("./oo")}), 2,
                "--save-cv would write the file " + place + ", which is the folder of --csv");
  ExpectFailure(RunKalmia({"spectrum", table, "--column", "y", "--svg", place, "--csv", place}), 2,
                "--svg would write the file " + place + ", which is the folder of --csv");
  EXPECT_EQ(folder.Names(), Words{"t.csv"});
}

TEST(OutputPlaces, MayLieInTheFolderOfOtherResultsBeforeItIsThere) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1));
  const CommandResult run = RunKalmia({"pls", table, "--y", "y", "--id", "name", "--save", folder.Path("out/model"),
                                       "--csv", folder.Path("out")});
  EXPECT_EQ(run.exitCode, 0) << run.error;
  EXPECT_TRUE(std::filesystem::is_regular_file(folder.Path("out/model")));
  EXPECT_TRUE(std::filesystem::is_regular_file(folder.Path("out/scores.csv")));
}

TEST(OutputPlaces, AreNotWhereStandardOutputGoes) {
  const ScratchFolder folder;
  CommandRun run;
  run.outputFile = folder.Path("printed");
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1));
  for (const std::string& place : {std::string("/dev/stdout"), run.outputFile}) {
    run.arguments = {"histogram", table, "--column", "y", "--csv", place};
    ExpectFailure(RunKalmia(run), 2, "--csv would overwrite " + place + ", which is where standard output goes");
  }
  run.arguments = {"histogram", table, "--column", "y", "--csv", "/dev/stderr"};
  ExpectFailure(RunKalmia(run), 2, "--csv would overwrite /dev/stderr, which is where standard error goes");
  run.outputFile = "/dev/null";
  run.arguments = {"histogram", table, "--column", "y", "--csv", "/dev/null"};
  EXPECT_EQ(RunKalmia(run).exitCode, 0) << "a device keeps nothing that could be lost";
}

TEST(OutputPlaces, OfTemporaryFilesAreTriedBeforeTheTableIsRead) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", "header only\n"), place = folder.Path("no/such/place");
  ExpectFailure(RunKalmia({"cluster", table, "--method", "single", "--temp", place}), 3,
                "cannot make temporary files in " + place);
}

}  // namespace
