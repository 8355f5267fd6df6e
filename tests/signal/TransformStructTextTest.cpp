#include <gtest/gtest.h>

#include "signal/Transforms.h"

namespace {

using T = TransformE;

struct Text {
  T::Transform type;
  float a, b, c;
  const char* plain;
  const char* html;
};

const Text kTexts[] = {
    {T::TransformLinear, 1, 0, -99, "x", "x"},
    {T::TransformLinear, 0, 0, -99, "0", "0"},
    {T::TransformLinear, 0, 2, -99, "0 + 2", "0 + 2"},
    {T::TransformLinear, 1, -0.5F, -99, "x - 0.5", "x - 0.5"},
    {T::TransformLinear, -2, 1e-7F, -99, "-2*x + 1e-07", "-2*x + 1e-07"},
    {T::TransformLinear, -1, -0.0F, -99, "-1*x", "-1*x"},
    {T::TransformLog, 2, -3, -99, "10log(2*x - 3)", "log<sub>10</sub>(2*x - 3)"},
    {T::TransformNegLog, 1, 0.25F, -99, "-10log(x + 0.25)", "-log<sub>10</sub>(x + 0.25)"},
    {T::TransformExp, 2, -3, -99, "e^(2*x - 3)", "e<sup>2*x - 3</sup>"},
    {T::TransformPower, 1, 0, 2, "(x)^2", "x<sup>2</sup>"},
    {T::TransformPower, 2, 0, 2, "(2*x)^2", "(2*x)<sup>2</sup>"},
    {T::TransformPower, 1, 1, 2, "(x + 1)^2", "(x + 1)<sup>2</sup>"},
    {T::TransformPower, 2, -3, 0.5F, "(2*x - 3)^0.5", "(2*x - 3)<sup>0.5</sup>"},
    {T::TransformPower, 2, -3, 1, "2*x - 3", "2*x - 3"},
    {T::TransformPower, 2, -3, 0, "1", "1"},
    {T::TransformUndefined, 1, 2, 3, "", ""},
    {T::TransformNone, 1, 2, 3, "", ""},
    {T::Transform(8), 1, 2, 3, "", ""},
    {T::Transform(-1), 1, 2, 3, "", ""}};

TEST(TransformStructText, IsTheFormulaWithItsNumbers) {
  for (const Text& text : kTexts) {
    const TransformStruct transform = TransformOf(text.type, text.a, text.b, text.c);
    EXPECT_STREQ(transform.ToString(/*html=*/false), text.plain);
    EXPECT_STREQ(transform.ToString(/*html=*/true), text.html);
  }
}

TEST(TransformStructText, PrintsTheFractionOfALogitUpsideDown) {
  const TransformStruct logit = TransformOf(T::TransformLogit, 1.5F, 20);
  EXPECT_STREQ(logit.ToString(/*html=*/false), "10log((20 - x)/(x - 1.5))");
  EXPECT_STREQ(logit.ToString(/*html=*/true),
               "<table style='display: inline; margin-top: 0pt; margin-bottom: 0pt; text-align: center; "
               "vertical-align: middle;' cellpadding='0' cellspacing='0'><tr><td rowspan='2' nowrap='nowrap'>"
               "log<sub>10</sub></td><td nowrap='nowrap'>20 - x</td></tr><tr><td style='border-top: 1px solid black;' "
               "nowrap='nowrap'>x - 1.5</td></tr></table>");
}

TEST(TransformStructText, PrintsSixDigits) {
  EXPECT_STREQ(TransformOf(T::TransformLinear, 1.0F / 3, 1234567.0F).ToString(false), "0.333333*x + 1.23457e+06");
}

}  // namespace
