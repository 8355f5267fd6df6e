#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "kalmia/analysis/table/internal/CellNumber.h"

namespace kalmia::analysis {
namespace {

float NumberIn(const std::string& text, bool decimalComma = false) {
  const CellValue cell = ReadCell(text, decimalComma);
  EXPECT_EQ(cell.kind, CellKind::Number) << text;
  return static_cast<float>(cell.value);
}

CellKind KindOf(const std::string& text, bool decimalComma = false) { return ReadCell(text, decimalComma).kind; }

TEST(ReadCell, TakesEveryWayToWriteANumber) {
  EXPECT_EQ(NumberIn("1"), 1.0F);
  EXPECT_EQ(NumberIn("+1.5"), 1.5F);
  EXPECT_EQ(NumberIn("-.5"), -0.5F);
  EXPECT_EQ(NumberIn("5."), 5.0F);
  EXPECT_EQ(NumberIn("1e3"), 1000.0F);
  EXPECT_EQ(NumberIn("1.25E-1"), 0.125F);
  EXPECT_EQ(NumberIn("007"), 7.0F);
  EXPECT_EQ(NumberIn(" \t2 "), 2.0F);
  EXPECT_TRUE(std::signbit(NumberIn("-0")));
}

TEST(ReadCell, RoundsOnceToTheNearestFloat) {
  // 1 + 2^-24 + 2^-60: by way of double it would round to the tie 1 + 2^-24 and then to the even neighbour, 1.
  EXPECT_EQ(NumberIn("1.000000059604644775"), 1.0F);
  EXPECT_EQ(NumberIn("1.00000005960464477625798450469970703125"), std::nextafter(1.0F, 2.0F));
}

TEST(ReadCell, TakesEmptyAndTheThreeWordsAsMissingAndNoOthers) {
  for (const char* text : {"", "  ", "NA", "NaN", "nan"}) EXPECT_EQ(KindOf(text), CellKind::Missing) << text;
  for (const char* text : {"na", "NAN", "N/A", "nan(1)", "-nan", "null", "-", "+", ".", "?"}) {
    EXPECT_EQ(KindOf(text), CellKind::Word) << text;
  }
}

TEST(ReadCell, SeesInfinityInEverySpelling) {
  for (const char* text : {"inf", "-inf", "+Inf", "INFINITY", "-Infinity"}) {
    EXPECT_EQ(KindOf(text), CellKind::Infinite) << text;
  }
}

TEST(ReadCell, SeesANumberBeyondTheLargestFloatButNotBeneathTheSmallest) {
  EXPECT_EQ(NumberIn("3.4028235e38"), std::numeric_limits<float>::max());
  for (const char* text :
       {"3.4028236e38", "-1e39", "1e400", "1e99999999999999999999", "1000000000000000000000000000000000000000"}) {
    EXPECT_EQ(KindOf(text), CellKind::TooLarge) << text;
  }
  for (const char* text : {"1e-50", "-1e-400", "1e-99999999999999999999",
                           "0.00000000000000000000000000000000000000000000001", "12345e-60", "0e99999"}) {
    EXPECT_EQ(NumberIn(text), 0.0F) << text;
  }
}

TEST(ReadCell, RefusesWhatOnlyBeginsLikeANumber) {
  for (const char* text : {"1,5", "1.2.3", "1e", "1e+", "0x10", "1_000", "1 000", "3a", "--1", "+-1", "1%",
                           "\xE2\x88\x92"
                           "1"}) {
    EXPECT_EQ(KindOf(text), CellKind::Word) << text;
  }
}

TEST(ReadCell, TakesDecimalCommasAndThenNoPoints) {
  EXPECT_EQ(NumberIn("1,5", true), 1.5F);
  EXPECT_EQ(NumberIn("-,5", true), -0.5F);
  EXPECT_EQ(NumberIn("2", true), 2.0F);
  EXPECT_EQ(NumberIn("1,5e-1", true), 0.15F);
  for (const char* text : {"1.5", "1.234,5", "1,2,3", ","}) EXPECT_EQ(KindOf(text, true), CellKind::Word) << text;
}

TEST(ReadCell, KeepsTheNearestDouble) {
  EXPECT_EQ(ReadCell("0.1", false).value, 0.1);
  EXPECT_EQ(ReadCell("-1234.56789", false).value, -1234.56789);
  EXPECT_EQ(ReadCell("3,3333333333333335", true).value, 10.0 / 3.0);
}

TEST(ReadCell, LeavesThePlaceHalfwayBetweenTwoFloatsWhereTheFloatNearestToTheTextIsTheOther) {
  const double half = 1.0 + 0x1p-24;
  EXPECT_EQ(ReadCell("1.000000059604644775390625", false).value, half);
  EXPECT_EQ(ReadCell("1.000000059604644775390624", false).value, half) << "which becomes 1, as it should";
  EXPECT_EQ(ReadCell("1.000000059604644775390626", false).value, std::nextafter(half, 2.0));
  EXPECT_EQ(ReadCell("-16777217,0000000001", true).value, std::nextafter(-16777217.0, -2e7));
}

TEST(ReadCell, TakesTheWordsOfTheFormatForMissingCells) {
  const CellFormat format = {false, {"-999", "n/a"}};
  for (const char* text : {"-999", " n/a ", "NA", ""})
    EXPECT_EQ(ReadCell(text, format).kind, CellKind::Missing) << text;
  EXPECT_EQ(ReadCell("-999.0", format).kind, CellKind::Number);
  EXPECT_EQ(ReadCell("N/A", format).kind, CellKind::Word);
}

}  // namespace
}  // namespace kalmia::analysis
