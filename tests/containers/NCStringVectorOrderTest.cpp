#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Texts.h"
#include "kalmia/containers/NCStringVector.h"

// Search and sorting.

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(NCStringVectorOrder, FindsWithAndWithoutCase) {
  const NCStringVector v = Strings({"x", "A", "a", "A"});
  EXPECT_EQ(v.FindString("a", false, 1), 2);
  EXPECT_EQ(v.FindString("a", true, 1), 3);
  EXPECT_EQ(Strings({"A"}).FindString("a", true, 1), 0);
  EXPECT_EQ(v.FindString("A", true, 3), 4);
  EXPECT_EQ(v.FindString("a", false, 4), 4);
  EXPECT_EQ(v.FindString("a", false, 5), 0) << "from beyond the end";
  EXPECT_EQ(v.FindString("b", false, 1), 0);
  EXPECT_EQ(NCStringVector().FindString("a", false, 1), 0);
}

TEST(NCStringVectorOrder, TakesANullTextForTheEmptyOne) {
  NCStringVector v = Strings({"", "a", "", "b"});
  for (const bool caseSensitive : {true, false}) {
    EXPECT_EQ(v.FindString(nullptr, caseSensitive, 2), 3);
    EXPECT_EQ(v.SortedStringPos(nullptr, caseSensitive, false), 1);
    EXPECT_EQ(v.FindSortedString(nullptr, caseSensitive, true), 1);
  }
  EXPECT_EQ(v.RemoveString(nullptr, false), 2);
  EXPECT_EQ(v.FindString(nullptr, true), 0);
  EXPECT_THAT(TextsOf(v), ElementsAre("a", "b"));
}

TEST(NCStringVectorOrder, RemovesEveryMatchAndCounts) {
  NCStringVector v = Strings({"A", "b", "a"});
  EXPECT_EQ(v.RemoveString("a", false), 2);
  EXPECT_THAT(TextsOf(v), ElementsAre("b"));
  EXPECT_EQ(v.RemoveString("a", false), 0);
  v = Strings({"A", "b", "a"});
  EXPECT_EQ(v.RemoveString("a", true), 1);
  EXPECT_EQ(v.RemoveString(v[1], true), 1) << "named by a string that goes";
  EXPECT_THAT(TextsOf(v), ElementsAre("b"));
}

TEST(NCStringVectorOrder, SortsInEightOrders) {
  struct Case {
    bool ascending, caseSensitive, numeric;
    std::vector<std::string> sorted;
  };
  const Case cases[] = {
      {true, true, false, {"10", "9", "B", "a", "b"}},  {true, false, false, {"10", "9", "a", "B", "b"}},
      {true, true, true, {"9", "10", "B", "a", "b"}},   {true, false, true, {"9", "10", "a", "B", "b"}},
      {false, true, false, {"b", "a", "B", "9", "10"}}, {false, false, false, {"B", "b", "a", "9", "10"}},
      {false, true, true, {"b", "a", "B", "10", "9"}},  {false, false, true, {"B", "b", "a", "10", "9"}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.ascending ? "ascending" : "descending") + (c.caseSensitive ? ", case" : ", no case") +
                 (c.numeric ? ", numeric" : ", text"));
    NCStringVector v = Strings({"10", "B", "a", "9", "b"});
    v.Sort(c.ascending, c.caseSensitive, c.numeric);
    EXPECT_EQ(TextsOf(v), c.sorted);
  }
}

TEST(NCStringVectorOrder, PutsTenBehindNineAmongNumbers) {
  NCStringVector v = Strings({"10", "9", "x"});
  v.Sort(true, false, true);
  EXPECT_THAT(TextsOf(v), ElementsAre("9", "10", "x"));
}

TEST(NCStringVectorOrder, SortsNumbersByValueWhateverTheirForm) {
  NCStringVector v = Strings({"1e2", "-5", "5.5", "007", "-1e1"});
  v.Sort(true, true, true);
  EXPECT_THAT(TextsOf(v), ElementsAre("-1e1", "-5", "5.5", "007", "1e2"));
}

TEST(NCStringVectorOrder, TakesNumbersForEqualThatAreTheSameFloat) {
  NCStringVector v = Strings({"16777217", "16777216", "16777218"});  // 2^24 + 1 lies between two floats
  v.Sort(true, true, true);
  EXPECT_THAT(TextsOf(v), ElementsAre("16777217", "16777216", "16777218"));
  EXPECT_EQ(v.FindSortedString("16777216", true, true), 1);
  EXPECT_EQ(v.FindSortedString("16777216.5", true, true), 1);
  EXPECT_EQ(v.FindSortedString("16777218", true, true), 3);
}

TEST(NCStringVectorOrder, KeepsEveryStringWhereNumbersAndNamesHaveNoConsistentOrder) {
  std::vector<std::string> texts;
  for (int i = 0; i < 1000; ++i)
    for (const char* form : {"%d", "%dx", "x%d"}) {
      CString text;
      text.Format(form, (i * 7919) % 1000);
      texts.emplace_back(text);
    }
  NCStringVector v = Strings(texts);
  v.Sort(true, true, true);
  std::vector<std::string> sorted = TextsOf(v);
  std::sort(sorted.begin(), sorted.end());
  std::sort(texts.begin(), texts.end());
  EXPECT_EQ(sorted, texts);
}

TEST(NCStringVectorOrder, ReportsTheOldPositions) {
  NCStringVector v = Strings({"c", "A", "b", "a"});
  std::vector<int> order(99);
  v.SortWithOriginalIndex(true, false, order);
  EXPECT_THAT(TextsOf(v), ElementsAre("A", "a", "b", "c"));
  EXPECT_THAT(order, ElementsAre(2, 4, 3, 1));
  v.SortWithOriginalIndex(false, true, order);
  EXPECT_THAT(TextsOf(v), ElementsAre("c", "b", "a", "A"));
  EXPECT_THAT(order, ElementsAre(4, 3, 2, 1));
  NCStringVector none;
  none.SortWithOriginalIndex(true, true, order);
  EXPECT_THAT(order, IsEmpty());
}

TEST(NCStringVectorOrder, FindsPlacesInASortedVector) {
  const NCStringVector v = Strings({"a", "c", "c", "e"});
  EXPECT_EQ(v.SortedStringPos("", true, false), 1);
  EXPECT_EQ(v.SortedStringPos("a", true, false), 1);
  EXPECT_EQ(v.SortedStringPos("b", true, false), 2);
  EXPECT_EQ(v.SortedStringPos("c", true, false), 2);
  EXPECT_EQ(v.SortedStringPos("d", true, false), 4);
  EXPECT_EQ(v.SortedStringPos("f", true, false), 0) << "all strings are before it";
  EXPECT_EQ(NCStringVector().SortedStringPos("a", true, false), 0);
  const NCStringVector anyCase = Strings({"A", "c", "C", "e"});
  EXPECT_EQ(anyCase.SortedStringPos("a", false, false), 1);
  EXPECT_EQ(anyCase.SortedStringPos("B", false, false), 2);
  EXPECT_EQ(anyCase.SortedStringPos("C", false, false), 2);
  EXPECT_EQ(anyCase.SortedStringPos("D", false, false), 4);
  EXPECT_EQ(anyCase.SortedStringPos("F", false, false), 0);
  const NCStringVector numbers = Strings({"9", "1e1", "10.5", "a"});
  EXPECT_EQ(numbers.SortedStringPos("8", true, true), 1);
  EXPECT_EQ(numbers.SortedStringPos("10", true, true), 2);
  EXPECT_EQ(numbers.SortedStringPos("10.25", true, true), 3);
  EXPECT_EQ(numbers.SortedStringPos("b", true, true), 0);
}

TEST(NCStringVectorOrder, FindsStringsInASortedVector) {
  const NCStringVector v = Strings({"a", "C", "c", "e"});
  EXPECT_EQ(v.FindSortedString("a", false, false), 1);
  EXPECT_EQ(v.FindSortedString("c", false, false), 2);
  EXPECT_EQ(v.FindSortedString("E", false, false), 4);
  EXPECT_EQ(v.FindSortedString("b", false, false), 0);
  EXPECT_EQ(v.FindSortedString("f", false, false), 0);
  const NCStringVector byBytes = Strings({"B", "C", "a", "c"});
  EXPECT_EQ(byBytes.FindSortedString("C", true, false), 2);
  EXPECT_EQ(byBytes.FindSortedString("c", true, false), 4);
  EXPECT_EQ(byBytes.FindSortedString("A", true, false), 0) << "only in the other case";
  const NCStringVector numbers = Strings({"1", "2.0", "10"});
  EXPECT_EQ(numbers.FindSortedString("10", true, true), 3);
  EXPECT_EQ(numbers.FindSortedString("2", true, true), 2) << "equal as a number";
  EXPECT_EQ(numbers.FindSortedString("3", true, true), 0);
}

TEST(NCStringVectorOrder, KeepsItsOrderUnderSortedInsertion) {
  NCStringVector v;
  v.SortedInsert("10", true, true);
  EXPECT_THAT(TextsOf(v), ElementsAre("10"));
  for (const char* s : {"9", "11", "100", "9.5"}) v.SortedInsert(s, true, true);
  EXPECT_THAT(TextsOf(v), ElementsAre("9", "9.5", "10", "11", "100"));
  v.SortedInsert(v[1], true, false);
  EXPECT_EQ(v.Size(), 6);
  NCStringVector names = Strings({"a", "B", "c"});
  names.SortedInsert("b", false, false);
  EXPECT_THAT(TextsOf(names), ElementsAre("a", "b", "B", "c")) << "before the first that is equal";
  names.SortedInsert("D", false, false);
  EXPECT_THAT(TextsOf(names), ElementsAre("a", "b", "B", "c", "D"));
}

}  // namespace
