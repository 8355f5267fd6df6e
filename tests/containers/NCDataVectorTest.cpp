#include "kalmia/containers/NCDataVector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>

#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"

// Life, sharing and access.

namespace {

using ::testing::ElementsAre;

template <class T>
class NCDataVectorTest : public ::testing::Test {
 protected:
  /// What only a derived class may call.
  class Open : public NCDataVector<T> {
   public:
    using NCDataVector<T>::NCDataVector;
    using NCDataVector<T>::DeleteVec;
    using NCDataVector<T>::NewVec;
    using NCDataVector<T>::Unlink;
  };

  static bool Share(const NCDataVector<T>& a, const NCDataVector<T>& b) { return a.GetVector() == b.GetVector(); }
};
TYPED_TEST_SUITE(NCDataVectorTest, CellTypes, CellTypeNames);

// ---- Life

TYPED_TEST(NCDataVectorTest, IsEmptyAtFirst) {
  const NCDataVector<TypeParam> v;
  EXPECT_EQ(v.Size(), 0);
  EXPECT_EQ(v.size(), 0);
  EXPECT_EQ(v.GetNumMisVal(), 0);
  EXPECT_EQ(v.GetVector(), nullptr);
  EXPECT_EQ(v.begin(), v.end());
}

TYPED_TEST(NCDataVectorTest, OfASizeIsMissingInEveryCell) {
  const NCDataVector<TypeParam> v(5);
  EXPECT_THAT(v, ElementsAre(-99, -99, -99, -99, -99));
  EXPECT_EQ(v.GetNumMisVal(), 5);
}

TYPED_TEST(NCDataVectorTest, OfAValueHoldsItInEveryCell) {
  const NCDataVector<TypeParam> v(3, TypeParam(2.5));
  EXPECT_THAT(v, ElementsAre(2.5, 2.5, 2.5));
  EXPECT_EQ(v.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorTest, OfTheMissingValueCountsEveryCell) {
  EXPECT_EQ(NCDataVector<TypeParam>(3, kHole<TypeParam>).GetNumMisVal(), 3);
}

TYPED_TEST(NCDataVectorTest, OfNoCellsIsEmpty) {
  EXPECT_EQ(NCDataVector<TypeParam>(0).Size(), 0);
  EXPECT_EQ(NCDataVector<TypeParam>(0, TypeParam(1)).GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorTest, TheMissingValueIsMinus99ToTheBit) {
  const NCDataVector<TypeParam> v(1);
  EXPECT_EQ(v[1], TypeParam(-99));
  std::uint64_t bits = 0;
  std::memcpy(&bits, v.begin(), sizeof(TypeParam));
  EXPECT_EQ(bits, sizeof(TypeParam) == 4 ? 0xC2C60000u : 0xC058C00000000000u);
}

TYPED_TEST(NCDataVectorTest, FirstCellLiesOnA16ByteBoundary) {
  for (int n = 1; n <= 40; ++n) {
    NCDataVector<TypeParam> v(n);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(v.GetVector() + 1) % 16, 0u) << n;
    v.push_back(1);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(v.begin()) % 16, 0u) << n;
  }
}

TYPED_TEST(NCDataVectorTest, ANewBlockTellsItsOffsetAndIsFreedWithIt) {
  typename TestFixture::Open v;
  const PeakBytesDuring meter;
  for (int n : {0, 1, 2, 3, 100}) {
    int offset = -1;
    TypeParam* cells = v.NewVec(n, offset);
    EXPECT_GE(offset, 0);
    EXPECT_LE(offset, 15);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(cells + 1) % 16, 0u);
    std::fill(cells, cells + n + 1, TypeParam(1));  // under the sanitizers: there is room for cells 0 to n
    v.DeleteVec(cells, offset);
    EXPECT_EQ(meter.GetLiveBytes(), 0);
  }
  v.DeleteVec(nullptr, 0);
}

// ---- Sharing

TYPED_TEST(NCDataVectorTest, CopiesShareUntilOneIsWritten) {
  const NCDataVector<TypeParam> a(3, TypeParam(1));
  NCDataVector<TypeParam> b(a);
  EXPECT_TRUE(this->Share(a, b));
  b(2, TypeParam(5));
  EXPECT_FALSE(this->Share(a, b));
  EXPECT_THAT(a, ElementsAre(1, 1, 1));
  EXPECT_THAT(b, ElementsAre(1, 5, 1));
}

TYPED_TEST(NCDataVectorTest, ReadsNeverUnlink) {
  NCDataVector<TypeParam> a = RandomVector<TypeParam>(20, 0.2, 1);
  NCDataVector<TypeParam> b(a);
  TypeParam min, max;
  b.GetMinMax(min, max);
  b.GetSS();
  b.GetSS(1.0);
  b.GetSum();
  b.Difference(a);
  static_cast<void>(b == a);
  static_cast<void>(b + a);
  static_cast<void>(b[3] + b.back() + *b.begin());
  EXPECT_TRUE(this->Share(a, b));
}

TYPED_TEST(NCDataVectorTest, AssignmentSharesAndLetsTheOldCellsGo) {
  NCDataVector<TypeParam> a(3, TypeParam(1)), old(2, TypeParam(7)), b(old);
  b = a;
  EXPECT_TRUE(this->Share(a, b));
  EXPECT_THAT(old, ElementsAre(7, 7));
  old(1, TypeParam(8));  // alone again: writes in place
  EXPECT_THAT(b, ElementsAre(1, 1, 1));
}

TYPED_TEST(NCDataVectorTest, AssignmentToItselfOrATwinChangesNothing) {
  NCDataVector<TypeParam> a(2, TypeParam(1)), twin(a);
  const NCDataVector<TypeParam>& self = a;
  a = self;
  a = twin;
  EXPECT_TRUE(this->Share(a, twin));
  EXPECT_THAT(a, ElementsAre(1, 1));
}

TYPED_TEST(NCDataVectorTest, AssignmentBetweenEmptyVectorsKeepsEachOnesUseCount) {
  const PeakBytesDuring meter;
  NCDataVector<TypeParam> a;
  {
    NCDataVector<TypeParam> b;
    a = b;
  }
  a.push_back(TypeParam(1));  // had a taken b's count, it would now be one that the pool has taken back
  NCDataVector<TypeParam> c;
  c.push_back(TypeParam(2));
  EXPECT_THAT(a, ElementsAre(1));
  EXPECT_THAT(c, ElementsAre(2));
}

TYPED_TEST(NCDataVectorTest, ACopyTakesNoHeap) {
  const NCDataVector<TypeParam> a(1000, TypeParam(1));
  const PeakBytesDuring meter;
  const NCDataVector<TypeParam> b(a);
  NCDataVector<TypeParam> c;
  c = b;
  EXPECT_EQ(meter.GetBytes(), 0);
}

TYPED_TEST(NCDataVectorTest, TheLastHolderFreesTheCells) {
  delete std::make_unique<NCDataVector<TypeParam>>().release();  // the pool has its block
  const PeakBytesDuring meter;
  {
    auto a = std::make_unique<NCDataVector<TypeParam>>(100);
    NCDataVector<TypeParam> b(*a), c;
    c = b;
    a.reset();
    EXPECT_EQ(c.GetNumMisVal(), 100);
  }
  EXPECT_EQ(meter.GetLiveBytes(), 0);
}

TYPED_TEST(NCDataVectorTest, ClearLeavesTheOtherHoldersAlone) {
  NCDataVector<TypeParam> a(3), b(a);
  b.Clear();
  EXPECT_EQ(b.Size(), 0);
  EXPECT_EQ(b.GetNumMisVal(), 0);
  EXPECT_EQ(b.GetVector(), nullptr);
  EXPECT_EQ(a.GetNumMisVal(), 3);
  a.Clear();
  EXPECT_EQ(a.GetVector(), nullptr);
  a.Clear();
  a.push_back(TypeParam(1));
  EXPECT_THAT(a, ElementsAre(1));
}

TYPED_TEST(NCDataVectorTest, ForceUnlinkKeepsTheBlockOfAVectorThatNobodyShares) {
  NCDataVector<TypeParam> a(3, TypeParam(1));
  const TypeParam* block = a.GetVector();
  a.ForceUnlink();
  EXPECT_EQ(a.GetVector(), block);
}

TYPED_TEST(NCDataVectorTest, ForceUnlinkGivesTheCellsABlockOfTheirOwnSize) {
  NCDataVector<TypeParam> a = VectorOf<TypeParam>({1, -99, 3});
  a.Reserve(100);
  NCDataVector<TypeParam> b(a);
  b.ForceUnlink();
  EXPECT_FALSE(this->Share(a, b));
  EXPECT_THAT(b, ElementsAre(1, -99, 3));
  EXPECT_EQ(b.GetNumMisVal(), 1);
  const TypeParam* block = b.GetVector();
  b.push_back(4);  // 3 cells of capacity: no room for a fourth
  EXPECT_NE(b.GetVector(), block);
  block = a.GetVector();
  a.push_back(4);  // the other one keeps the room that it reserved
  EXPECT_EQ(a.GetVector(), block);
}

TYPED_TEST(NCDataVectorTest, ForceUnlinkOfASharedVectorWithoutCellsDropsTheBlock) {
  NCDataVector<TypeParam> a(3);
  a.Resize(0);
  EXPECT_NE(a.GetVector(), nullptr);
  NCDataVector<TypeParam> b(a);
  b.ForceUnlink();
  EXPECT_EQ(b.GetVector(), nullptr);
  EXPECT_NE(a.GetVector(), nullptr);
}

TYPED_TEST(NCDataVectorTest, UnlinkActsOnlyWhenShared) {
  typename TestFixture::Open a(2, TypeParam(1));
  const TypeParam* block = a.GetVector();
  a.Unlink();
  EXPECT_EQ(a.GetVector(), block);
  const NCDataVector<TypeParam> b(a);
  a.Unlink();
  EXPECT_NE(a.GetVector(), block);
}

TYPED_TEST(NCDataVectorTest, EmptyCopiesPart) {
  NCDataVector<TypeParam> a, b(a), c(b);
  b.push_back(TypeParam(2));
  EXPECT_EQ(a.Size(), 0);
  EXPECT_EQ(c.Size(), 0);
  EXPECT_THAT(b, ElementsAre(2));
}

// ---- Copies of content

TYPED_TEST(NCDataVectorTest, CopyContentIsAPrivateCopy) {
  const NCDataVector<TypeParam> a = VectorOf<TypeParam>({1, -99, 3});
  NCDataVector<TypeParam> b(7, TypeParam(1));
  b.CopyContent(a);
  EXPECT_FALSE(this->Share(a, b));
  EXPECT_THAT(b, ElementsAre(1, -99, 3));
  EXPECT_EQ(b.GetNumMisVal(), 1);
  b.CopyContent(NCDataVector<TypeParam>());
  EXPECT_EQ(b.Size(), 0);
  EXPECT_EQ(b.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorTest, CopyContentOfATwinParts) {
  NCDataVector<TypeParam> a = VectorOf<TypeParam>({1, -99, 3}), twin(a);
  twin.CopyContent(a);
  EXPECT_FALSE(this->Share(a, twin));
  EXPECT_THAT(twin, ElementsAre(1, -99, 3));
  NCDataVector<TypeParam> other(a);
  a.CopyContent(a);
  EXPECT_FALSE(this->Share(a, other));
  EXPECT_THAT(a, ElementsAre(1, -99, 3));
  EXPECT_TRUE(HasExactCounts(a));
}

TYPED_TEST(NCDataVectorTest, CopyContentOfTheSameSizeLeavesTwinsAlone) {
  const NCDataVector<TypeParam> a(2, TypeParam(1));
  NCDataVector<TypeParam> b(2, TypeParam(2)), twin(b);
  b.CopyContent(a);
  EXPECT_THAT(b, ElementsAre(1, 1));
  EXPECT_THAT(twin, ElementsAre(2, 2));
}

TYPED_TEST(NCDataVectorTest, CopyVectorTakesA1BasedArray) {
  const TypeParam cells[] = {1000, 1, -99, 3};
  NCDataVector<TypeParam> v;
  v.CopyVector(cells, 3);
  EXPECT_THAT(v, ElementsAre(1, -99, 3));
  EXPECT_EQ(v.GetNumMisVal(), 1);
  v.CopyVector(nullptr, 0);
  EXPECT_EQ(v.Size(), 0);
}

TYPED_TEST(NCDataVectorTest, CopyZeroBasedVectorKeepsABlockThatIsLargeEnough) {
  NCDataVector<TypeParam> v(5);
  const TypeParam* block = v.GetVector();
  const TypeParam cells[] = {1, -99, 3, 4, 5, 6};
  v.CopyZeroBasedVector(cells, 3);
  EXPECT_EQ(v.GetVector(), block);
  EXPECT_THAT(v, ElementsAre(1, -99, 3));
  EXPECT_EQ(v.GetNumMisVal(), 1);
  v.CopyZeroBasedVector(cells, 6);
  EXPECT_NE(v.GetVector(), block);
  EXPECT_THAT(v, ElementsAre(1, -99, 3, 4, 5, 6));
  v.CopyZeroBasedVector(nullptr, 0);
  EXPECT_EQ(v.Size(), 0);
  EXPECT_EQ(v.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorTest, CopyZeroBasedVectorLeavesTwinsAlone) {
  NCDataVector<TypeParam> v(3, TypeParam(7)), twin(v);
  const TypeParam cells[] = {1, 2};
  v.CopyZeroBasedVector(cells, 2);
  EXPECT_THAT(v, ElementsAre(1, 2));
  EXPECT_THAT(twin, ElementsAre(7, 7, 7));
}

TYPED_TEST(NCDataVectorTest, CopiesFromItsOwnCells) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2, 3, -99});
  v.CopyZeroBasedVector(v.begin() + 1, 3);
  EXPECT_THAT(v, ElementsAre(2, 3, -99));
  NCDataVector<TypeParam> twin(v);
  v.CopyVector(v.GetVector() + 1, 2);
  EXPECT_THAT(v, ElementsAre(3, -99));
  EXPECT_THAT(twin, ElementsAre(2, 3, -99));
  EXPECT_TRUE(HasExactCounts(v));
}

// ---- Access

TYPED_TEST(NCDataVectorTest, AWriteReturnsTheValueAndKeepsTheCount) {
  NCDataVector<TypeParam> v(2, TypeParam(1));
  EXPECT_EQ(v(1, TypeParam(-99)), -99);
  EXPECT_EQ(v.GetNumMisVal(), 1);
  EXPECT_EQ(v(1, TypeParam(-99)), -99);
  EXPECT_EQ(v.GetNumMisVal(), 1);
  EXPECT_EQ(v(1, TypeParam(4)), 4);
  EXPECT_EQ(v.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorTest, SetAndReturnTellsTheChangeOfTheCount) {
  NCDataVector<TypeParam> v(1, TypeParam(1));
  EXPECT_EQ(v.SetAndReturn_dMisVal(1, TypeParam(2)), 0);
  EXPECT_EQ(v.SetAndReturn_dMisVal(1, TypeParam(-99)), 1);
  EXPECT_EQ(v.SetAndReturn_dMisVal(1, TypeParam(-99)), 0);
  EXPECT_EQ(v.SetAndReturn_dMisVal(1, TypeParam(2)), -1);
  EXPECT_EQ(v.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorTest, ANaNIsNotMissing) {
  const TypeParam nan = std::numeric_limits<TypeParam>::quiet_NaN();
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({nan, 1});
  EXPECT_EQ(v.GetNumMisVal(), 0);
  v(2, nan);
  EXPECT_EQ(v.GetNumMisVal(), 0);
  EXPECT_EQ(NCDataVector<TypeParam>(2, nan).GetNumMisVal(), 0);
  EXPECT_NE(v.GetSum(), v.GetSum());
  EXPECT_NE(v.GetSS(), v.GetSS());
}

TYPED_TEST(NCDataVectorTest, SetRangeWritesCellsOfAnArray) {
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

TYPED_TEST(NCDataVectorTest, SetRangeWritesCellsOfAVector) {
  const NCDataVector<TypeParam> source = VectorOf<TypeParam>({10, -99, 30});
  NCDataVector<TypeParam> v(4, TypeParam(1)), twin(v);
  v.SetRange(3, source, 2, 2);
  EXPECT_THAT(v, ElementsAre(1, 1, -99, 30));
  v(1, source, 1, 3);
  EXPECT_THAT(v, ElementsAre(10, -99, 30, 30));
  EXPECT_TRUE(HasExactCounts(v));
  EXPECT_THAT(twin, ElementsAre(1, 1, 1, 1));
}

TYPED_TEST(NCDataVectorTest, SetRangeTakesCellsOfTheVectorItself) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, -99, 3, 4}), twin(v);
  v.SetRange(3, v, 1, 2);
  EXPECT_THAT(v, ElementsAre(1, -99, 1, -99));
  EXPECT_TRUE(HasExactCounts(v));
  twin.SetRange(1, v, 3, 2);
  EXPECT_THAT(twin, ElementsAre(1, -99, 3, 4));
}

TYPED_TEST(NCDataVectorTest, SetRangeOfNoCellsChangesNothing) {
  NCDataVector<TypeParam> v(2, TypeParam(1)), twin(v);
  v.SetRange(1, nullptr, 0);
  v.SetRange(1, nullptr, -3);
  v.SetRange(1, twin, 1, 0);
  EXPECT_TRUE(this->Share(v, twin));
}

TYPED_TEST(NCDataVectorTest, SetAllValuesFillsAndCounts) {
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

TYPED_TEST(NCDataVectorTest, SetAllValuesUnlinksEvenWhenAllAreMissingAlready) {
  NCDataVector<TypeParam> v(3), twin(v);
  v.SetAllValues(TypeParam(-99));
  EXPECT_FALSE(this->Share(v, twin));
  EXPECT_THAT(v, ElementsAre(-99, -99, -99));
  EXPECT_EQ(v.GetNumMisVal(), 3);
}

TYPED_TEST(NCDataVectorTest, SetAllValuesToAZeroOfEitherSignClearsToPlusZero) {
  NCDataVector<TypeParam> v(3);
  v.SetAllValues(TypeParam(-0.0));
  EXPECT_TRUE(v == NCDataVector<TypeParam>(3, TypeParam(0.0)));  // equality is of bytes
  EXPECT_EQ(v.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorTest, IteratesOverItsCells) {
  const NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2, 3});
  EXPECT_EQ(v.begin(), v.GetVector() + 1);
  EXPECT_EQ(v.end() - v.begin(), 3);
  EXPECT_EQ(v.back(), 3);
  EXPECT_EQ(v[2], 2);
}

}  // namespace
