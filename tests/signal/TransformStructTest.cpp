#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "kalmia/support/LanguageString.h"
#include "signal/Transforms.h"

namespace {

using T = TransformE;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kLargest = std::numeric_limits<float>::max();

TEST(TransformStruct, IsNoneWithMissingConstantsAtFirst) {
  const TransformStruct transform;
  EXPECT_EQ(transform.GetTransform(), 1);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(transform.GetConstant(i), -99.0F);
}

TEST(TransformStruct, NumbersItsKindsAsTheyAreStored) {
  EXPECT_EQ(T::TransformUndefined, 0);
  EXPECT_EQ(T::TransformNone, 1);
  EXPECT_EQ(T::TransformLinear, 2);
  EXPECT_EQ(T::TransformLog, 3);
  EXPECT_EQ(T::TransformNegLog, 4);
  EXPECT_EQ(T::TransformLogit, 5);
  EXPECT_EQ(T::TransformExp, 6);
  EXPECT_EQ(T::TransformPower, 7);
}

TEST(TransformStruct, NamesKindsAndFormulasByTheLanguageTexts) {
  const char* const names[] = {"",     "None",  "Linear",      "Logarithm", "Negative logarithm",
                               "Logit", "Exponential", "Power"};
  const char* const formulas[] = {"", "", "a*x + b", "log10(a*x + b)", "-log10(a*x + b)", "log10((x - a)/(b - x))",
                                  "e^(a*x + b)", "(a*x + b)^c"};
  for (int type = 0; type < 8; ++type) {
    EXPECT_STREQ(T::GetTransformName(T::Transform(type)), names[type]);
    EXPECT_STREQ(T::GetFormula(T::Transform(type)), formulas[type]);
    EXPECT_STREQ(NCTransform::GetTransformString(T::Transform(type)), names[type]);
    EXPECT_STREQ(TransformOf(T::Transform(type), 1, 0).GetTransformName(), names[type]);
  }
  for (const int type : {-1, 8}) {
    EXPECT_STREQ(T::GetTransformName(T::Transform(type)), "");
    EXPECT_STREQ(T::GetFormula(T::Transform(type)), "");
  }
}

TEST(TransformStruct, NamesKindsAndFormulasByTextsThatWereReplaced) {
  LanguageString::Set(10089, "Logarithmus");
  LanguageString::Set(10095, "lg(a*x + b)");
  EXPECT_STREQ(T::GetTransformName(T::TransformLog), "Logarithmus");
  EXPECT_STREQ(NCTransform::GetTransformString(T::TransformLog), "Logarithmus");
  EXPECT_STREQ(T::GetFormula(T::TransformLog), "lg(a*x + b)");
  LanguageString::Set(10089, nullptr);
  LanguageString::Set(10095, nullptr);
  EXPECT_STREQ(T::GetTransformName(T::TransformLog), "Logarithm");
  EXPECT_STREQ(T::GetFormula(T::TransformLog), "log10(a*x + b)");
}

TEST(TransformStruct, CopiesKindAndAllConstants) {
  const TransformStruct original = TransformOf(T::TransformPower, 2, 3, 4, 1);
  const TransformStruct fromPointer(&original);
  const TransformStruct copy(original);
  TransformStruct assigned;
  assigned = original;
  for (const TransformStruct* each : {&fromPointer, &copy, static_cast<const TransformStruct*>(&assigned)}) {
    EXPECT_EQ(each->GetTransform(), T::TransformPower);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(each->GetConstants()[i], i + 1.0F);
  }
  assigned.GetConstants()[0] = 9;
  EXPECT_EQ(original.GetConstant(0), 1.0F);
}

TEST(TransformStruct, IsEqualOnlyInKindAndAllFourConstants) {
  const TransformStruct one = TransformOf(T::TransformLog, 2, 3, 4, 1);
  TransformStruct other = one;
  EXPECT_TRUE(one == other);
  EXPECT_FALSE(one != other);
  other.SetTransform(T::TransformNegLog);
  EXPECT_TRUE(one != other);
  for (int i = 0; i < 4; ++i) {
    other = one;
    other.SetConstant(i, 7);
    EXPECT_FALSE(one == other) << "constant " << i;
    EXPECT_TRUE(one != other) << "constant " << i;
  }
}

TEST(TransformStruct, IsOrderedByKindThenByConstantsFromTheFirstOn) {
  const std::vector<TransformStruct> ascending = {
      TransformOf(T::TransformLinear, 9, 9, 9, 9), TransformOf(T::TransformLog, 9, 9, 9, 0),
      TransformOf(T::TransformLog, 1, 9, 9, 1),    TransformOf(T::TransformLog, 2, 1, 9, 1),
      TransformOf(T::TransformLog, 2, 2, 1, 1),    TransformOf(T::TransformLog, 2, 2, 2, 1)};
  for (std::size_t i = 0; i < ascending.size(); ++i)
    for (std::size_t j = 0; j < ascending.size(); ++j)
      EXPECT_EQ(ascending[i] < ascending[j], i < j) << i << ", " << j;  // equal ones are not less either way
}

TEST(TransformStruct, IsNotOrderedBehindAConstantThatIsNoNumber) {
  const TransformStruct one = TransformOf(T::TransformLog, 1, 1, 1, kNaN);
  const TransformStruct other = TransformOf(T::TransformLog, 2, 2, 2, 1);
  for (const TransformStruct& with : {one, other}) {
    EXPECT_FALSE(one < with);  // the NaN is the first difference, and decides
    EXPECT_FALSE(with < one);
    EXPECT_TRUE(one != with);
  }
}

TEST(TransformStruct, IsTheDefaultAsACopyOfNothing) {
  EXPECT_TRUE(TransformStruct(static_cast<const TransformStruct*>(nullptr)) == TransformStruct());
}

TEST(TransformStruct, FollowsItsFormulas) {
  for (const float x : {0.013F, 0.7F, 1.9F, 3.2F, 4.5F}) {
    const long double a = 2.5F, b = 0.3F, c = 1.7F, below = 0.01F, above = 5.1F, y = a * x + b;
    ExpectRounded(Forward(TransformOf(T::TransformLinear, 2.5F, 0.3F), x), y);
    ExpectRounded(Forward(TransformOf(T::TransformLog, 2.5F, 0.3F), x), std::log10(y));
    ExpectRounded(Forward(TransformOf(T::TransformNegLog, 2.5F, 0.3F), x), -std::log10(y));
    ExpectRounded(Forward(TransformOf(T::TransformExp, 2.5F, 0.3F), x), std::exp(y));
    ExpectRounded(Forward(TransformOf(T::TransformPower, 2.5F, 0.3F, 1.7F), x), std::pow(y, c));
    ExpectRounded(Forward(TransformOf(T::TransformLogit, 0.01F, 5.1F), x),
                  std::log10((x - below) / (above - x)));
  }
}

TEST(TransformStruct, LeavesAMissingCellAndReportsNothing) {
  for (int type = 0; type <= 7; ++type) {
    const TransformStruct transform = TransformOf(T::Transform(type), 0, 0, 0);
    ExpectDone(Forward(transform, -99), -99);
    ExpectDone(Back(transform, -99), -99);
  }
}

TEST(TransformStruct, ChangesNothingWithAKindThatDoesNothing) {
  for (const int type : {0, 1, -1, 8, 70000})
    for (const float x : {-3.0F, 0.0F, 5.0F, kInfinity}) {
      ExpectDone(Forward(TransformOf(T::Transform(type), 2, 3, 4), x), x);
      ExpectDone(Back(TransformOf(T::Transform(type), 2, 3, 4), x), x);
    }
}

TEST(TransformStruct, ReadsConstantZeroInNoFormula) {
  for (int type = 2; type <= 7; ++type)
    for (const float unread : {0.0F, 5.0F, kNaN}) {
      EXPECT_EQ(Forward(TransformOf(T::Transform(type), 1, 4, 2, unread), 2).cell,
                Forward(TransformOf(T::Transform(type), 1, 4, 2), 2).cell);
      EXPECT_EQ(Back(TransformOf(T::Transform(type), 1, 4, 2, unread), 2).cell,
                Back(TransformOf(T::Transform(type), 1, 4, 2), 2).cell);
    }
}

TEST(TransformStruct, HasNoLogarithmOfZeroAndBelow) {
  for (const T::Transform type : {T::TransformLog, T::TransformNegLog}) {
    ExpectFailed(Forward(TransformOf(type, 2, -4), 2));   // log10(0) is infinite
    ExpectFailed(Forward(TransformOf(type, 2, -4), 1));   // log10(-2) is no number
    ExpectFailed(Forward(TransformOf(type, 1, 0), kNaN));
    ExpectFailed(Forward(TransformOf(type, 1, 0), kInfinity));
  }
}

TEST(TransformStruct, TakesTheNegativeLogarithmOfOneToMinusZero) {
  const Outcome outcome = Forward(TransformOf(T::TransformNegLog, 1, 0), 1);
  ExpectDone(outcome, 0);
  EXPECT_TRUE(std::signbit(outcome.cell));
  EXPECT_FALSE(std::signbit(Forward(TransformOf(T::TransformLog, 1, 0), 1).cell));
}

TEST(TransformStruct, DoesNotCatchALinearResultBeyondTheFloats) {
  ExpectDone(Forward(TransformOf(T::TransformLinear, 4, 0), kLargest), kInfinity);
  ExpectDone(Forward(TransformOf(T::TransformLinear, -4, 0), kLargest), -kInfinity);
  ExpectDone(Back(TransformOf(T::TransformLinear, 0.25F, 0), kLargest), kInfinity);
}

TEST(TransformStruct, PassesWhatIsNoNumberThroughALinearTransform) {
  for (const auto& outcome : {Forward(TransformOf(T::TransformLinear, 2, 1), kNaN),
                              Back(TransformOf(T::TransformLinear, 2, 1), kNaN),
                              Forward(TransformOf(T::TransformLinear, 0, 1), kInfinity)}) {
    EXPECT_EQ(outcome.code, 1);
    EXPECT_TRUE(std::isnan(outcome.cell));
  }
}

TEST(TransformStruct, MakesALinearResultOfMinusNinetyNineAHole) {
  ExpectDone(Forward(TransformOf(T::TransformLinear, 1, -100), 1), -99);
}

TEST(TransformStruct, HasNoLogitAtOrOutsideItsLimits) {
  const TransformStruct logit = TransformOf(T::TransformLogit, 1, 5);
  ExpectFailed(Forward(logit, 5));  // x = b: no quotient
  ExpectFailed(Forward(logit, 1));  // x = a: log10(0)
  ExpectFailed(Forward(logit, 6));
  ExpectFailed(Forward(logit, 0));
  for (const float x : {kNaN, kInfinity, -kInfinity}) ExpectFailed(Forward(logit, x));
  ExpectDone(Forward(logit, 3), 0);
}

TEST(TransformStruct, TestsTheRangeOfExponentialsAsDoubles) {
  const TransformStruct exponential = TransformOf(T::TransformExp, 1, 0);
  ExpectRounded(Forward(exponential, 88.7F), std::exp(static_cast<long double>(88.7F)));
  ExpectFailed(Forward(exponential, 88.8F));    // beyond the largest float
  ExpectFailed(Forward(exponential, 800));      // infinite
  ExpectFailed(Forward(exponential, -740));     // a denormal double
  ExpectDone(Forward(exponential, -800), 0);    // 0 is in range
  const Outcome small = Forward(exponential, -95);
  ExpectDone(small, static_cast<float>(std::exp(-95.0)));  // a normal double, denormal only as a float
  EXPECT_GT(small.cell, 0);
  EXPECT_LT(small.cell, std::numeric_limits<float>::min());
}

TEST(TransformStruct, TestsTheRangeOfPowers) {
  ExpectFailed(Forward(TransformOf(T::TransformPower, 1, 0, 0.5F), -1));  // no number
  ExpectFailed(Forward(TransformOf(T::TransformPower, 1, 0, -1), 0));     // infinite
  ExpectFailed(Forward(TransformOf(T::TransformPower, 1, 0, 2), 1e30F));  // beyond the floats
  ExpectFailed(Forward(TransformOf(T::TransformPower, 1, 0, 9), 1e-35F)); // 1e-315, a denormal double
  ExpectDone(Forward(TransformOf(T::TransformPower, 1, 0, 2), -3), 9);
  ExpectDone(Forward(TransformOf(T::TransformPower, 1, 0, 0), 0), 1);
}

TEST(TransformStruct, LetsTheLargestFloatPassAndNothingBeyond) {
  const TransformStruct same = TransformOf(T::TransformPower, 1, 0, 1);
  ExpectDone(Forward(same, kLargest), kLargest);
  ExpectDone(Forward(same, -kLargest), -kLargest);
  // The next double beyond the largest float, 2^75 from it, would still be rounded back to it.
  ExpectFailed(Forward(TransformOf(T::TransformPower, 1, 0x1p75F, 1), kLargest));
  ExpectFailed(Forward(TransformOf(T::TransformPower, 1, -0x1p75F, 1), -kLargest));
}

TEST(TransformStruct, LetsTheSmallestNormalDoublePassAndNothingBelow) {
  // Powers of 2 to whole powers are exact.
  ExpectDone(Forward(TransformOf(T::TransformPower, 1, 0, 14), 0x1p-73F), 0);  // 2^-1022, which is 0 as a float
  ExpectFailed(Forward(TransformOf(T::TransformPower, 1, 0, 11), 0x1p-93F));   // 2^-1023
}

}  // namespace
