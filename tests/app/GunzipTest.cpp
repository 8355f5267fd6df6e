// Tables in gzip files.

#include "app/Gunzip.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <random>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "app/Failure.h"

namespace kalmia::app {
namespace {

using ::testing::HasSubstr;

std::string Gzip(const std::string& text) {
  z_stream stream = {};
  if (deflateInit2(&stream, 9, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) != Z_OK) return "";
  std::string packed(deflateBound(&stream, text.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  deflate(&stream, Z_FINISH);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

std::string Unpacked(const std::string& bytes) { return Gunzip(bytes, "t.gz", nullptr); }

std::string Refusal(const std::string& bytes) {
  try {
    Unpacked(bytes);
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Code(), ExitCode::BadData);
    return failure.what();
  }
  return "";
}

std::string LongText() {
  std::mt19937 random(1);
  std::string text;
  while (text.size() < 1000000) text += std::to_string(random()) + (random() % 5 == 0 ? "\n" : ",");
  return text;
}

TEST(Gunzip, BringsBackWhatWasPacked) {
  for (const std::string& text : {std::string(), std::string("a"), LongText(), std::string(3000000, 'x')}) {
    const std::string packed = Gzip(text);
    EXPECT_TRUE(IsGzip(packed));
    EXPECT_EQ(Unpacked(packed), text);
  }
  EXPECT_FALSE(IsGzip("a,b\n"));
  EXPECT_FALSE(IsGzip("\x1F"));
}

TEST(Gunzip, TakesSeveralMembersAndZerosBehindThem) {
  EXPECT_EQ(Unpacked(Gzip("a,b\n") + Gzip("1,2\n") + Gzip("") + std::string(512, '\0')), "a,b\n1,2\n");
}

TEST(Gunzip, RefusesAFileThatEndsEarlyWhereverItIsCut) {
  const std::string packed = Gzip("a,b\n1,2\n3,4\n");
  for (std::size_t size = 2; size < packed.size(); ++size) {
    EXPECT_EQ(Refusal(packed.substr(0, size)), "t.gz is a gzip file that ends early: it was cut short") << size;
  }
  const std::string longer = Gzip(LongText());
  EXPECT_THAT(Refusal(longer.substr(0, longer.size() / 2)), HasSubstr("ends early"));
}

TEST(Gunzip, RefusesADamagedFile) {
  const std::string packed = Gzip(LongText());
  for (const std::size_t at : {std::size_t{2}, packed.size() / 2, packed.size() - 6, packed.size() - 2}) {
    std::string damaged = packed;
    damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
    EXPECT_THAT(Refusal(damaged), HasSubstr("t.gz is a")) << at;
  }
  EXPECT_EQ(Refusal(packed + "x"), "t.gz is a gzip file that ends early: it was cut short");
  EXPECT_EQ(Refusal(packed + "no member"), "t.gz is a damaged gzip file");
}

TEST(Gunzip, IsKnownByItsFirstBytesInEveryCommandThatReadsATable) {
  const ScratchFolder folder;
  const std::string text = "id,x,y\na,1,2\nb,2,1\nc,4,3\nd,3,5\n";
  const std::string table = folder.Write("table", Gzip(text));
  EXPECT_EQ(RunKalmia({"describe", table, "--json"}).Json()["rows"], 4);
  EXPECT_EQ(RunKalmia({"describe", "-", "--json"}, Gzip(text)).Json()["rows"], 4);
  EXPECT_EQ(RunKalmia({"pls", table, "--y", "y", "--id", "id", "--components", "1", "--groups", "2"}).exitCode, 0);
  ExpectFailure(RunKalmia({"describe", folder.Write("cut", Gzip(text).substr(0, 20))}), 1, "ends early");
}

}  // namespace
}  // namespace kalmia::app
