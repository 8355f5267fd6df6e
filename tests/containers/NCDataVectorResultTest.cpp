#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kalmia/containers/NCDataVector.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"

// Results in place: what `a.Result(&c) + b` does to c.

namespace {

using ::testing::ElementsAre;

template <class T>
class NCDataVectorResult : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataVectorResult, CellTypes, CellTypeNames);

TYPED_TEST(NCDataVectorResult, AResultTargetTakesTheResultWithoutTheHeap) {
  const NCDataVector<TypeParam> a = VectorOf<TypeParam>({1, 2}), b = VectorOf<TypeParam>({10, 20});
  NCDataVector<TypeParam> c(2);
  const TypeParam* block = c.GetVector();
  const PeakBytesDuring meter;
  a.Result(&c) + b;
  EXPECT_EQ(meter.GetBytes(), 0);
  EXPECT_EQ(c.GetVector(), block);
  EXPECT_THAT(c, ElementsAre(11, 22));
  EXPECT_EQ(c.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorResult, WhatComesBackSharesWithTheTarget) {
  const NCDataVector<TypeParam> a(2, TypeParam(1));
  NCDataVector<TypeParam> c(2);
  const NCDataVector<TypeParam> back = a.Result(&c) * 2.0;
  EXPECT_EQ(back.GetVector(), c.GetVector());
}

TYPED_TEST(NCDataVectorResult, ASharedTargetIsUnlinkedFirst) {
  const NCDataVector<TypeParam> a = VectorOf<TypeParam>({1, 2});
  NCDataVector<TypeParam> c(2, TypeParam(7)), holder(c);
  a.Result(&c) * 2.0;
  EXPECT_THAT(c, ElementsAre(2, 4));
  EXPECT_THAT(holder, ElementsAre(7, 7));
}

TYPED_TEST(NCDataVectorResult, ATargetIsUsedOnce) {
  NCDataVector<TypeParam> a(1, TypeParam(1)), c(1);
  EXPECT_EQ(&a.Result(&c), &a);
  a * 2.0;
  a * 3.0;
  EXPECT_THAT(c, ElementsAre(2));
}

TYPED_TEST(NCDataVectorResult, ATargetIsNeverResized) {
  const NCDataVector<TypeParam> a(2, TypeParam(1));
  NCDataVector<TypeParam> c(3, TypeParam(7));
  VectorDestroyer<TypeParam> holder;
  a.Result(&c);
  a.GetReturnVector(holder, 2);
  EXPECT_EQ(holder.vector, &c);
  EXPECT_FALSE(holder.owner);
  EXPECT_THAT(c, ElementsAre(7, 7, 7));
}

TYPED_TEST(NCDataVectorResult, ATargetIsNotCopied) {
  NCDataVector<TypeParam> a(1, TypeParam(1)), c(1, TypeParam(7)), d(1);
  a.Result(&c);
  const NCDataVector<TypeParam> copy(a);
  d = a;
  copy * 2.0;
  d * 2.0;
  EXPECT_THAT(c, ElementsAre(7));
  a * 2.0;
  EXPECT_THAT(c, ElementsAre(2));
}

TYPED_TEST(NCDataVectorResult, AssignmentKeepsTheTargetOfTheLeftSide) {
  NCDataVector<TypeParam> a(1, TypeParam(1)), c(1, TypeParam(7));
  a.Result(&c);
  a = NCDataVector<TypeParam>(1, TypeParam(3));
  a * 2.0;
  EXPECT_THAT(c, ElementsAre(6));
}

TYPED_TEST(NCDataVectorResult, AnOperandCanBeTheTarget) {
  NCDataVector<TypeParam> a = VectorOf<TypeParam>({1, -99, 3}), twin(a);
  const NCDataVector<TypeParam> b = VectorOf<TypeParam>({10, 20, 30});
  a.Result(&a) + b;
  EXPECT_THAT(a, ElementsAre(11, -99, 33));
  EXPECT_THAT(twin, ElementsAre(1, -99, 3));
  twin.Result(&a) - b;
  EXPECT_THAT(a, ElementsAre(-9, -99, -27));
}

TYPED_TEST(NCDataVectorResult, TheRightOperandCanBeTheTarget) {
  const NCDataVector<TypeParam> a = VectorOf<TypeParam>({12, -99, 12, 12, -99});
  const NCDataVector<TypeParam> right = VectorOf<TypeParam>({3, 3, -99, 0, -99});
  NCDataVector<TypeParam> sum(right), difference(right), product(right), quotient(right);
  a.Result(&sum) + sum;
  EXPECT_THAT(sum, ElementsAre(15, -99, -99, 12, -99));
  a.Result(&difference) - difference;
  EXPECT_THAT(difference, ElementsAre(9, -99, -99, 12, -99));
  a.Result(&product).DotMultiplication(product);
  EXPECT_THAT(product, ElementsAre(36, -99, -99, 0, -99));
  a.Result(&quotient).DotDivide(quotient);
  EXPECT_THAT(quotient, ElementsAre(4, -99, -99, -99, -99));
  for (const auto* v : {&sum, &difference, &product, &quotient}) EXPECT_TRUE(HasExactCounts(*v));
  EXPECT_THAT(right, ElementsAre(3, 3, -99, 0, -99));
}

TYPED_TEST(NCDataVectorResult, SubtractingTheMissingValueEmptiesTheTarget) {
  const NCDataVector<TypeParam> a = VectorOf<TypeParam>({1, 2});
  NCDataVector<TypeParam> c(2, TypeParam(7)), holder(c);
  a.Result(&c) - -99.0L;
  EXPECT_THAT(c, ElementsAre(-99, -99));
  EXPECT_EQ(c.GetNumMisVal(), 2);
  EXPECT_THAT(holder, ElementsAre(7, 7));
}

TYPED_TEST(NCDataVectorResult, ATargetWhoseCountIsHighIsEmptiedAllTheSame) {
  // A product leaves the target's cells opposite holes alone and takes the count: 7 and 7, both counted as missing.
  const NCDataVector<TypeParam> holes(2), other = VectorOf<TypeParam>({1, 2});
  NCDataVector<TypeParam> filled(2, TypeParam(7)), subtracted(2, TypeParam(7));
  for (NCDataVector<TypeParam>* c : {&filled, &subtracted}) {
    holes.Result(c) * 2.0L;
    ASSERT_THAT(*c, ElementsAre(7, 7));
    ASSERT_EQ(c->GetNumMisVal(), 2);
  }
  filled.SetAllValues(kHole<TypeParam>);
  EXPECT_THAT(filled, ElementsAre(-99, -99));
  EXPECT_EQ(filled.GetNumMisVal(), 2);
  other.Result(&subtracted) - -99.0L;
  EXPECT_THAT(subtracted, ElementsAre(-99, -99));
  EXPECT_EQ(subtracted.GetNumMisVal(), 2);
}

TYPED_TEST(NCDataVectorResult, WithoutATargetTheWorkVectorIsNewAndMissing) {
  const NCDataVector<TypeParam> a;
  const PeakBytesDuring meter;
  {
    VectorDestroyer<TypeParam> holder;
    a.GetReturnVector(holder, 3);
    EXPECT_THAT(*holder.vector, ElementsAre(-99, -99, -99));
    EXPECT_EQ(holder.vector->GetNumMisVal(), 3);
    EXPECT_TRUE(holder.owner);
    VectorDestroyer<TypeParam> none;
    a.GetReturnVector(none, 0);
    EXPECT_EQ(none.vector->Size(), 0);
  }
  EXPECT_EQ(meter.GetLiveBytes(), 0);  // the holders deleted what they owned
}

}  // namespace
