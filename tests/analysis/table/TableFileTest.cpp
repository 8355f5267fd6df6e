#include "kalmia/analysis/table/TableFile.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/RecordingProgress.h"
#include "testing/ScratchFolder.h"

namespace {

using namespace kalmia::analysis;

TEST(ReadTableFile, ReadsEveryByteOfAFileOfSeveralBlocks) {
  const ScratchFolder folder;
  std::string text = "a,b\n";
  for (int row = 0; row < 300000; ++row) text += std::to_string(row) + ",7.5\n";  // 2.9 MB
  const std::string path = folder.Write("t.csv", text);
  const Table table = ReadTableFile(path);
  EXPECT_EQ(table.Text(), text);
  EXPECT_EQ(table.Rows(), 300000);
  EXPECT_EQ(table.Name(), path);
}

// The bytes of gzip -n (1.12) for "a,b\n1,2\n".
TEST(ReadTableFile, UnpacksAGzipFile) {
  const ScratchFolder folder;
  const unsigned char packed[] = {0x1f, 0x8b, 0x08, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x03, 0x4b, 0xd4, 0x49, 0xe2,
                                  0x32, 0xd4, 0x31, 0xe2, 0x02, 0x00, 0x7b, 0x07, 0x97, 0x0a, 0x08, 0x00, 0x00, 0x00};
  const Table table = ReadTableFile(
      folder.Write("t.csv.gz", std::string(reinterpret_cast<const char*>(packed), sizeof(packed))));
  EXPECT_EQ(table.ColumnNames(), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(table.Cell(0, 1), "2");
}

TEST(ReadTableFile, NamesAFileThatIsNotThereOrIsAFolder) {
  const ScratchFolder folder;
  EXPECT_EQ(FailureOf<BadFile>([&] { ReadTableFile(folder.Path("none")); }),
            "cannot read " + folder.Path("none") + ": No such file or directory");
  EXPECT_EQ(FailureOf<BadFile>([&] { ReadTableFile(folder.Path("")); }),
            "cannot read " + folder.Path("") + ": Is a directory");
}

TEST(ReadTableFile, StopsWhereTheBarWantsToStop) {
  const ScratchFolder folder;
  ProgressLog log;
  log.stopAt = 1;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  EXPECT_THROW(ReadTableFile(folder.Write("t.csv", "a\n1\n"), {}, bar.get()), Stopped);
}

}  // namespace
