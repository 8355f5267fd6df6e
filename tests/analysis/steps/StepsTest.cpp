// The texts of preprocessing steps: what is read, and what is refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "FailureOf.h"
#include "kalmia/analysis/steps/Steps.h"
#include "kalmia/analysis/text/Failure.h"

namespace {

using kalmia::analysis::Failure;
using kalmia::analysis::IsValid;
using kalmia::analysis::ParseSteps;
using kalmia::analysis::Step;
using kalmia::analysis::StepKind;
using kalmia::analysis::StepText;
using ::testing::HasSubstr;
using Texts = std::vector<std::string>;

/// Every step with all its parameters.
Texts CanonicalTexts(const std::string& text) {
  Texts texts;
  for (const Step& step : ParseSteps(text, "steps")) texts.push_back(StepText(step));
  return texts;
}

TEST(Steps, TakeTheirDefaultsForWhatIsNotSaid) {
  EXPECT_EQ(CanonicalTexts("linear,log,neglog,logit,exp,power:2,snv,detrend,smooth,derivative,wavelet-denoise,"
                           "wavelet-compress:40,wavelet-restore"),
            (Texts{"linear:1:0", "log:1:0", "neglog:1:0", "logit:0:1", "exp:1:0", "power:2:1:0", "snv",
                   "detrend:linear", "smooth:11:2", "derivative:1:11:2", "wavelet-denoise:symmlet:8",
                   "wavelet-compress:40:symmlet:8", "wavelet-restore"}));
  EXPECT_EQ(CanonicalTexts("wavelet-denoise:beylkin, wavelet-denoise:coiflet, wavelet-denoise:biorthogonal2"),
            (Texts{"wavelet-denoise:beylkin:N/A", "wavelet-denoise:coiflet:5", "wavelet-denoise:biorthogonal2:8"}));
}

TEST(Steps, StandOnLinesOfAnySystemWithBlanksCommentsAndBlankLines) {
  const Texts expected = {"log:1:0.5", "snv", "smooth:7:3"};
  EXPECT_EQ(CanonicalTexts("# first, the logarithm\n log : 1 : 0.5 , snv\n\n   # nothing\n\tsmooth:7:3 # wide\n"),
            expected);
  EXPECT_EQ(CanonicalTexts("\xEF\xBB\xBFlog:1:.5\r\nsnv\r\n,,\r\nsmooth:7:3"), expected);
  EXPECT_EQ(CanonicalTexts("log:1:5e-1\rsnv,\rsmooth:7:3,"), expected);
}

TEST(Steps, ReadBackFromTheirOwnTexts) {
  const Texts texts = CanonicalTexts(
      "linear:0.1:-3e-7,log:2.5:-99,logit:-1:3e38,power:-0.5:1:2,detrend:mean,smooth:3:2,"
      "derivative:3:5:3,wavelet-denoise:daubechies:50,wavelet-compress:7:biorthogonal6:8");
  EXPECT_EQ(texts.front(), "linear:0.1:-3e-07");
  for (const std::string& text : texts) EXPECT_EQ(CanonicalTexts(text), Texts{text});
}

TEST(Steps, KeepWholeNumbersDigitByDigitAndOthersAsFloats) {
  EXPECT_EQ(CanonicalTexts("wavelet-compress:16777217:symmlet:8,wavelet-compress:1e5:symmlet:8,smooth:+7"),
            (Texts{"wavelet-compress:16777217:symmlet:8", "wavelet-compress:100000:symmlet:8", "smooth:7:2"}));
  EXPECT_EQ(CanonicalTexts("linear:16777217:0e-99,linear:1e-45"), (Texts{"linear:16777216:0", "linear:1e-45:0"}));
}

struct Refused {
  const char* text;
  const char* message;
};

TEST(Steps, AreRefusedByNumberAndTextWithWhatWouldBeRight) {
  const Refused refused[] = {
      {"", "steps: there is no step"},
      {" # nothing\n, ,", "steps: there is no step"},
      {"log,Snv", "steps: step 2, 'Snv': there is no such step; there are linear, log, neglog"},
      {"snv:1", "step 1, 'snv:1': it takes the form snv"},
      {"derivative:1:15:2:4",
       "step 1, 'derivative:1:15:2:4': it takes the form derivative[:ORDER[:WINDOW[:POLYNOMIAL]]]"},
      {"derivative:0", "its order is '0', not a whole number from 1 to 3"},
      {"derivative:4", "its order is '4', not a whole number from 1 to 3"},
      {"derivative:1.5", "its order is '1.5', not a whole number from 1 to 3"},
      {"derivative:", "its order is '', not a whole number from 1 to 3"},
      {"derivative:3:7:2", "a polynomial of order 2 has no derivative of order 3"},
      {"derivative:1:3:3", "a polynomial of order 3 needs a window above it"},
      {"smooth:4", "its window is '4', not an odd number from 3 to 100001"},
      {"smooth:1", "its window is '1', not an odd number from 3 to 100001"},
      {"smooth:-5", "its window is '-5', not an odd number"},
      {"smooth:100003", "its window is '100003', not an odd number"},
      {"smooth:5:4", "its polynomial is '4', not a whole number from 2 to 3"},
      {"log:x", "its a is 'x', not a number"},
      {"log:1:inf", "its b is 'inf', not a number"},
      {"linear:1e39", "its a is '1e39', not a number up to 3.4e38"},
      {"linear:1e-50", "its a is '1e-50', not a number up to 3.4e38, down to 1e-45 or 0"},
      {"linear:-1e-400", "its a is '-1e-400', not a number up to 3.4e38, down to 1e-45 or 0"},
      {"linear:1,5", "step 2, '5': there is no such step"},
      {"logit:1:1", "a must lie below b"},
      {"power", "its c is not said; it takes the form power:c[:a[:b]]"},
      {"detrend:quadratic", "its mode is 'quadratic', not mean or linear"},
      {"wavelet-denoise:haar", "its family is 'haar', not beylkin, coiflet, daubechies, symmlet, biorthogonal1"},
      {"wavelet-denoise:coiflet:8", "its filter is '8', not 2, 3, 4 or 5, which coiflet has"},
      {"wavelet-compress", "its count is not said; it takes the form wavelet-compress:COUNT[:FAMILY[:FILTER]]"},
      {"wavelet-compress:0", "its count is '0', not a whole number from 1"},
      {"wavelet-restore", "step 1, 'wavelet-restore': it has to stand right after a wavelet-compress"},
      {"wavelet-compress:3,snv,wavelet-restore", "step 3, 'wavelet-restore': it has to stand right after"},
      {"wavelet-compress:3,wavelet-restore,wavelet-restore", "step 3, 'wavelet-restore': it has to stand right after"}};
  for (const Refused& row : refused) {
    SCOPED_TRACE(row.text);
    try {
      ParseSteps(row.text, "steps");
      ADD_FAILURE() << "was read";
    } catch (const Failure& failure) {
      EXPECT_TRUE(Is<kalmia::analysis::BadRequest>(failure));
      EXPECT_THAT(failure.what(), HasSubstr(row.message));
    }
  }
}

TEST(Steps, OfAFileAreValidWhereTheirTextIsReadAndNowhereElse) {
  for (const Step& step :
       ParseSteps("linear,power:3,detrend,smooth,derivative,wavelet-denoise,wavelet-compress:3", "")) {
    EXPECT_TRUE(IsValid(step)) << StepText(step);
    for (std::size_t i = 0; i < step.parameters.size(); ++i) {
      for (const double wrong : {std::nan(""), std::numeric_limits<double>::infinity(), -1e300}) {
        Step other = step;
        other.parameters[i] = wrong;
        EXPECT_FALSE(IsValid(other)) << StepText(step) << ' ' << i << ' ' << wrong;
      }
    }
    Step longer = step;
    longer.parameters.push_back(1.0);
    EXPECT_FALSE(IsValid(longer));
  }
  EXPECT_FALSE(IsValid({static_cast<StepKind>(0), {}}));
  EXPECT_FALSE(IsValid({static_cast<StepKind>(14), {}}));
  EXPECT_FALSE(IsValid({StepKind::Smooth, {4.0, 2.0}}));
  EXPECT_FALSE(IsValid({StepKind::Smooth, {5.5, 2.0}}));
  EXPECT_FALSE(IsValid({StepKind::Logit, {2.0, 1.0}}));
  EXPECT_TRUE(IsValid({StepKind::Linear, {0.1F, 0.0}}));
  EXPECT_FALSE(IsValid({StepKind::Linear, {0.1, 0.0}}));  // no float
  EXPECT_FALSE(IsValid({StepKind::Linear, {1e-300, 0.0}}));
  EXPECT_FALSE(IsValid({StepKind::WaveletDenoise, {0.0, 2.0}}));  // Beylkin has one filter
  EXPECT_FALSE(IsValid({StepKind::WaveletDenoise, {10.0, 1.0}}));
}

}  // namespace
