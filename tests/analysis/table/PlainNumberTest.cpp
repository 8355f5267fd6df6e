#include "kalmia/analysis/table/internal/PlainNumber.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "kalmia/analysis/table/internal/CellNumber.h"

namespace kalmia::analysis {
namespace {

TEST(TakePlainNumber, GivesTheValueOfReadCellForEveryNumberThatItTakes) {
  std::mt19937_64 random(7);
  int taken = 0;
  for (int i = 0; i < 200000; ++i) {
    std::string text = std::to_string(random() >> (random() % 64));
    if (random() % 4 != 0) text.insert(random() % (text.size() + 1), ".");
    if (random() % 3 == 0) text.insert(0, random() % 2 == 0 ? "-" : "+");
    if (random() % 3 == 0) text += "e" + std::to_string(static_cast<int>(random() % 60) - 30);
    static const char* const kBehind[] = {",5", ";", "\n12345678", ",-123456789", "\xFF\xFE 1234567", "/:/:/:/:"};
    const std::string followed = text + kBehind[random() % 6];
    const PlainNumber number = TakePlainNumber(followed.data(), followed.data() + followed.size(), '.');
    if (number.end == nullptr) continue;
    ++taken;
    ASSERT_EQ(static_cast<std::size_t>(number.end - followed.data()), text.size()) << text;
    ASSERT_EQ(number.hasMark, text.find('.') != std::string::npos) << text;
    ASSERT_EQ(ReadCell(text, false).kind, CellKind::Number) << text;
    ASSERT_EQ(number.value, ReadCell(text, false).value) << text;
  }
  EXPECT_GT(taken, 100000);
}

TEST(TakePlainNumber, LeavesEverythingElseToReadCell) {
  for (const std::string text : {"", "-", ".", "+.", "e5", "1e", "1e+", "1e1000", "12345678901234567890", "1e23", "x",
                                 "9007199254740993", "16777217", "0,5"}) {
    const PlainNumber number = TakePlainNumber(text.data(), text.data() + text.size(), '.');
    const bool isTaken = number.end == text.data() + text.size();
    EXPECT_FALSE(isTaken) << text;
  }
}

}  // namespace
}  // namespace kalmia::analysis
