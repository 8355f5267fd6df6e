#include "kalmia/support/TempFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;

/// TMPDIR at a folder of its own while it lives.
class OwnTemporaryFolder {
 public:
  OwnTemporaryFolder() {
    const char* set = std::getenv("TMPDIR");
    had_ = set != nullptr;
    before_ = set ? set : "";
    folder_ = std::string(VexGetTempFileName(nullptr, "kalmia-test-", nullptr));
    fs::remove(folder_);
    fs::create_directory(folder_);
    setenv("TMPDIR", folder_.c_str(), 1);
  }
  ~OwnTemporaryFolder() {
    if (had_)
      setenv("TMPDIR", before_.c_str(), 1);
    else
      unsetenv("TMPDIR");
    fs::remove_all(folder_);
  }
  const fs::path& Path() const { return folder_; }

 private:
  bool had_ = false;
  std::string before_;
  fs::path folder_;
};

TEST(VexGetTempFileName, CreatesAnEmptyFileThatOnlyTheUserCanRead) {
  const OwnTemporaryFolder folder;
  const std::string path(VexGetTempFileName(nullptr, "kal-", "clu"));
  EXPECT_EQ(fs::path(path).parent_path(), folder.Path());
  const std::string name = fs::path(path).filename();
  EXPECT_EQ(name.substr(0, 4), "kal-");
  EXPECT_EQ(fs::path(path).extension(), ".clu");
  struct stat status;
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  EXPECT_EQ(status.st_size, 0);
}

TEST(VexGetTempFileName, NeverGivesTheSameNameTwice) {
  const OwnTemporaryFolder folder;
  const std::string first(VexGetTempFileName(nullptr, "kal-", "clu"));
  EXPECT_NE(std::string(VexGetTempFileName(nullptr, "kal-", "clu")), first);
}

TEST(VexGetTempFileName, WithoutArgumentsNamesAFileInTheFolderOfTemporaryFiles) {
  const OwnTemporaryFolder folder;
  const std::string path(VexGetTempFileName(nullptr, nullptr, nullptr));
  EXPECT_EQ(fs::path(path).parent_path(), folder.Path());
  EXPECT_EQ(fs::path(path).extension(), "");
  EXPECT_TRUE(fs::exists(path));
}

TEST(VexGetTempFileName, TakesTheDirectoryItIsGiven) {
  const OwnTemporaryFolder folder;
  const fs::path inner = folder.Path() / "inner";
  fs::create_directory(inner);
  for (const std::string& directory : {inner.string(), inner.string() + "/"})
    EXPECT_EQ(fs::path(std::string(VexGetTempFileName(directory.c_str(), "a", "b"))).parent_path(), inner);
}

TEST(VexGetTempFileName, FallsBackOnTmp) {
  const OwnTemporaryFolder folder;
  unsetenv("TMPDIR");
  const std::string path(VexGetTempFileName(nullptr, "kalmia-test-", "x"));
  EXPECT_EQ(fs::path(path).parent_path(), "/tmp");
  fs::remove(path);
}

TEST(TemporaryDirectory, IsWhereTheFilesComeWithoutASlashAtTheEnd) {
  const OwnTemporaryFolder folder;
  const std::string path = folder.Path().string();
  EXPECT_EQ(kalmia::TemporaryDirectory(), path);
  setenv("TMPDIR", (path + "//").c_str(), 1);
  EXPECT_EQ(kalmia::TemporaryDirectory(), path);
  EXPECT_EQ(fs::path(std::string(VexGetTempFileName(nullptr, "a", "b"))).parent_path(), path);
  setenv("TMPDIR", "/", 1);
  EXPECT_EQ(kalmia::TemporaryDirectory(), "/");
  for (const char* const unset : {"", static_cast<const char*>(nullptr)}) {
    unset ? setenv("TMPDIR", unset, 1) : unsetenv("TMPDIR");
    EXPECT_EQ(kalmia::TemporaryDirectory(), "/tmp");
  }
}

TEST(VexGetTempFileName, IsEmptyWhereNoFileCanBeCreated) {
  EXPECT_STREQ(VexGetTempFileName("/no/such/folder", "kal-", "clu"), "");
}

}  // namespace
