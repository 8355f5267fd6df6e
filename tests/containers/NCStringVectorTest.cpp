#include "kalmia/containers/NCStringVector.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using IntVector = NCIntegralVector<int, -99>;

NCStringVector Strings(const std::vector<std::string>& texts) {
  NCStringVector v;
  for (const std::string& text : texts) v.push_back(text.c_str());
  return v;
}

std::vector<std::string> TextsOf(const NCStringVector& v) {
  std::vector<std::string> texts;
  for (int i = 1; i <= v.Size(); ++i) texts.emplace_back(v[i]);
  return texts;
}

IntVector Indices(const std::vector<int>& indices) {
  return IntVector(indices.data(), static_cast<int>(indices.size()));
}

TEST(NCStringVector, IsMadeEmptyOfASizeAndFromAList) {
  EXPECT_TRUE(NCStringVector().empty());
  EXPECT_THAT(TextsOf(NCStringVector(2)), ElementsAre("", ""));
  std::vector<CString> list = {"a", "b"};
  const NCStringVector v(list);
  list[0] = "changed";
  EXPECT_THAT(TextsOf(v), ElementsAre("a", "b"));
  EXPECT_EQ(v.Size(), 2);
  EXPECT_EQ(v.size(), 2);
  EXPECT_FALSE(v.empty());
}

TEST(NCStringVector, SharesUntilEitherSideIsWritten) {
  const NCStringVector original = Strings({"a", "b"});
  const auto expectOriginal = [&] { EXPECT_THAT(TextsOf(original), ElementsAre("a", "b")); };
  {
    NCStringVector copy(original);
    EXPECT_EQ(&copy[1], &original[1]) << "shared";
    EXPECT_STREQ(copy(1, "x"), "x");
    EXPECT_THAT(TextsOf(copy), ElementsAre("x", "b"));
    expectOriginal();
  }
  const auto writes = {
      +[](NCStringVector& v) { v.push_back("x"); },
      +[](NCStringVector& v) { v.InsertStrings(1); },
      +[](NCStringVector& v) { v.InsertStrings(2, 3); },
      +[](NCStringVector& v) { v.InsertStrings(2, 3, "x"); },
      +[](NCStringVector& v) { v.RemoveStrings(1, 1); },
      +[](NCStringVector& v) { v.Remove(Indices({1})); },
      +[](NCStringVector& v) { v.Reduce(Indices({2})); },
      +[](NCStringVector& v) { v.Concat(v); },
      +[](NCStringVector& v) { v.RemoveString("a", true); },
      +[](NCStringVector& v) { v.Sort(false, true, false); },
      +[](NCStringVector& v) { std::vector<int> order; v.SortWithOriginalIndex(false, true, order); },
      +[](NCStringVector& v) { v.SortedInsert("aa", true, false); },
      +[](NCStringVector& v) { v.Clear(); },
  };
  for (const auto write : writes) {
    NCStringVector copy;
    copy = original;
    write(copy);
    EXPECT_NE(copy, original);
    expectOriginal();
  }
}

TEST(NCStringVector, GoesOnSharingWhereNothingIsInsertedOrRemoved) {
  const NCStringVector original = Strings({"a", "b"});
  const auto idle = {
      +[](NCStringVector& v) { v.InsertStrings(1, 0); },
      +[](NCStringVector& v) { v.InsertStrings(1, -3, "x"); },
      +[](NCStringVector& v) { v.RemoveStrings(1, 0); },
      +[](NCStringVector& v) { v.RemoveStrings(3, 1); },
      +[](NCStringVector& v) { v.Remove(Indices({0, 3, -99})); },
      +[](NCStringVector& v) { v.Remove(IntVector()); },
      +[](NCStringVector& v) { EXPECT_EQ(v.RemoveString("A", true), 0); },
      +[](NCStringVector& v) { v.Concat(NCStringVector()); },
  };
  for (const auto call : idle) {
    NCStringVector copy(original);
    call(copy);
    EXPECT_THAT(TextsOf(copy), ElementsAre("a", "b"));
    EXPECT_EQ(&copy[1], &original[1]);
  }
}

TEST(NCStringVector, UnlinksToAPrivateCopy) {
  NCStringVector a = Strings({"a"});
  const CString* own = &a[1];
  a.Unlink();
  EXPECT_EQ(&a[1], own) << "nobody shares it";
  const NCStringVector b(a);
  a.Unlink();
  EXPECT_NE(&a[1], &b[1]);
  const CString* unshared = &b[1];
  NCStringVector c(b);
  c.ForceUnlink();
  EXPECT_NE(&c[1], unshared);
  EXPECT_EQ(a, c);
}

TEST(NCStringVector, SwapsAndClears) {
  NCStringVector a = Strings({"a"}), b = Strings({"b", "c"});
  a.swap(b);
  EXPECT_THAT(TextsOf(a), ElementsAre("b", "c"));
  EXPECT_THAT(TextsOf(b), ElementsAre("a"));
  a.Clear();
  EXPECT_TRUE(a.empty());
}

TEST(NCStringVector, ReservesWithoutChangingAnything) {
  NCStringVector v = Strings({"a"});
  v.Reserve(100);
  v.reserve(-1);
  const CString* first = &v[1];
  for (int i = 0; i < 99; ++i) v.push_back("x");
  EXPECT_EQ(&v[1], first) << "room for a hundred was taken at once";
}

TEST(NCStringVector, InsertsBeforeAPosition) {
  NCStringVector v = Strings({"a", "b"});
  v.InsertStrings(2);
  EXPECT_THAT(TextsOf(v), ElementsAre("a", "", "b"));
  v.InsertStrings(1, 2, "x");
  EXPECT_THAT(TextsOf(v), ElementsAre("x", "x", "a", "", "b"));
  v.InsertStrings(6, 1, "end");
  v.InsertStrings(100, 1, "cut to the end");
  EXPECT_THAT(TextsOf(v), ElementsAre("x", "x", "a", "", "b", "end", "cut to the end"));
  v.InsertStrings(1, 0, "none");
  v.InsertStrings(1, -3, "none");
  EXPECT_EQ(v.Size(), 7);
}

TEST(NCStringVector, TakesAPositionBelow1AsTheFirst) {
  constexpr int kLowest = std::numeric_limits<int>::min();
  for (const int at : {0, -1, kLowest}) {
    NCStringVector v = Strings({"a", "b", "c"});
    v.InsertStrings(at, 1, "x");
    EXPECT_THAT(TextsOf(v), ElementsAre("x", "a", "b", "c"));
    v.RemoveStrings(at, 2);
    EXPECT_THAT(TextsOf(v), ElementsAre("b", "c"));
    EXPECT_EQ(v.FindString("b", true, at), 1);
  }
}

TEST(NCStringVector, InsertsItsOwnStrings) {
  NCStringVector v = Strings({"a", "b"});
  for (int i = 0; i < 20; ++i) v.push_back(v[1]);
  v.InsertStrings(1, 30, v[2]);
  EXPECT_STREQ(v[30], "b");
  EXPECT_STREQ(v[31], "a");
  EXPECT_STREQ(v[52], "a");
}

TEST(NCStringVector, RemovesARange) {
  NCStringVector v = Strings({"a", "b", "c", "d"});
  v.RemoveStrings(2, 2);
  EXPECT_THAT(TextsOf(v), ElementsAre("a", "d"));
  v.RemoveStrings(1, 0);
  EXPECT_EQ(v.Size(), 2);
  v.RemoveStrings(2, 100);
  EXPECT_THAT(TextsOf(v), ElementsAre("a"));
}

TEST(NCStringVector, RemovesAndReducesByIndices) {
  const NCStringVector all = Strings({"a", "b", "c", "d"});
  NCStringVector v(all);
  v.Remove(Indices({3, 1, 3, 77, -99}));
  EXPECT_THAT(TextsOf(v), ElementsAre("b", "d"));
  v = all;
  v.Reduce(Indices({4, 1, 4}));
  EXPECT_THAT(TextsOf(v), ElementsAre("d", "a", "d"));
  v.Reduce(IntVector());
  EXPECT_TRUE(v.empty());
}

TEST(NCStringVector, ConcatenatesAnotherAndItself) {
  NCStringVector v = Strings({"a"});
  v.Concat(Strings({"b", "c"}));
  v.Concat(v);
  EXPECT_THAT(TextsOf(v), ElementsAre("a", "b", "c", "a", "b", "c"));
}

TEST(NCStringVector, FindsWithAndWithoutCase) {
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

TEST(NCStringVector, TakesANullTextForTheEmptyOne) {
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

TEST(NCStringVector, RemovesEveryMatchAndCounts) {
  NCStringVector v = Strings({"A", "b", "a"});
  EXPECT_EQ(v.RemoveString("a", false), 2);
  EXPECT_THAT(TextsOf(v), ElementsAre("b"));
  EXPECT_EQ(v.RemoveString("a", false), 0);
  v = Strings({"A", "b", "a"});
  EXPECT_EQ(v.RemoveString("a", true), 1);
  EXPECT_EQ(v.RemoveString(v[1], true), 1) << "named by a string that goes";
  EXPECT_THAT(TextsOf(v), ElementsAre("b"));
}

TEST(NCStringVector, SortsInEightOrders) {
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

TEST(NCStringVector, PutsTenBehindNineAmongNumbers) {
  NCStringVector v = Strings({"10", "9", "x"});
  v.Sort(true, false, true);
  EXPECT_THAT(TextsOf(v), ElementsAre("9", "10", "x"));
}

TEST(NCStringVector, SortsNumbersByValueWhateverTheirForm) {
  NCStringVector v = Strings({"1e2", "-5", "5.5", "007", "-1e1"});
  v.Sort(true, true, true);
  EXPECT_THAT(TextsOf(v), ElementsAre("-1e1", "-5", "5.5", "007", "1e2"));
}

TEST(NCStringVector, TakesNumbersForEqualThatAreTheSameFloat) {
  NCStringVector v = Strings({"16777217", "16777216", "16777218"});  // 2^24 + 1 lies between two floats
  v.Sort(true, true, true);
  EXPECT_THAT(TextsOf(v), ElementsAre("16777217", "16777216", "16777218"));
  EXPECT_EQ(v.FindSortedString("16777216", true, true), 1);
  EXPECT_EQ(v.FindSortedString("16777216.5", true, true), 1);
  EXPECT_EQ(v.FindSortedString("16777218", true, true), 3);
}

TEST(NCStringVector, KeepsEveryStringWhereNumbersAndNamesHaveNoConsistentOrder) {
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

TEST(NCStringVector, ReportsTheOldPositions) {
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

TEST(NCStringVector, FindsPlacesInASortedVector) {
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

TEST(NCStringVector, FindsStringsInASortedVector) {
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

TEST(NCStringVector, KeepsItsOrderUnderSortedInsertion) {
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

TEST(NCStringVector, ConvertsBothWaysByCopying) {
  const NCStringVector v = Strings({"a", "b"});
  std::vector<CString> list = {"old"};
  NCStringVector::Convert(v, list);
  ASSERT_EQ(list.size(), 2u);
  EXPECT_STREQ(list[1], "b");
  list.emplace_back("c");
  NCStringVector back = Strings({"old"});
  NCStringVector::Convert(list, back);
  EXPECT_THAT(TextsOf(back), ElementsAre("a", "b", "c"));
  EXPECT_THAT(TextsOf(v), ElementsAre("a", "b"));
}

TEST(NCStringVector, IsEqualWhereAllStringsAre) {
  const NCStringVector v = Strings({"a", "b"});
  EXPECT_TRUE(v == NCStringVector(v));
  EXPECT_TRUE(v == Strings({"a", "b"}));
  EXPECT_TRUE(v != Strings({"a"}));
  EXPECT_TRUE(v != Strings({"a", "B"}));
  EXPECT_TRUE(NCStringVector() == NCStringVector());
}

TEST(NCStringVector, IsMadeByItsName) {
  const std::unique_ptr<VexStreamBase> object(ClassCreatorRegistrator::Create("NCStringVector"));
  const auto* v = dynamic_cast<NCStringVector*>(object.get());
  ASSERT_NE(v, nullptr);
  EXPECT_TRUE(v->empty());
  EXPECT_STREQ(ClassCreatorRegistrator::NameOf(*v), "NCStringVector");
}

}  // namespace
