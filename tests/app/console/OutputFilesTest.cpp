#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "CommandRun.h"
#include "app/console/ExitCode.h"
#include "app/console/OutputFiles.h"

namespace kalmia::app {
namespace {

using ::testing::ElementsAre;

mode_t ModeOf(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(stat(path.c_str(), &status), 0);
  return status.st_mode;
}

TEST(OutputFiles, AppearTogetherOnCommit) {
  const ScratchFolder folder;
  OutputFiles files;
  files.MakeFolder(folder.Path("d"));
  files.Stage(folder.Path("d/a"), "first");
  files.Stage(folder.Path("b"), "second");
  EXPECT_FALSE(std::filesystem::exists(folder.Path("d/a")));
  EXPECT_FALSE(std::filesystem::exists(folder.Path("b")));
  files.Commit();
  EXPECT_EQ(ReadWholeFile(folder.Path("d/a")), "first");
  EXPECT_EQ(ReadWholeFile(folder.Path("b")), "second");
  EXPECT_THAT(folder.Names(), ElementsAre("b", "d"));
}

TEST(OutputFiles, VanishWithoutCommit) {
  const ScratchFolder folder;
  folder.Write("b", "old");
  {
    OutputFiles files;
    files.MakeFolder(folder.Path("d"));
    files.Stage(folder.Path("d/a"), "first");
    files.Stage(folder.Path("b"), "second");
  }
  EXPECT_THAT(folder.Names(), ElementsAre("b"));
  EXPECT_EQ(ReadWholeFile(folder.Path("b")), "old");
}

TEST(OutputFiles, LeaveAFolderThatWasThere) {
  const ScratchFolder folder;
  { OutputFiles().MakeFolder(folder.Path("")); }
  EXPECT_TRUE(std::filesystem::is_directory(folder.Path("")));
}

TEST(OutputFiles, KeepThePermissionsOfAFileTheyReplaceAndObeyTheMaskOtherwise) {
  const ScratchFolder folder;
  chmod(folder.Write("old", "x").c_str(), 0640);
  const mode_t mask = umask(027);
  OutputFiles files;
  files.Stage(folder.Path("old"), "y");
  files.Stage(folder.Path("new"), "z");
  files.Commit();
  umask(mask);
  EXPECT_EQ(ModeOf(folder.Path("old")) & 0777U, 0640U);
  EXPECT_EQ(ModeOf(folder.Path("new")) & 0777U, 0640U);
}

/// Somebody to whom permissions apply, which is not so for root.
class AsOrdinaryUser {
 public:
  AsOrdinaryUser() { Become(geteuid() == 0 ? 65534 : geteuid()); }
  ~AsOrdinaryUser() { Become(getuid()); }
  AsOrdinaryUser(const AsOrdinaryUser&) = delete;
  AsOrdinaryUser& operator=(const AsOrdinaryUser&) = delete;

 private:
  static void Become(uid_t user) { EXPECT_EQ(seteuid(user), 0); }
};

TEST(OutputFiles, RefuseToReplaceAFileThatMayNotBeWritten) {
  const ScratchFolder folder;
  const std::string path = folder.Write("old", "keep me");
  chmod(path.c_str(), 0444);
  chmod(folder.Path("").c_str(), 0777);
  {
    const AsOrdinaryUser user;
    OutputFiles files;
    try {
      files.Stage(path, "new");
      ADD_FAILURE() << "not refused";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.what(), "cannot write " + path + ": Permission denied");
      EXPECT_EQ(ExitCodeOf(failure), ExitCode::Files);
    }
  }
  EXPECT_EQ(ReadWholeFile(path), "keep me");
  EXPECT_THAT(folder.Names(), ElementsAre("old"));
}

TEST(OutputFiles, RefuseAFolderThatMayNotBeWritten) {
  const ScratchFolder folder;
  chmod(folder.Path("").c_str(), 0555);
  {
    const AsOrdinaryUser user;
    OutputFiles files;
    EXPECT_THROW(files.Stage(folder.Path("new"), "new"), Failure);
    EXPECT_THROW(files.MakeFolder(folder.Path("d")), Failure);
  }
  EXPECT_THAT(folder.Names(), ElementsAre());
}

TEST(OutputFiles, FollowALink) {
  const ScratchFolder folder;
  std::filesystem::create_symlink(folder.Write("target", "old"), folder.Path("link"));
  OutputFiles files;
  files.Stage(folder.Path("link"), "new");
  files.Commit();
  EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("link")));
  EXPECT_EQ(ReadWholeFile(folder.Path("target")), "new");
}

TEST(OutputFiles, WriteIntoAPipeAndNeverReplaceIt) {
  const ScratchFolder folder;
  const std::string pipe = folder.Path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int end = open(pipe.c_str(), O_RDWR | O_CLOEXEC);
  OutputFiles files;
  files.Stage(pipe, "through");
  files.Commit();
  std::string read(7, '\0');
  EXPECT_EQ(::read(end, read.data(), read.size()), 7);
  close(end);
  EXPECT_EQ(read, "through");
  EXPECT_TRUE(S_ISFIFO(ModeOf(pipe)));
}

TEST(OutputFiles, LeaveNothingWhereOneCannotBeMoved) {
  const ScratchFolder folder;
  OutputFiles files;
  files.Stage(folder.Path("a"), "first");
  files.Stage(folder.Path("b"), "second");
  std::filesystem::create_directory(folder.Path("b"));  // in the way by the time of the commit
  EXPECT_THROW(files.Commit(), Failure);
  EXPECT_FALSE(std::filesystem::exists(folder.Path("a")));
}

TEST(OutputFiles, GiveBackWhatTheyReplacedWhereALaterOneCannotBeMoved) {
  const ScratchFolder folder;
  folder.Write("a", "old");
  {
    OutputFiles files;
    files.Stage(folder.Path("a"), "first");
    files.Stage(folder.Path("new"), "second");
    files.Stage(folder.Path("b"), "third");
    std::filesystem::create_directory(folder.Path("b"));  // in the way by the time of the commit
    EXPECT_THROW(files.Commit(), Failure);
  }
  EXPECT_EQ(ReadWholeFile(folder.Path("a")), "old");
  EXPECT_THAT(folder.Names(), ElementsAre("a", "b"));
}

TEST(OutputFiles, LeaveNoSecondNameOfWhatTheyReplaced) {
  const ScratchFolder folder;
  OutputFiles files;
  files.Stage(folder.Write("a", "old"), "new");
  files.Commit();
  EXPECT_EQ(ReadWholeFile(folder.Path("a")), "new");
  EXPECT_THAT(folder.Names(), ElementsAre("a"));
}

TEST(OutputFiles, LeaveNoSecondNameWhereAMoveFails) {
  const ScratchFolder folder;
  const std::string old = folder.Write("a", "old");
  {
    OutputFiles files;
    files.Stage(old, "new");
    for (const std::string& name : folder.Names()) {
      if (name != "a") unlink(folder.Path(name).c_str());  // what was to be moved
    }
    EXPECT_THROW(files.Commit(), Failure);
    EXPECT_THAT(folder.Names(), ElementsAre("a"));
  }
  EXPECT_THAT(folder.Names(), ElementsAre("a"));
  EXPECT_EQ(ReadWholeFile(old), "old");
}

TEST(OutputFiles, RefuseAFileOfSomebodyElseInAFolderWithTheStickyBit) {
  if (geteuid() != 0) GTEST_SKIP() << "takes two users";
  const ScratchFolder folder;
  const std::string path = folder.Write("old", "keep me");
  chmod(path.c_str(), 0666);
  chmod(folder.Path("").c_str(), 01777);
  {
    const AsOrdinaryUser user;
    OutputFiles files;
    files.Stage(folder.Path("own"), "whose owner may");
    files.Commit();
    EXPECT_NO_THROW(files.Stage(folder.Path("own"), "again"));
    EXPECT_THROW(files.Stage(path, "new"), Failure);
  }
  EXPECT_EQ(ReadWholeFile(path), "keep me");
  EXPECT_THAT(folder.Names(), ElementsAre("old", "own"));
}

TEST(OutputFiles, FollowALinkToAFolderThatIsNotThereYet) {
  const ScratchFolder folder;
  std::filesystem::create_symlink("real", folder.Path("link"));
  const auto stage = [&folder](OutputFiles* files) {
    files->MakeFolder(folder.Path("link"));
    files->Stage(folder.Path("link/a"), "first");
  };
  {
    OutputFiles notCommitted;
    stage(&notCommitted);
  }
  EXPECT_THAT(folder.Names(), ElementsAre("link"));
  OutputFiles files;
  stage(&files);
  files.Commit();
  EXPECT_EQ(ReadWholeFile(folder.Path("real/a")), "first");
  EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("link")));
}

TEST(OutputFiles, DoNotAppearWhereAPipeLosesItsReader) {
  const ScratchFolder folder;
  const std::string pipe = folder.Path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  std::thread leaving([reader] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    close(reader);
  });
  {
    OutputFiles files;
    files.Stage(folder.Path("a"), "first");
    files.Stage(pipe, std::string(1U << 20U, 'x'));  // more than a pipe holds
    try {
      files.Commit();
      ADD_FAILURE() << "not refused";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.what(), "cannot write " + pipe + ": Broken pipe");
      EXPECT_EQ(ExitCodeOf(failure), ExitCode::Files);
    }
  }
  leaving.join();
  EXPECT_THAT(folder.Names(), ElementsAre("pipe"));
}

}  // namespace
}  // namespace kalmia::app
