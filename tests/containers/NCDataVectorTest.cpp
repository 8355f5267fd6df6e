#include "kalmia/containers/NCDataVector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

#include "kalmia/containers/IntPool.h"
#include "testing/AllocationMeter.h"
#include "testing/Ints.h"
#include "testing/RandomTables.h"

// Life and sharing.

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

  /// The cell of the pool that the next use count would take.
  static const int* NextCount() {
    int* cell = IntPool::GetInt();
    IntPool::ReleaseInt(cell);
    return cell;
  }

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
  b - a;
  b - 1.0L;
  b - -99.0L;
  b * 2.0L;
  b.DotMultiplication(a);
  b.DotDivide(a);
  b.VectorDivide(2.0L);
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
  NCDataVector<TypeParam> a, b;
  const int* next = this->NextCount();
  a = b;
  EXPECT_EQ(this->NextCount(), next);  // had a taken b's count, its own would be the next
}

TYPED_TEST(NCDataVectorTest, ClearKeepsTheUseCountOfAVectorThatNobodyShares) {
  NCDataVector<TypeParam> v(3);
  const int* next = this->NextCount();
  v.Clear();
  EXPECT_EQ(this->NextCount(), next);
}

TYPED_TEST(NCDataVectorTest, AssignmentBetweenVectorsOnOneBlockDoesNothingEvenIfTheirSizesDiffer) {
  const NCDataVector<TypeParam> v(3, TypeParam(1));
  NCDataVector<TypeParam> twin(v);
  twin.Remove(Ints({2}));  // shrinks its own size only
  twin = v;
  EXPECT_EQ(twin.Size(), 2);
  EXPECT_TRUE(this->Share(v, twin));
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

TYPED_TEST(NCDataVectorTest, ForceUnlinkTakesMemoryForTheCellsOnly) {
  NCDataVector<TypeParam> a(3, TypeParam(1));
  a.Reserve(100000);
  NCDataVector<TypeParam> b(a);
  const PeakBytesDuring meter;
  b.ForceUnlink();
  EXPECT_LT(meter.GetBytes(), 1000);
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

TYPED_TEST(NCDataVectorTest, ForceUnlinkKeepsTheCountAsItIs) {
  NCDataVector<TypeParam> a(2);
  a.Remove(kHole<TypeParam>);  // starts from 0 and subtracts both
  NCDataVector<TypeParam> b(a);
  b.ForceUnlink();
  EXPECT_EQ(b.Size(), 0);
  EXPECT_EQ(b.GetVector(), nullptr);
  EXPECT_EQ(b.GetNumMisVal(), -2);
  NCDataVector<TypeParam> c = VectorOf<TypeParam>({1, 2});
  c.TransformTo_Sub_d_x_Vt(1.0L, VectorOf<TypeParam>({-99, 1}));  // makes a hole and leaves the count at 0
  NCDataVector<TypeParam> d(c);
  d.ForceUnlink();
  EXPECT_THAT(d, ElementsAre(-99, 1));
  EXPECT_EQ(d.GetNumMisVal(), 0);
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

}  // namespace
