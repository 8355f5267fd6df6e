#include "kalmia/o2pls/OSCPLSComponentValidator.h"

#include <gtest/gtest.h>

#include <limits>

#include "testing/RandomTables.h"

namespace {

OSCPLSComponentValidator Of(NCPLS* model, int cap) { return OSCPLSComponentValidator(model, cap); }

TEST(OSCPLSComponentValidator, AllowsComponentsByTheSmallerSideAndTheCap) {
  const struct {
    int rows, columns, cap, expected;
  } cases[] = {{100, 80, 0, 25}, {100, 80, 5, 5},  {5, 4, 0, 2},   {5, 4, 100, 3}, {4, 5, -3, 2},  {100, 80, 60, 25},
               {1, 1, 0, 1},     {1, 1, 9, 1},     {3, 9, 0, 2},   {9, 3, 2, 2},   {9, 3, 3, 3},   {50, 50, 0, 25},
               {48, 60, 0, 24},  {20, 20, 100, 15}};
  for (const auto& c : cases) {
    const NCDataMatrix<float> X(c.rows, c.columns, 1.0F), Y(c.rows, 1, 1.0F);
    NCPLS model(&X, &Y, 10);
    EXPECT_EQ(Of(&model, c.cap).GetMaxComponents(), c.expected) << c.rows << " x " << c.columns << ", " << c.cap;
  }
}

TEST(OSCPLSComponentValidator, IsValidUntilTheModelHasEnoughComponents) {
  const NCDataMatrix<float> X = RandomMatrix<float>(20, 6, 0, 1), Y = RandomMatrix<float>(20, 1, 0, 2);
  NCPLS model(&X, &Y, 10);
  OSCPLSComponentValidator validator(&model, 2);
  EXPECT_TRUE(validator.IsPreComponentValidator());
  for (int a = 0; a < 2; ++a) {
    EXPECT_TRUE(validator.IsValid());
    model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
    model.CalculateResiduals();
  }
  EXPECT_FALSE(validator.IsValid());
  validator.Done();
}

TEST(OSCPLSComponentValidator, IsValidUntilATenThousandthOfXIsLeft) {
  // Four scores at right angles, with y along one that holds all of X but this share of its sum of squares.
  for (const float rest : {0.02F, 0.005F}) {  // 4e-4 and 2.5e-5
    NCDataMatrix<float> X(8, 4, 0.0F), Y(8, 1);
    for (int i = 1; i <= 8; ++i) {
      const float first = i % 2 == 0 ? 1.0F : -1.0F;
      X(i, 1, first);
      X(i, 2, rest * (i <= 4 ? 1.0F : -1.0F));
      Y(i, 1, first);
    }
    NCPLS model(&X, &Y, 10);
    OSCPLSComponentValidator validator(&model, 4);
    EXPECT_FLOAT_EQ(validator.GetSSLimit(), static_cast<float>(X.GetSS() * 0.0001L));
    EXPECT_TRUE(validator.IsValid());
    model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
    model.CalculateResiduals();
    EXPECT_EQ(validator.IsValid(), rest > 0.01F);
  }
}

TEST(OSCPLSComponentValidator, CountsALimitThatIsReachedExactly) {
  const NCDataMatrix<float> X(3, 3, 0.0F), Y(3, 1, 0.0F);
  NCPLS model(&X, &Y, 10);
  EXPECT_TRUE(Of(&model, 0).IsValid()) << "of nothing, nothing is left: 0 is not below 0";
}

TEST(OSCPLSComponentValidator, HasTheLargestFloatForALimitThatIsNotFinite) {
  const float largest = std::numeric_limits<float>::max();
  const NCDataMatrix<float> Y(4, 1, 1.0F), huge(4, 2, largest);
  NCPLS model(&huge, &Y, 10);
  EXPECT_EQ(Of(&model, 0).GetSSLimit(), largest);
  EXPECT_TRUE(Of(&model, 0).IsValid()) << "the sum itself is still larger";
  NCDataMatrix<float> noNumber(4, 2, 1.0F);
  noNumber(2, 2, std::numeric_limits<float>::quiet_NaN());
  NCPLS spoilt(&noNumber, &Y, 10);
  EXPECT_EQ(Of(&spoilt, 0).GetSSLimit(), largest);
  EXPECT_FALSE(Of(&spoilt, 0).IsValid());
}

}  // namespace
