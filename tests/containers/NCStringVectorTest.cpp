#include "kalmia/containers/NCStringVector.h"

#include <gmock/gmock.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "Texts.h"
#include "testing/Ints.h"

namespace {

using ::testing::ElementsAre;

using IntVector = NCIntegralVector<int, -99>;

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
      +[](NCStringVector& v) { v.Remove(Ints({1})); },
      +[](NCStringVector& v) { v.Reduce(Ints({2})); },
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
      +[](NCStringVector& v) { v.Remove(Ints({0, 3, -99})); },
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
  v.Remove(Ints({3, 1, 3, 77, -99}));
  EXPECT_THAT(TextsOf(v), ElementsAre("b", "d"));
  v = all;
  v.Reduce(Ints({4, 1, 4}));
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
