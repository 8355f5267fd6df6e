// Stored cross-validations of OPLS: what comes back, and what is refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "CommandRun.h"
#include "TestTables.h"
#include "app/console/ExitCode.h"
#include "kalmia/analysis/file/OPLSCvFile.h"
#include "kalmia/analysis/fit/OPLSResult.h"
#include "kalmia/support/MD5.h"

namespace {

using kalmia::app::ExitCode;
using kalmia::app::ExitCodeOf;
using kalmia::analysis::Failure;
using kalmia::analysis::OPLSCvFileBytes;
using kalmia::analysis::ReadOPLSCvFile;
using kalmia::analysis::StoredOPLSCv;
using ::testing::HasSubstr;

constexpr std::size_t kLengthAt = 12;  ///< where in the file the parts of its header stand
constexpr std::size_t kChecksumAt = 20;
constexpr std::size_t kContentAt = 52;

using Words = std::vector<std::string>;

/// The bytes of a cross-validation of 8 rows, 3 X columns and 2 Y columns with one orthogonal component.
std::string SmallCvFile() {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", UnrelatedTable(8, 3, 2, 1)), cv = folder.Path("cv");
  RunWell({"opls", table, "--y", "y1,y2", "--predictive", "1", "--orthogonal", "1", "--groups", "2", "--save-cv", cv});
  return ReadWholeFile(cv);
}

/// The message with which the bytes are refused; "" if they are read.
std::string Refusal(const std::string& bytes) {
  try {
    ReadOPLSCvFile(bytes, "cv");
  } catch (const Failure& failure) {
    EXPECT_EQ(ExitCodeOf(failure), ExitCode::Files);
    return failure.what();
  }
  return "";
}

/// The file with a checksum that matches its content: what a forger would write.
std::string WithMatchingChecksum(std::string bytes) {
  MD5 md5;
  md5.Update(bytes.data() + kContentAt, bytes.size() - kContentAt);
  md5.Finalize();
  return bytes.replace(kChecksumAt, 32, md5.GetDigest());
}

std::string WithLength(std::string bytes, std::uint64_t length) {
  for (std::size_t i = 0; i < 8; ++i) bytes[kLengthAt + i] = static_cast<char>(length >> (8 * i) & 0xFFU);
  return bytes;
}

TEST(OPLSCvFile, ComesBackToTheSameBytes) {
  const std::string bytes = SmallCvFile();
  EXPECT_EQ(OPLSCvFileBytes(ReadOPLSCvFile(bytes, "cv")), bytes);
}

TEST(OPLSCvFile, HoldsGroupsNamesScalingAndTheHistory) {
  const StoredOPLSCv stored = ReadOPLSCvFile(SmallCvFile(), "cv");
  EXPECT_EQ(stored.xNames, (Words{"x1", "x2", "x3"}));
  EXPECT_EQ(stored.yNames, (Words{"y1", "y2"}));
  EXPECT_EQ(stored.scaling, NCScale::ScalingUnitVariance);
  EXPECT_EQ(stored.digest.size(), 32U);
  EXPECT_EQ(stored.rounds, 2);
  EXPECT_EQ(stored.groups.Size(), 8);
  EXPECT_EQ(stored.state.predictive, 1);
  EXPECT_EQ(stored.state.steps.size(), 2U);
  EXPECT_EQ(stored.state.data.WOPerRound.size(), 2U);
}

TEST(OPLSCvFile, IsRefusedWithAGroupThatIsNone) {
  for (const int group : {-1, -98, 2, std::numeric_limits<int>::max()}) {
    StoredOPLSCv stored = ReadOPLSCvFile(SmallCvFile(), "cv");
    stored.groups(3) = group;
    EXPECT_EQ(Refusal(OPLSCvFileBytes(stored)), "cv is damaged: its parts do not fit together") << group;
  }
}

TEST(OPLSCvFile, IsRefusedWhenCutAtAnyByte) {
  const std::string bytes = SmallCvFile();
  EXPECT_EQ(Refusal(""), "cv is empty, no cross-validation of kalmia opls");
  for (std::size_t length = 1; length < bytes.size(); ++length) {
    EXPECT_THAT(Refusal(bytes.substr(0, length)), HasSubstr("cv is cut")) << length;
  }
}

TEST(OPLSCvFile, IsRefusedWithAnyBitFlipped) {
  std::string bytes = SmallCvFile();
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      bytes[i] = static_cast<char>(bytes[i] ^ static_cast<char>(1U << bit));
      EXPECT_NE(Refusal(bytes), "") << "byte " << i << " bit " << bit;
      bytes[i] = static_cast<char>(bytes[i] ^ static_cast<char>(1U << bit));
    }
  }
}

TEST(OPLSCvFile, IsReadOrRefusedButNeverHarmsWhenForged) {
  const std::string original = SmallCvFile();
  int read = 0;
  for (std::size_t i = kContentAt; i < original.size(); ++i) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      std::string bytes = original;
      bytes[i] = static_cast<char>(bytes[i] ^ static_cast<char>(1U << bit));
      const std::string refusal = Refusal(WithMatchingChecksum(bytes));
      if (refusal.empty()) {
        ++read;
      } else {
        EXPECT_EQ(refusal, "cv is damaged: its parts do not fit together");
      }
    }
  }
  EXPECT_GT(read, 0);  // a flip within a cell is nobody's to notice
}

TEST(OPLSCvFile, EndsInAFailureOrAFitWhenAForgedOneIsGoneOnFrom) {
  const std::string original = SmallCvFile();
  const kalmia::analysis::CsvTable table(UnrelatedTable(8, 3, 2, 1), "t.csv");
  kalmia::analysis::OPLSRecipe recipe;
  recipe.y = {"y1,y2"};
  recipe.predictive = 1;
  recipe.components = 2;
  recipe.groups = 2;
  int fitted = 0, refused = 0;
  for (std::size_t i = kContentAt; i < original.size(); ++i) {
    std::string bytes = original;
    bytes[i] = static_cast<char>(bytes[i] ^ static_cast<char>(1U << i % 8));
    try {
      const StoredOPLSCv stored = ReadOPLSCvFile(WithMatchingChecksum(bytes), "cv");
      kalmia::analysis::Notes notes;
      EXPECT_GE(Fit(recipe, table, nullptr, &stored).components.size(), 1U);
      ++fitted;
    } catch (const Failure& failure) {
      EXPECT_EQ(std::string(failure.what()).substr(0, 3), "cv ");
      ++refused;
    }
  }
  EXPECT_GT(fitted, 0);
  EXPECT_GT(refused, 0);
}

TEST(OPLSCvFile, EndsInAFailureWhenItsContentIsCutByAForger) {
  const std::string original = SmallCvFile();
  for (std::size_t length = kContentAt; length < original.size(); ++length) {
    const std::string bytes = WithLength(original.substr(0, length), length - kContentAt);
    EXPECT_THAT(Refusal(WithMatchingChecksum(bytes)), HasSubstr("its parts do not fit together")) << length;
  }
}

}  // namespace
