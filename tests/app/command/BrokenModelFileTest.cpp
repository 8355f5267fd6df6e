// What the commands say of model files that cannot be read.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "CommandRun.h"
#include "FramedFile.h"
#include "TestTables.h"

namespace {

using ::testing::HasSubstr;

/// The bytes of a model of two components of 8 rows, 3 X columns and 2 Y columns.
std::string SmallModelFile() {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", UnrelatedTable(8, 3, 2, 1));
  const CommandResult run = RunKalmia({"pls", table, "--y", "y1,y2", "--components", "2", "--save", folder.Path("m")});
  EXPECT_EQ(run.exitCode, 0) << run.error;
  return ReadWholeFile(folder.Path("m"));
}

TEST(BrokenModelFile, IsRefusedByPredictAndInfoWithOneLineAndExitCode3) {
  const ScratchFolder folder;
  const std::string bytes = SmallModelFile();
  std::string damaged = bytes;
  damaged.back() = static_cast<char>(damaged.back() ^ 1);
  const std::pair<std::string, const char*> files[] = {{"a,b\n1,2\n", "is no Kalmia model"},
                                                       {"", "is empty"},
                                                       {bytes.substr(0, 400), "is cut"},
                                                       {damaged, "is damaged"},
                                                       {framed::WithVersion(bytes, 9), "of version 9"}};
  const std::string table = folder.Write("t.csv", UnrelatedTable(8, 3, 2, 1));
  for (const auto& [content, message] : files) {
    const std::string model = folder.Write("model", content);
    for (const auto& arguments : {std::vector<std::string>{"info", model}, {"predict", model, table}}) {
      const CommandResult run = RunKalmia(arguments);
      EXPECT_EQ(run.exitCode, 3);
      EXPECT_EQ(run.output, "");
      EXPECT_EQ(run.ErrorLines(), 1) << run.error;
      EXPECT_THAT(run.error, HasSubstr("kalmia: " + model + " "));
      EXPECT_THAT(run.error, HasSubstr(message));
    }
  }
}

}  // namespace
