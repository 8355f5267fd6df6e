#include "kalmia/support/CString.h"

#include <gtest/gtest.h>

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

}  // namespace
