#include "kalmia/support/CString.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>

namespace {

TEST(CString, IsEmptyByDefaultAndFromNull) {
  EXPECT_STREQ(CString(), "");
  EXPECT_STREQ(CString(nullptr), "");
}

TEST(CString, ComparesByBytes) {
  EXPECT_EQ(CString("abc").Compare("abc"), 0);
  EXPECT_LT(CString("Z").Compare("a"), 0);
  EXPECT_GT(CString("a").Compare("Z"), 0);
  EXPECT_GT(CString("a").Compare(nullptr), 0);
}

TEST(CString, FormatsAnArgumentThatPointsIntoItself) {
  CString text("component");
  text.Format("%s %d", static_cast<const char*>(text), 3);
  EXPECT_STREQ(text, "component 3");
}

TEST(CString, FormatsTextsLongerThanAnyBuffer) {
  const std::string longText(10000, 'x');
  CString text;
  text.Format("<%s>", longText.c_str());
  EXPECT_EQ(std::string(text), "<" + longText + ">");
}

TEST(CString, IsEqualWhereTheBytesAre) {
  EXPECT_TRUE(CString("a") == CString("a"));
  EXPECT_TRUE("a" == CString("a"));
  EXPECT_TRUE(CString("a") != "b");
}

TEST(CString, IsOrderedByItsBytes) {
  const CString a("a"), again("a"), z("Z"), longer("ab");
  EXPECT_TRUE(z < a && a < longer && !(a < again));
  EXPECT_TRUE(longer > a && a > z && !(a > again));
  EXPECT_TRUE(a <= again && z <= a && !(longer <= a));
  EXPECT_TRUE(a >= again && a >= z && !(a >= longer));
  EXPECT_TRUE(z < "a" && a > "Z" && a <= "a" && a >= "a");
  EXPECT_TRUE("Z" < a && "a" > z && "a" <= a && "a" >= a);
  EXPECT_FALSE(a < "Z" || "a" < z || z > "a" || "Z" > a);
  EXPECT_FALSE(a <= "Z" || "a" <= z || z >= "a" || "Z" >= a);
  const std::set<CString> names = {"b", "a", "b", "A"};
  EXPECT_EQ(names.size(), 3u);
  EXPECT_STREQ(*names.begin(), "A");
}

TEST(CString, CopiesMovesAndAssigns) {
  CString a("text");
  CString b(a);
  CString c;
  c = b;
  EXPECT_STREQ(c, "text");
  const CString d(std::move(b));
  EXPECT_STREQ(d, "text");
  const CString& same = c;
  c = same;
  EXPECT_STREQ(c, "text") << "assigned to itself";
  c = CString();
  EXPECT_STREQ(c, "");
  EXPECT_STREQ(a, "text");
  a = static_cast<const char*>(a) + 2;
  EXPECT_STREQ(a, "xt") << "a part of itself";
}

TEST(CString, FormatsToTheEmptyString) {
  CString text("before");
  text.Format("%s", "");
  EXPECT_STREQ(text, "");
  EXPECT_TRUE(text == CString());
}

}  // namespace
