#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "kalmia/containers/NCDataVector.h"
#include "testing/RandomTables.h"

// Arithmetic cell by cell.

namespace {

using ::testing::ElementsAre;

template <class T>
class NCDataVectorArithmetic : public ::testing::Test {
 protected:
  // A hole in the one, in the other, in both, and a pair.
  const NCDataVector<T> a_ = VectorOf<T>({-99, 2, -99, 8});
  const NCDataVector<T> b_ = VectorOf<T>({1, -99, -99, 4});
};
TYPED_TEST_SUITE(NCDataVectorArithmetic, CellTypes, CellTypeNames);

TYPED_TEST(NCDataVectorArithmetic, SumIsMissingWhereEitherSideIs) {
  const NCDataVector<TypeParam> sum = this->a_ + this->b_;
  EXPECT_THAT(sum, ElementsAre(-99, -99, -99, 12));
  EXPECT_EQ(sum.GetNumMisVal(), 3);
}

TYPED_TEST(NCDataVectorArithmetic, DifferenceOfVectorsIsMissingWhereEitherSideIs) {
  const NCDataVector<TypeParam> difference = this->a_ - this->b_;
  EXPECT_THAT(difference, ElementsAre(-99, -99, -99, 4));
  EXPECT_EQ(difference.GetNumMisVal(), 3);
  NCDataVector<TypeParam> out(4);
  NCDataVector<TypeParam>::Subtract(out, this->a_, this->b_);
  EXPECT_TRUE(out == difference);
  EXPECT_EQ(out.GetNumMisVal(), 3);
}

TYPED_TEST(NCDataVectorArithmetic, AHoleOnEitherSideAloneIsSeen) {
  const NCDataVector<TypeParam> complete(4, TypeParam(1));
  EXPECT_THAT(this->a_ + complete, ElementsAre(-99, 3, -99, 9));
  EXPECT_THAT(complete + this->a_, ElementsAre(-99, 3, -99, 9));
  EXPECT_THAT(this->a_ - complete, ElementsAre(-99, 1, -99, 7));
  EXPECT_THAT(complete - this->a_, ElementsAre(-99, -1, -99, -7));
}

TYPED_TEST(NCDataVectorArithmetic, SumAndDifferenceOfCompleteVectorsCountNoHoleWithoutLooking) {
  const NCDataVector<TypeParam> a = VectorOf<TypeParam>({-100, 1}), b = VectorOf<TypeParam>({1, 1});
  const NCDataVector<TypeParam> sum = a + b;
  EXPECT_THAT(sum, ElementsAre(-99, 2));
  EXPECT_EQ(sum.GetNumMisVal(), 0);
  const NCDataVector<TypeParam> difference = VectorOf<TypeParam>({-98, 1}) - b;
  EXPECT_THAT(difference, ElementsAre(-99, 0));
  EXPECT_EQ(difference.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorArithmetic, SumWithHolesCountsACellThatLandsOnTheMissingValue) {
  const NCDataVector<TypeParam> sum = VectorOf<TypeParam>({-100, -99}) + VectorOf<TypeParam>({1, 1});
  EXPECT_EQ(sum.GetNumMisVal(), 2);
}

TYPED_TEST(NCDataVectorArithmetic, WithANumberTheCountIsTakenOverWithoutLooking) {
  for (const TypeParam other : {TypeParam(1), kHole<TypeParam>}) {
    const NCDataVector<TypeParam> difference = VectorOf<TypeParam>({-98, other}) - 1.0L;
    const NCDataVector<TypeParam> product = VectorOf<TypeParam>({33, other}) * -3.0L;
    const NCDataVector<TypeParam> quotient = VectorOf<TypeParam>({2, other}).VectorDivide(-198.0L);
    for (const auto& v : {difference, product, quotient}) {
      EXPECT_EQ(v[1], -99);
      EXPECT_EQ(v.GetNumMisVal(), other == kHole<TypeParam> ? 1 : 0);
    }
  }
}

TYPED_TEST(NCDataVectorArithmetic, DotMultiplicationAndDotDivideCountACellThatLandsOnTheMissingValue) {
  for (const TypeParam other : {TypeParam(1), kHole<TypeParam>}) {
    const NCDataVector<TypeParam> a = VectorOf<TypeParam>({33, other});
    EXPECT_EQ(a.DotMultiplication(VectorOf<TypeParam>({-3, 1})).GetNumMisVal(), other == kHole<TypeParam> ? 2 : 1);
    EXPECT_EQ(VectorOf<TypeParam>({-198, 1}).DotDivide(VectorOf<TypeParam>({2, other})).GetNumMisVal(),
              other == kHole<TypeParam> ? 2 : 1);
  }
}

TYPED_TEST(NCDataVectorArithmetic, SumForgetsWhatTheTargetHeld) {
  NCDataVector<TypeParam> target(4);
  const NCDataVector<TypeParam> complete(4, TypeParam(1));
  complete.Result(&target) + complete;
  EXPECT_THAT(target, ElementsAre(2, 2, 2, 2));
  EXPECT_EQ(target.GetNumMisVal(), 0);
  this->a_.Result(&target) + complete;
  EXPECT_THAT(target, ElementsAre(-99, 3, -99, 9));
  EXPECT_EQ(target.GetNumMisVal(), 2);
}

TYPED_TEST(NCDataVectorArithmetic, SubtractingANumberLeavesHoles) {
  const NCDataVector<TypeParam> result = this->a_ - 1.5L;
  EXPECT_THAT(result, ElementsAre(-99, 0.5, -99, 6.5));
  EXPECT_EQ(result.GetNumMisVal(), 2);
  NCDataVector<TypeParam> out(4, TypeParam(7));
  NCDataVector<TypeParam>::Subtract(out, this->a_, 1.5L);
  EXPECT_TRUE(out == result);
  EXPECT_EQ(out.GetNumMisVal(), 2);
}

TYPED_TEST(NCDataVectorArithmetic, SubtractingTheMissingValueEmptiesTheWholeResult) {
  const NCDataVector<TypeParam> complete(3, TypeParam(1));
  const NCDataVector<TypeParam> result = complete - -99.0L;
  EXPECT_THAT(result, ElementsAre(-99, -99, -99));
  EXPECT_EQ(result.GetNumMisVal(), 3);
  EXPECT_EQ(complete.GetNumMisVal(), 0);
  NCDataVector<TypeParam> inPlace(complete);
  inPlace -= -99.0L;
  EXPECT_EQ(inPlace.GetNumMisVal(), 3);
  EXPECT_EQ(complete.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorArithmetic, AddingANumberSubtractsItsNegative) {
  NCDataVector<TypeParam> v(this->a_);
  v += 1.5L;
  EXPECT_THAT(v, ElementsAre(-99, 3.5, -99, 9.5));
  EXPECT_EQ(v.GetNumMisVal(), 2);
  // So it is 99, not -99, that empties the vector.
  NCDataVector<TypeParam> w(2, TypeParam(1));
  w += -99.0L;
  EXPECT_THAT(w, ElementsAre(-98, -98));
  w += 99.0L;
  EXPECT_THAT(w, ElementsAre(-99, -99));
  EXPECT_EQ(w.GetNumMisVal(), 2);
}

TYPED_TEST(NCDataVectorArithmetic, ProductWithANumberLeavesHoles) {
  const NCDataVector<TypeParam> product = this->a_ * 1.5L;
  EXPECT_THAT(product, ElementsAre(-99, 3, -99, 12));
  EXPECT_EQ(product.GetNumMisVal(), 2);
  NCDataVector<TypeParam> inPlace(this->a_);
  inPlace *= 1.5L;
  EXPECT_TRUE(inPlace == product);
  EXPECT_EQ(inPlace.GetNumMisVal(), 2);
  EXPECT_THAT(this->a_, ElementsAre(-99, 2, -99, 8));
}

TYPED_TEST(NCDataVectorArithmetic, ProductLeavesTheTargetUntouchedOppositeHolesAndTakesTheCount) {
  NCDataVector<TypeParam> target = VectorOf<TypeParam>({70, 71, 72, 73});
  this->a_.Result(&target) * 2.0L;
  EXPECT_THAT(target, ElementsAre(70, 4, 72, 16));
  EXPECT_EQ(target.GetNumMisVal(), 2);
  NCDataVector<TypeParam> out = VectorOf<TypeParam>({70, 71, 72, 73});
  NCDataVector<TypeParam>::Multiply(out, this->a_, 2.0L);
  EXPECT_TRUE(out == target);
  EXPECT_EQ(out.GetNumMisVal(), 2);
}

TYPED_TEST(NCDataVectorArithmetic, InPlaceFormsLeaveTwinsAlone) {
  const NCDataVector<TypeParam> one = VectorOf<TypeParam>({1, 2});
  NCDataVector<TypeParam> v(one);
  v += one;
  EXPECT_THAT(v, ElementsAre(2, 4));
  v -= one;
  EXPECT_THAT(v, ElementsAre(1, 2));
  const NCDataVector<TypeParam>& self = v;
  v -= self;
  EXPECT_THAT(v, ElementsAre(0, 0));
  v = one;
  v += self;
  EXPECT_THAT(v, ElementsAre(2, 4));
  v = one;
  v *= 2.0L;
  v -= 1.0L;
  EXPECT_THAT(v, ElementsAre(1, 3));
  EXPECT_THAT(one, ElementsAre(1, 2));
}

TYPED_TEST(NCDataVectorArithmetic, PlusEqualsUsesUpItsOwnTargetOnly) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2}), target(2, TypeParam(7));
  v.Result(&target);
  v += VectorOf<TypeParam>({1, 1});  // names the vector itself as target, in place of the one before
  EXPECT_THAT(v, ElementsAre(2, 3));
  v * 2.0L;
  EXPECT_THAT(target, ElementsAre(7, 7));
}

TYPED_TEST(NCDataVectorArithmetic, DotMultiplicationIsMissingWhereEitherSideIs) {
  const NCDataVector<TypeParam> product = this->a_.DotMultiplication(this->b_);
  EXPECT_THAT(product, ElementsAre(-99, -99, -99, 32));
  EXPECT_EQ(product.GetNumMisVal(), 3);
  EXPECT_THAT(VectorOf<TypeParam>({2, 3}).DotMultiplication(VectorOf<TypeParam>({5, 7})), ElementsAre(10, 21));
}

TYPED_TEST(NCDataVectorArithmetic, DotDivideIsMissingWhereTheDivisorIsZeroToo) {
  const NCDataVector<TypeParam> quotient = this->a_.DotDivide(this->b_);
  EXPECT_THAT(quotient, ElementsAre(-99, -99, -99, 2));
  EXPECT_EQ(quotient.GetNumMisVal(), 3);
  const NCDataVector<TypeParam> complete = VectorOf<TypeParam>({1, 0, 6}).DotDivide(VectorOf<TypeParam>({0, 0, -3}));
  EXPECT_THAT(complete, ElementsAre(-99, -99, -2));
  EXPECT_EQ(complete.GetNumMisVal(), 2);
  const NCDataVector<TypeParam> minusZero = VectorOf<TypeParam>({1}).DotDivide(VectorOf<TypeParam>({-0.0}));
  EXPECT_EQ(minusZero.GetNumMisVal(), 1);
}

TYPED_TEST(NCDataVectorArithmetic, VectorDivideIsTheNumberOverTheCell) {
  const NCDataVector<TypeParam> quotient = this->a_.VectorDivide(16.0L);
  EXPECT_THAT(quotient, ElementsAre(-99, 8, -99, 2));
  EXPECT_EQ(quotient.GetNumMisVal(), 2);
}

TYPED_TEST(NCDataVectorArithmetic, VectorDivideDoesNotTestForZero) {
  const TypeParam infinity = std::numeric_limits<TypeParam>::infinity();
  const NCDataVector<TypeParam> quotient = VectorOf<TypeParam>({0, -0.0, 2}).VectorDivide(1.0L);
  EXPECT_THAT(quotient, ElementsAre(infinity, -infinity, 0.5));
  EXPECT_EQ(quotient.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorArithmetic, VectorDivideSetsATargetMissingOppositeHoles) {
  NCDataVector<TypeParam> target = VectorOf<TypeParam>({70, 71, 72, 73});
  this->a_.Result(&target).VectorDivide(16.0L);
  EXPECT_THAT(target, ElementsAre(-99, 8, -99, 2));
  EXPECT_TRUE(HasExactCounts(target));
}

TYPED_TEST(NCDataVectorArithmetic, AbsAndSqrtSkipHoles) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({-4, -99, 9, -0.0}), twin(v);
  v.Abs();
  EXPECT_THAT(v, ElementsAre(4, -99, 9, 0));
  EXPECT_EQ(v.GetNumMisVal(), 1);
  EXPECT_FALSE(std::signbit(v[4]));
  v.Sqrt();
  EXPECT_THAT(v, ElementsAre(2, -99, 3, 0));
  EXPECT_EQ(v.GetNumMisVal(), 1);
  EXPECT_THAT(twin, ElementsAre(-4, -99, 9, 0));
}

TYPED_TEST(NCDataVectorArithmetic, SqrtOfANegativeCellIsANaN) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({-4});
  v.Sqrt();
  EXPECT_TRUE(std::isnan(v[1]));
  EXPECT_EQ(v.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorArithmetic, TransformToSubKeepsHolesAndMakesThemOppositeHoles) {
  NCDataVector<TypeParam> v(this->a_), twin(v);
  v.TransformTo_Sub_d_x_Vt(0.5L, this->b_);
  EXPECT_THAT(v, ElementsAre(-99, -99, -99, 6));
  EXPECT_EQ(v.GetNumMisVal(), 2);  // the new hole is not counted
  EXPECT_THAT(twin, ElementsAre(-99, 2, -99, 8));
}

TYPED_TEST(NCDataVectorArithmetic, TransformToSubLeavesTheCountInAllFourCombinations) {
  const NCDataVector<TypeParam> complete = VectorOf<TypeParam>({1, 2, 3, 4});
  NCDataVector<TypeParam> v(complete);
  v.TransformTo_Sub_d_x_Vt(2.0L, complete);
  EXPECT_THAT(v, ElementsAre(-1, -2, -3, -4));
  EXPECT_EQ(v.GetNumMisVal(), 0);
  v = complete;
  v.TransformTo_Sub_d_x_Vt(2.0L, this->a_);
  EXPECT_THAT(v, ElementsAre(-99, -2, -99, -12));
  EXPECT_EQ(v.GetNumMisVal(), 0);
  v = this->a_;
  v.TransformTo_Sub_d_x_Vt(2.0L, complete);
  EXPECT_THAT(v, ElementsAre(-99, -2, -99, 0));
  EXPECT_EQ(v.GetNumMisVal(), 2);
  v = this->a_;
  v.TransformTo_Sub_d_x_Vt(2.0L, this->b_);
  EXPECT_EQ(v.GetNumMisVal(), 2);
}

TYPED_TEST(NCDataVectorArithmetic, TransformToSubKeepsAHoleThatTheCountDoesNotKnow) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2});
  v.TransformTo_Sub_d_x_Vt(1.0L, VectorOf<TypeParam>({-99, 1}));
  v.TransformTo_Sub_d_x_Vt(1.0L, VectorOf<TypeParam>({1, 1}));
  EXPECT_THAT(v, ElementsAre(-99, 0));
  EXPECT_EQ(v.GetNumMisVal(), 0);
  v.CopyContent(VectorOf<TypeParam>({-99, 0}));  // written whole: the count is right again
  EXPECT_EQ(v.GetNumMisVal(), 1);
}

TYPED_TEST(NCDataVectorArithmetic, TransformToAddIsTransformToSubOfTheNegative) {
  NCDataVector<TypeParam> v(this->a_);
  v.TransformTo_Add_d_x_Vt(0.5L, this->b_);
  EXPECT_THAT(v, ElementsAre(-99, -99, -99, 10));
  EXPECT_EQ(v.GetNumMisVal(), 2);
  NCDataVector<TypeParam> w = VectorOf<TypeParam>({1, 2});
  w.TransformTo_Sub_d_x_Vt(1.0L, w);
  EXPECT_THAT(w, ElementsAre(0, 0));
}

TYPED_TEST(NCDataVectorArithmetic, WorksOnNothing) {
  NCDataVector<TypeParam> none;
  EXPECT_THAT(none + none, ElementsAre());
  EXPECT_THAT(none - none, ElementsAre());
  EXPECT_THAT(none - 1.0L, ElementsAre());
  EXPECT_THAT(none - -99.0L, ElementsAre());
  EXPECT_THAT(none * 2.0L, ElementsAre());
  EXPECT_THAT(none.DotMultiplication(none), ElementsAre());
  EXPECT_THAT(none.DotDivide(none), ElementsAre());
  EXPECT_THAT(none.VectorDivide(1.0L), ElementsAre());
  none.Abs();
  none.Sqrt();
  none.TransformTo_Sub_d_x_Vt(1.0L, none);
  none += none;
  EXPECT_THAT(none, ElementsAre());
}

/// The twin: each cell computed in long double from the cells as they stand, and rounded to T once.
template <class T, class F>
std::vector<T> CellByCell(const NCDataVector<T>& a, const NCDataVector<T>& b, F f) {
  std::vector<T> result;
  for (int i = 1; i <= a.Size(); ++i)
    result.push_back(a[i] == kHole<T> || b[i] == kHole<T> ? kHole<T> : static_cast<T>(f(a[i], b[i])));
  return result;
}

class NCDataVectorArithmeticInFloat : public ::testing::TestWithParam<int> {};

TEST_P(NCDataVectorArithmeticInFloat, RoundsEachCellOnce) {
  // A sum, product or quotient of floats taken in double (or wider) and rounded to float is the correctly rounded one:
  // 53 bits are more than twice 24 and two. So the result in long double is the only right one.
  const int n = GetParam();
  using V = NCDataVector<float>;
  for (double holes : {0.0, 0.3}) {
    const V a = RandomVector<float>(n, holes, 10u + static_cast<unsigned>(n));
    const V b = RandomVector<float>(n, holes, 90u + static_cast<unsigned>(n));
    using LD = long double;
    EXPECT_EQ(CellsOf(V(a + b)), CellByCell(a, b, [](LD x, LD y) { return x + y; }));
    EXPECT_EQ(CellsOf(V(a - b)), CellByCell(a, b, [](LD x, LD y) { return x - y; }));
    EXPECT_EQ(CellsOf(a.DotMultiplication(b)), CellByCell(a, b, [](LD x, LD y) { return x * y; }));
    EXPECT_EQ(CellsOf(a.DotDivide(b)), CellByCell(a, b, [](LD x, LD y) { return x / y; }));
    EXPECT_EQ(CellsOf(a * 0.75L), CellByCell(a, a, [](LD x, LD) { return x * 0.75L; }));
    EXPECT_EQ(CellsOf(a - 0.75L), CellByCell(a, a, [](LD x, LD) { return x - 0.75L; }));
    EXPECT_EQ(CellsOf(a.VectorDivide(0.75L)), CellByCell(a, a, [](LD x, LD) { return 0.75L / x; }));
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, NCDataVectorArithmeticInFloat,
                         ::testing::Values(0, 1, 2, 3, 4, 5, 7, 8, 15, 16, 17, 67));

TYPED_TEST(NCDataVectorArithmetic, TakesTheNumberInDoubleNotInTheTypeOfTheCells) {
  // 16777217 is no float: in float arithmetic it would be 16777216, and the difference 0.
  const NCDataVector<TypeParam> v = VectorOf<TypeParam>({16777216});
  EXPECT_THAT(v - 16777217.0L, ElementsAre(-1));
}

}  // namespace
