#include "kalmia/o2pls/SignificanceE.h"

#include <gtest/gtest.h>

namespace {

TEST(SignificanceE, HasANameAndAVerdictForEachCode) {
  const struct {
    int code;
    const char* name;
    bool isSignificant;
  } codes[] = {{0, "R1", true},  {1, "R2", true},  {2, "R5", true},  {3, "NS", false},
               {4, "N3", false}, {5, "N4", false}, {6, "U", false},  {7, "NA", false},
               {8, "RB1", true}, {9, "RB2", true}, {10, "NB1", false}};
  for (const auto& c : codes) {
    const auto code = static_cast<SignificanceE::Significance>(c.code);
    EXPECT_STREQ(SignificanceE::GetSignificance(code), c.name);
    EXPECT_EQ(SignificanceE::IsSignificant(code), c.isSignificant) << c.name;
  }
}

TEST(SignificanceE, HasNeitherForAnyOtherCode) {
  const auto code = static_cast<SignificanceE::Significance>(11);
  EXPECT_STREQ(SignificanceE::GetSignificance(code), "");
  EXPECT_FALSE(SignificanceE::IsSignificant(code));
}

}  // namespace
