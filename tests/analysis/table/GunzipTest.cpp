// Tables in gzip files.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "FailureOf.h"
#include "GzipText.h"
#include "kalmia/analysis/table/internal/Gunzip.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/RecordingProgress.h"

namespace kalmia::analysis {
namespace {

using ::testing::HasSubstr;

std::string Unpacked(const std::string& bytes) { return std::string(Gunzip(bytes, "t.gz", nullptr).View()); }

std::string Refusal(const std::string& bytes) {
  try {
    Unpacked(bytes);
  } catch (const Failure& failure) {
    EXPECT_TRUE(Is<BadData>(failure));
    return failure.what();
  }
  return "";
}

std::string LongText(std::size_t size = 1000000) {
  std::mt19937 random(1);
  std::string text;
  while (text.size() < size) text += std::to_string(random()) + (random() % 5 == 0 ? "\n" : ",");
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

TEST(Gunzip, BringsBackTextsThatEndAboutWhereAPieceDoes) {
  for (const std::size_t size :
       {kGunzipPiece - 1, kGunzipPiece, kGunzipPiece + 1, 2 * kGunzipPiece, 3 * kGunzipPiece}) {
    const std::string text = LongText(size).substr(0, size);
    EXPECT_EQ(Unpacked(Gzip(text)), text) << size;
    EXPECT_EQ(Unpacked(Gzip(text) + Gzip("behind") + std::string(3, '\0')), text + "behind") << size;
  }
}

TEST(Gunzip, TellsItsShareAndStopsAtEveryQuestion) {
  const std::string packed = Gzip(LongText(3000000));
  ProgressLog all;
  const auto bar = RecordingBar(&all);
  Gunzip(packed, "t.gz", bar.get());
  const int questions = all.Count("SetValue");
  EXPECT_GT(questions, 10);
  EXPECT_EQ(all.calls.back(), "SetValue 1");
  for (int stopAt = 1; stopAt <= questions; ++stopAt) {
    ProgressLog log;
    log.stopAt = stopAt;
    const auto stopping = RecordingBar(&log);
    try {
      Gunzip(packed, "t.gz", stopping.get());
      ADD_FAILURE() << "goes on behind question " << stopAt;
    } catch (const Failure& failure) {
      EXPECT_TRUE(Is<Stopped>(failure));
    }
    EXPECT_EQ(log.Count("SetValue"), stopAt);
  }
}

TEST(Gunzip, NeedsNoMoreMemoryThanForOnePieceAtOnce) {
  const std::string text = LongText(3000000), packed = Gzip(text);
  EXPECT_EQ(Gunzip(packed, "t.gz", nullptr, [] { return kGunzipPiece; }).View(), text);
}

TEST(Gunzip, RefusesAFileThatHoldsMoreThanThereIsMemoryFor) {
  const std::string packed = Gzip(std::string(3000000, 'x'));
  int questions = 0;
  const auto left = [&questions] { return ++questions < 3 ? 2 * kGunzipPiece : kGunzipPiece - 1; };
  try {
    Gunzip(packed, "t.gz", nullptr, left);
    ADD_FAILURE();
  } catch (const Failure& failure) {
    EXPECT_TRUE(Is<BadData>(failure));
    EXPECT_STREQ(failure.what(), "t.gz holds more than there is memory for, unpacked");
  }
  EXPECT_EQ(questions, 3);
}

TEST(Gunzip, GivesTheTextOrARefusalWhicheverBitIsWrong) {
  const std::string text = "a,b\n1,2\n3,4\n3,4\n3,4\n3,4\n5,6\n", packed = Gzip(text);
  int taken = 0;
  for (std::size_t at = 0; at < packed.size(); ++at) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      std::string damaged = packed;
      damaged[at] = static_cast<char>(static_cast<unsigned char>(damaged[at]) ^ (1U << bit));
      try {
        EXPECT_EQ(Unpacked(damaged), text);
        ++taken;
      } catch (const Failure& failure) {
        EXPECT_TRUE(Is<BadData>(failure));
        EXPECT_THAT(failure.what(), HasSubstr("t.gz is a ")) << at;
      }
    }
  }
  EXPECT_LE(taken, 56) << "time and system in the header, a mark for text, and what fills up the last byte of the data";
}

TEST(Gunzip, RefusesADamagedFile) {
  const std::string packed = Gzip(LongText());
  for (const std::size_t at : {std::size_t{2}, packed.size() / 2, packed.size() - 6, packed.size() - 2}) {
    std::string damaged = packed;
    damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
    EXPECT_EQ(Refusal(damaged), "t.gz is a damaged gzip file") << at;
  }
  for (const std::string behind : {"x", "no member", "\x1F\x8C"}) {
    EXPECT_EQ(Refusal(packed + behind),
              "t.gz is a gzip file with other bytes behind its end: unpack it with gzip, which passes them over");
  }
  EXPECT_THAT(Refusal(packed + "\x1F"), HasSubstr("ends early"));
}

}  // namespace
}  // namespace kalmia::analysis
