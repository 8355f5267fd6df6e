#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "AppendedUntilTheBlockMoves.h"
#include "kalmia/containers/NCDataVector.h"
#include "testing/RandomTables.h"

// Copies of content, from vectors and from arrays.

namespace {

using ::testing::ElementsAre;

template <class T>
class NCDataVectorCopy : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataVectorCopy, CellTypes, CellTypeNames);

TYPED_TEST(NCDataVectorCopy, CopyContentIsAPrivateCopy) {
  const NCDataVector<TypeParam> a = VectorOf<TypeParam>({1, -99, 3});
  NCDataVector<TypeParam> b(7, TypeParam(1));
  b.CopyContent(a);
  EXPECT_NE(a.GetVector(), b.GetVector());
  EXPECT_THAT(b, ElementsAre(1, -99, 3));
  EXPECT_EQ(b.GetNumMisVal(), 1);
  b.CopyContent(NCDataVector<TypeParam>());
  EXPECT_EQ(b.Size(), 0);
  EXPECT_EQ(b.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorCopy, CopyContentOfATwinParts) {
  NCDataVector<TypeParam> a = VectorOf<TypeParam>({1, -99, 3}), twin(a);
  twin.CopyContent(a);
  EXPECT_NE(a.GetVector(), twin.GetVector());
  EXPECT_THAT(twin, ElementsAre(1, -99, 3));
  NCDataVector<TypeParam> other(a);
  a.CopyContent(a);
  EXPECT_NE(a.GetVector(), other.GetVector());
  EXPECT_THAT(a, ElementsAre(1, -99, 3));
  EXPECT_TRUE(HasExactCounts(a));
}

TYPED_TEST(NCDataVectorCopy, CopyContentOfTheSameSizeLeavesTwinsAlone) {
  const NCDataVector<TypeParam> a(2, TypeParam(1));
  NCDataVector<TypeParam> b(2, TypeParam(2)), twin(b);
  b.CopyContent(a);
  EXPECT_THAT(b, ElementsAre(1, 1));
  EXPECT_THAT(twin, ElementsAre(2, 2));
}

TYPED_TEST(NCDataVectorCopy, CopyContentTakesTheCountOverWithoutALook) {
  NCDataVector<TypeParam> low = VectorOf<TypeParam>({1, 2}), copy(5);
  low.TransformTo_Sub_d_x_Vt(1.0L, VectorOf<TypeParam>({-99, 1}));  // makes a hole and leaves the count at 0
  copy.CopyContent(low);
  EXPECT_THAT(copy, ElementsAre(-99, 1));
  EXPECT_EQ(copy.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorCopy, CopyVectorTakesA1BasedArray) {
  const TypeParam cells[] = {1000, 1, -99, 3};
  NCDataVector<TypeParam> v;
  v.CopyVector(cells, 3);
  EXPECT_THAT(v, ElementsAre(1, -99, 3));
  EXPECT_EQ(v.GetNumMisVal(), 1);
  v.CopyVector(nullptr, 0);
  EXPECT_EQ(v.Size(), 0);
}

TYPED_TEST(NCDataVectorCopy, CopyZeroBasedVectorKeepsABlockThatIsLargeEnough) {
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

TYPED_TEST(NCDataVectorCopy, CopyZeroBasedVectorLeavesTwinsAlone) {
  NCDataVector<TypeParam> v(3, TypeParam(7)), twin(v);
  const TypeParam cells[] = {1, 2};
  v.CopyZeroBasedVector(cells, 2);
  EXPECT_THAT(v, ElementsAre(1, 2));
  EXPECT_THAT(twin, ElementsAre(7, 7, 7));
}

TYPED_TEST(NCDataVectorCopy, CopiesFromItsOwnCells) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2, 3, -99});
  v.CopyZeroBasedVector(v.begin() + 1, 3);
  EXPECT_THAT(v, ElementsAre(2, 3, -99));
  NCDataVector<TypeParam> twin(v);
  v.CopyVector(v.GetVector() + 1, 2);
  EXPECT_THAT(v, ElementsAre(3, -99));
  EXPECT_THAT(twin, ElementsAre(2, 3, -99));
  EXPECT_TRUE(HasExactCounts(v));
}

TYPED_TEST(NCDataVectorCopy, CopyContentTakesRoomByTheRule) {
  NCDataVector<TypeParam> v(10);
  v.CopyContent(NCDataVector<TypeParam>(11, TypeParam(1)));
  EXPECT_EQ(AppendedUntilTheBlockMoves(&v), 20 - 11);
  NCDataVector<TypeParam> w(10);
  w.CopyContent(NCDataVector<TypeParam>(3, TypeParam(1)));
  EXPECT_EQ(AppendedUntilTheBlockMoves(&w), 10 - 3);
}

TYPED_TEST(NCDataVectorCopy, CopyZeroBasedVectorTakesRoomByTheRule) {
  const std::vector<TypeParam> cells(50, TypeParam(1));
  NCDataVector<TypeParam> v(10);
  v.CopyZeroBasedVector(cells.data(), 11);
  EXPECT_EQ(AppendedUntilTheBlockMoves(&v), 20 - 11);
  NCDataVector<TypeParam> w(10);
  w.CopyZeroBasedVector(cells.data(), 50);
  EXPECT_EQ(AppendedUntilTheBlockMoves(&w), 0);
}

TYPED_TEST(NCDataVectorCopy, CopyZeroBasedVectorBeyondTheSizeUsesTheRoomThatIsThere) {
  const TypeParam cells[] = {1, -99, 3, 4, 5};
  NCDataVector<TypeParam> v(3, TypeParam(7));
  v.Reserve(10);
  const TypeParam* block = v.GetVector();
  v.CopyZeroBasedVector(cells, 5);
  EXPECT_EQ(v.GetVector(), block);
  EXPECT_THAT(v, ElementsAre(1, -99, 3, 4, 5));
  EXPECT_EQ(v.GetNumMisVal(), 1);
  EXPECT_EQ(AppendedUntilTheBlockMoves(&v), 10 - 5);
}

TYPED_TEST(NCDataVectorCopy, CopyZeroBasedVectorIntoASharedVectorStartsFromABlockOfItsSize) {
  const TypeParam cells[] = {1, -99, 3, 4, 5};
  NCDataVector<TypeParam> v(3, TypeParam(7));
  v.Reserve(10);
  NCDataVector<TypeParam> larger(v), smaller(v);
  larger.CopyZeroBasedVector(cells, 5);  // 3 cells of room double to 6
  EXPECT_THAT(larger, ElementsAre(1, -99, 3, 4, 5));
  EXPECT_EQ(larger.GetNumMisVal(), 1);
  EXPECT_EQ(AppendedUntilTheBlockMoves(&larger), 6 - 5);
  smaller.CopyZeroBasedVector(cells, 2);
  EXPECT_THAT(smaller, ElementsAre(1, -99));
  EXPECT_EQ(AppendedUntilTheBlockMoves(&smaller), 3 - 2);
  EXPECT_THAT(v, ElementsAre(7, 7, 7));
}

}  // namespace
