#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "kalmia/containers/NCDataVector.h"
#include "testing/RandomTables.h"

// Cells read and written, one by one, in ranges, all at once.

namespace {

using ::testing::ElementsAre;

template <class T>
class NCDataVectorAccess : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataVectorAccess, CellTypes, CellTypeNames);

TYPED_TEST(NCDataVectorAccess, AWriteReturnsTheValueAndKeepsTheCount) {
  NCDataVector<TypeParam> v(2, TypeParam(1));
  EXPECT_EQ(v(1, TypeParam(-99)), -99);
  EXPECT_EQ(v.GetNumMisVal(), 1);
  EXPECT_EQ(v(1, TypeParam(-99)), -99);
  EXPECT_EQ(v.GetNumMisVal(), 1);
  EXPECT_EQ(v(1, TypeParam(4)), 4);
  EXPECT_EQ(v.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorAccess, SetAndReturnTellsTheChangeOfTheCount) {
  NCDataVector<TypeParam> v(1, TypeParam(1));
  EXPECT_EQ(v.SetAndReturn_dMisVal(1, TypeParam(2)), 0);
  EXPECT_EQ(v.SetAndReturn_dMisVal(1, TypeParam(-99)), 1);
  EXPECT_EQ(v.SetAndReturn_dMisVal(1, TypeParam(-99)), 0);
  EXPECT_EQ(v.SetAndReturn_dMisVal(1, TypeParam(2)), -1);
  EXPECT_EQ(v.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorAccess, ANaNIsNotMissing) {
  const TypeParam nan = std::numeric_limits<TypeParam>::quiet_NaN();
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({nan, 1});
  EXPECT_EQ(v.GetNumMisVal(), 0);
  v(2, nan);
  EXPECT_EQ(v.GetNumMisVal(), 0);
  EXPECT_EQ(NCDataVector<TypeParam>(2, nan).GetNumMisVal(), 0);
  EXPECT_NE(v.GetSum(), v.GetSum());
  EXPECT_NE(v.GetSS(), v.GetSS());
}

TYPED_TEST(NCDataVectorAccess, SetRangeWritesCellsOfAnArray) {
  const TypeParam cells[] = {7, -99};
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, -99, 3, 4}), twin(v);
  v.SetRange(2, cells, 2);
  EXPECT_THAT(v, ElementsAre(1, 7, -99, 4));
  EXPECT_EQ(v.GetNumMisVal(), 1);
  v(3, cells, 2);
  EXPECT_THAT(v, ElementsAre(1, 7, 7, -99));
  EXPECT_TRUE(HasExactCounts(v));
  EXPECT_THAT(twin, ElementsAre(1, -99, 3, 4));
}

TYPED_TEST(NCDataVectorAccess, SetRangeWritesCellsOfAVector) {
  const NCDataVector<TypeParam> source = VectorOf<TypeParam>({10, -99, 30});
  NCDataVector<TypeParam> v(4, TypeParam(1)), twin(v);
  v.SetRange(3, source, 2, 2);
  EXPECT_THAT(v, ElementsAre(1, 1, -99, 30));
  v(1, source, 1, 3);
  EXPECT_THAT(v, ElementsAre(10, -99, 30, 30));
  EXPECT_TRUE(HasExactCounts(v));
  EXPECT_THAT(twin, ElementsAre(1, 1, 1, 1));
}

TYPED_TEST(NCDataVectorAccess, SetRangeTakesCellsOfTheVectorItself) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, -99, 3, 4}), twin(v);
  v.SetRange(3, v, 1, 2);
  EXPECT_THAT(v, ElementsAre(1, -99, 1, -99));
  EXPECT_TRUE(HasExactCounts(v));
  twin.SetRange(1, v, 3, 2);
  EXPECT_THAT(twin, ElementsAre(1, -99, 3, 4));
}

TYPED_TEST(NCDataVectorAccess, SetRangeOverItsOwnSourceReadsTheCellsThatItWrote) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2, -99, 4});
  v.SetRange(2, v, 1, 3);
  EXPECT_THAT(v, ElementsAre(1, 1, 1, 1));
  EXPECT_TRUE(HasExactCounts(v));
  NCDataVector<TypeParam> w = VectorOf<TypeParam>({1, 2, -99, 4});
  w.SetRange(1, w, 2, 3);
  EXPECT_THAT(w, ElementsAre(2, -99, 4, 4));
  EXPECT_TRUE(HasExactCounts(w));
}

TYPED_TEST(NCDataVectorAccess, SetRangeOverItsOwnSourceReadsTheCellsThatItWroteWhereATwinSharesThemToo) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2, -99, 4}), twin(v);
  v.SetRange(2, v, 1, 3);
  EXPECT_THAT(v, ElementsAre(1, 1, 1, 1));
  EXPECT_TRUE(HasExactCounts(v));
  EXPECT_THAT(twin, ElementsAre(1, 2, -99, 4));
  NCDataVector<TypeParam> other(twin);
  other.SetRange(2, twin, 1, 3);  // the twin's cells are not written
  EXPECT_THAT(other, ElementsAre(1, 1, 2, -99));
}

TYPED_TEST(NCDataVectorAccess, SetRangeOfNoCellsChangesNothing) {
  NCDataVector<TypeParam> v(2, TypeParam(1)), twin(v);
  v.SetRange(1, nullptr, 0);
  v.SetRange(1, nullptr, -3);
  v.SetRange(1, twin, 1, 0);
  EXPECT_EQ(v.GetVector(), twin.GetVector());
}

TYPED_TEST(NCDataVectorAccess, SetAllValuesFillsAndCounts) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, -99, 3}), twin(v);
  v.SetAllValues(TypeParam(4));
  EXPECT_THAT(v, ElementsAre(4, 4, 4));
  EXPECT_EQ(v.GetNumMisVal(), 0);
  v.SetAllValues(TypeParam(-99));
  EXPECT_THAT(v, ElementsAre(-99, -99, -99));
  EXPECT_EQ(v.GetNumMisVal(), 3);
  EXPECT_THAT(twin, ElementsAre(1, -99, 3));
  NCDataVector<TypeParam>().SetAllValues(TypeParam(1));
}

TYPED_TEST(NCDataVectorAccess, SetAllValuesUnlinksEvenWhenAllAreMissingAlready) {
  NCDataVector<TypeParam> v(3), twin(v);
  v.SetAllValues(TypeParam(-99));
  EXPECT_NE(v.GetVector(), twin.GetVector());
  EXPECT_THAT(v, ElementsAre(-99, -99, -99));
  EXPECT_EQ(v.GetNumMisVal(), 3);
}

TYPED_TEST(NCDataVectorAccess, SetAllValuesToAZeroOfEitherSignClearsToPlusZero) {
  NCDataVector<TypeParam> v(3);
  v.SetAllValues(TypeParam(-0.0));
  EXPECT_TRUE(v == NCDataVector<TypeParam>(3, TypeParam(0.0)));  // equality is of bytes
  EXPECT_EQ(v.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorAccess, IteratesOverItsCells) {
  const NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2, 3});
  EXPECT_EQ(v.begin(), v.GetVector() + 1);
  EXPECT_EQ(v.end() - v.begin(), 3);
  EXPECT_EQ(v.back(), 3);
  EXPECT_EQ(v[2], 2);
}

}  // namespace
