// Stored cross-validations of OPLS: what comes back, and what is refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "FailureOf.h"
#include "FramedFile.h"
#include "TestTables.h"
#include "kalmia/analysis/file/OPLSCvFile.h"
#include "kalmia/analysis/fit/OPLSResult.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {
namespace {

using namespace framed;
using ::testing::HasSubstr;

using Words = std::vector<std::string>;

Table SmallTable() { return Table(UnrelatedTable(8, 3, 2, 1), "t.csv"); }

OPLSRecipe SmallRecipe(int orthogonal) {
  OPLSRecipe recipe;
  recipe.y = {"y1,y2"};
  recipe.predictive = 1;
  recipe.components = orthogonal;
  recipe.groups = 2;
  return recipe;
}

/// The bytes of a cross-validation of 8 rows, 3 X columns and 2 Y columns with one orthogonal component.
std::string SmallCvFile() { return OPLSCvFileBytes(Fit(SmallRecipe(1), SmallTable()).validation); }

/// The message with which the bytes are refused; "" if they are read.
std::string Refusal(const std::string& bytes) {
  try {
    ReadOPLSCvFile(bytes, "cv");
  } catch (const Failure& failure) {
    EXPECT_TRUE(Is<BadFile>(failure));
    return failure.what();
  }
  return "";
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
  const std::string bytes = SmallCvFile();
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      EXPECT_NE(Refusal(WithBitFlipped(bytes, i, bit)), "") << "byte " << i << " bit " << bit;
    }
  }
}

TEST(OPLSCvFile, IsReadOrRefusedButNeverHarmsWhenForged) {
  const std::string original = SmallCvFile();
  int read = 0;
  for (std::size_t i = kContentAt; i < original.size(); ++i) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      const std::string refusal = Refusal(Forged(WithBitFlipped(original, i, bit)));
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
  const Table table = SmallTable();
  int fitted = 0, refused = 0;
  for (std::size_t i = kContentAt; i < original.size(); ++i) {
    try {
      const StoredOPLSCv stored = ReadOPLSCvFile(Forged(WithBitFlipped(original, i, i % 8)), "cv");
      EXPECT_GE(Fit(SmallRecipe(2), table, nullptr, &stored).components.size(), 1U);
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
    EXPECT_THAT(Refusal(Forged(original.substr(0, length))), HasSubstr("its parts do not fit together")) << length;
  }
}

}  // namespace
}  // namespace kalmia::analysis
