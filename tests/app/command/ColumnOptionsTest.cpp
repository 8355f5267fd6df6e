// --x, --exclude and --y choose columns by names and ranges.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CommandRun.h"
#include "Words.h"

namespace {

TEST(ColumnOptions, AreTakenByEveryCommandThatChoosesColumns) {
  const ScratchFolder folder;
  std::string text = "id,a,b,c,d,e,y\n";
  for (int r = 1; r <= 12; ++r) {
    text += std::to_string(r);
    for (const int prime : {3, 5, 7, 11, 13, 17}) text += "," + std::to_string(r * r * prime % 19);
    text += "\n";
  }
  const std::string table = folder.Write("t.csv", text), out = folder.Path("out");
  const auto run = [](const Words& arguments) {
    const CommandResult result = RunKalmia(arguments);
    EXPECT_EQ(result.exitCode, 0) << arguments.front() << ": " << result.error;
    return result.exitCode == 0 ? result.Json() : nlohmann::json();
  };
  const Words chosen = {"a", "b", "e"};
  for (const Words& what : {Words{"--x", "a..b,e"}, Words{"--exclude", "id,c..d,y"}}) {
    for (const Words& command : {Words{"pca", table, "--components", "1"},
                                 Words{"pls", table, "--y", "y", "--components", "1"},
                                 Words{"opls", table, "--y", "y", "--orthogonal", "0"}}) {
      Words arguments = command;
      arguments.insert(arguments.end(), {"--scale", "none", "--json", what[0], what[1]});
      EXPECT_EQ(run(arguments)["x"]["columns"], chosen) << command.front() << " " << what[0];
    }
    EXPECT_EQ(run({"preprocess", table, "--steps", "linear", "--out", out, "--json", what[0], what[1]})["columns"],
              chosen);
    EXPECT_EQ(run({"filter", table, "--y", "y", "--components", "1", "--out", out, "--json", what[0], what[1]})["x"],
              chosen);
  }
  for (const Words& what : {Words{"--x", "a..b,e"}, Words{"--exclude", "id,c..d,y"}}) {
    EXPECT_EQ(run({"cluster", table, "--method", "single", "--json", what[0], what[1]})["x"]["columns"], chosen);
  }
  EXPECT_EQ(run({"o2pls", table, table, "--x", "a..b,e", "--y", "d,y", "--joint", "1", "--x-unique", "0", "--y-unique",
                 "0", "--json"})["x"]["columns"],
            chosen);
  run({"fill", table, "--out", out, "--exclude", "id,c..d", "--json"});
}

}  // namespace
