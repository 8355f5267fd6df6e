// Tables in gzip files, as the commands take them.

#include <gtest/gtest.h>

#include <string>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "GzipText.h"

namespace {

TEST(PackedTable, IsKnownByItsFirstBytesInEveryCommandThatReadsATable) {
  const ScratchFolder folder;
  const std::string text = "id,x,y\na,1,2\nb,2,1\nc,4,3\nd,3,5\n";
  const std::string table = folder.Write("table", Gzip(text));
  EXPECT_EQ(RunKalmia({"describe", table, "--json"}).Json()["rows"], 4);
  EXPECT_EQ(RunKalmia({"describe", "-", "--json"}, Gzip(text)).Json()["rows"], 4);
  EXPECT_EQ(RunKalmia({"pls", table, "--y", "y", "--id", "id", "--components", "1", "--groups", "2"}).exitCode, 0);
  ExpectFailure(RunKalmia({"describe", folder.Write("twice", Gzip(Gzip(text)))}), 1, "is packed by gzip twice");
  ExpectFailure(RunKalmia({"describe", folder.Write("cut", Gzip(text).substr(0, 20))}), 1, "ends early");
}

}  // namespace
