#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "AppendedUntilTheBlockMoves.h"
#include "kalmia/containers/NCDataVector.h"
#include "testing/Ints.h"
#include "testing/RandomTables.h"

// Size, insertion, removal.

namespace {

using ::testing::ElementsAre;

template <class T>
class NCDataVectorStructure : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataVectorStructure, CellTypes, CellTypeNames);

TYPED_TEST(NCDataVectorStructure, SetSizeToThePresentSizeKeepsTheCells) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, -99, 3}), twin(v);
  v.SetSize(3);
  EXPECT_THAT(v, ElementsAre(1, -99, 3));
  EXPECT_EQ(v.GetVector(), twin.GetVector());
}

TYPED_TEST(NCDataVectorStructure, SetSizeToAnyOtherSizeSetsAllMissing) {
  for (int n : {0, 1, 2, 4, 9, 5000}) {
    NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, -99, 3}), twin(v);
    v.SetSize(n);
    EXPECT_EQ(CellsOf(v), std::vector<TypeParam>(static_cast<std::size_t>(n), kHole<TypeParam>));
    EXPECT_EQ(v.GetNumMisVal(), n);
    EXPECT_THAT(twin, ElementsAre(1, -99, 3));
  }
}

TYPED_TEST(NCDataVectorStructure, ResizeKeepsTheCellsAndFillsTheNewOnes) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, -99, 3});
  EXPECT_EQ(&v.Resize(5, TypeParam(7)), &v);
  EXPECT_THAT(v, ElementsAre(1, -99, 3, 7, 7));
  v.Resize(6);
  EXPECT_THAT(v, ElementsAre(1, -99, 3, 7, 7, -99));
  EXPECT_EQ(v.GetNumMisVal(), 2);
  v.resize(1, TypeParam(7));
  EXPECT_THAT(v, ElementsAre(1));
  EXPECT_EQ(v.GetNumMisVal(), 0);
  v.resize(0);
  EXPECT_THAT(v, ElementsAre());
}

TYPED_TEST(NCDataVectorStructure, InsertsValuesAnywhere) {
  for (int at = 1; at <= 4; ++at) {
    NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2, 3}), twin(v);
    std::vector<TypeParam> expected = {1, 2, 3};
    expected.insert(expected.begin() + at - 1, 2, kHole<TypeParam>);
    v.InsertValues(at, 2, kHole<TypeParam>);
    EXPECT_EQ(CellsOf(v), expected);
    EXPECT_EQ(v.GetNumMisVal(), 2);
    EXPECT_THAT(twin, ElementsAre(1, 2, 3));
  }
}

TYPED_TEST(NCDataVectorStructure, InsertsBehindTheEndWhereThePositionIsBeyondIt) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2});
  v.InsertValues(100, 1, TypeParam(3));
  v.InsertValues(100, VectorOf<TypeParam>({4, -99}));
  EXPECT_THAT(v, ElementsAre(1, 2, 3, 4, -99));
  EXPECT_EQ(v.GetNumMisVal(), 1);
}

TYPED_TEST(NCDataVectorStructure, InsertingNothingDoesNothing) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2}), twin(v);
  v.InsertValues(1, 0, TypeParam(3));
  v.InsertValues(1, NCDataVector<TypeParam>());
  EXPECT_EQ(v.GetVector(), twin.GetVector());
}

TYPED_TEST(NCDataVectorStructure, InsertsAVectorWithItsHoles) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, -99});
  v.InsertValues(2, VectorOf<TypeParam>({7, -99, -99}));
  EXPECT_THAT(v, ElementsAre(1, 7, -99, -99, -99));
  EXPECT_EQ(v.GetNumMisVal(), 3);
}

TYPED_TEST(NCDataVectorStructure, InsertsItselfOrATwin) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, -99});
  v.Reserve(10);
  v.InsertValues(2, v);
  EXPECT_THAT(v, ElementsAre(1, 1, -99, -99));
  NCDataVector<TypeParam> twin(v);
  v.InsertValues(1, twin);
  EXPECT_THAT(v, ElementsAre(1, 1, -99, -99, 1, 1, -99, -99));
  EXPECT_THAT(twin, ElementsAre(1, 1, -99, -99));
  EXPECT_TRUE(HasExactCounts(v));
}

TYPED_TEST(NCDataVectorStructure, InsertsItselfAnywhereIntoTheRoomThatIsThere) {
  for (int at = 1; at <= 5; ++at) {
    const std::vector<TypeParam> cells = {1, -99, 3, 4};
    NCDataVector<TypeParam> v;
    v.CopyZeroBasedVector(cells.data(), 4);
    v.Reserve(100);
    const TypeParam* block = v.GetVector();
    std::vector<TypeParam> expected = cells;
    expected.insert(expected.begin() + at - 1, cells.begin(), cells.end());
    v.InsertValues(at, v);
    EXPECT_EQ(v.GetVector(), block);
    EXPECT_EQ(CellsOf(v), expected);
    EXPECT_TRUE(HasExactCounts(v));
  }
}

TYPED_TEST(NCDataVectorStructure, RemovesValuesAnywhereAndKeepsTheBlock) {
  for (int at = 1; at <= 4; ++at)
    for (int n = 0; at + n <= 5; ++n) {
      NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, -99, 3, -99});
      std::vector<TypeParam> expected = {1, -99, 3, -99};
      expected.erase(expected.begin() + at - 1, expected.begin() + at - 1 + n);
      const TypeParam* block = v.GetVector();
      v.RemoveValues(at, n);
      EXPECT_EQ(CellsOf(v), expected);
      EXPECT_TRUE(HasExactCounts(v));
      EXPECT_EQ(v.GetVector(), block);
    }
}

TYPED_TEST(NCDataVectorStructure, RemovalLeavesTwinsAlone) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2, 3}), twin(v);
  v.RemoveValues(1, 0);
  EXPECT_EQ(v.GetVector(), twin.GetVector());
  v.RemoveValues(1, 1);
  EXPECT_THAT(v, ElementsAre(2, 3));
  EXPECT_THAT(twin, ElementsAre(1, 2, 3));
}

TYPED_TEST(NCDataVectorStructure, RemoveOfIndicesKeepsTheOthersInOrder) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({10, 20, 30, 40, 50});
  v.Remove(Ints({4, 1, 4, 99}));
  EXPECT_THAT(v, ElementsAre(20, 30, 50));
  v.Remove(Ints({}));
  EXPECT_THAT(v, ElementsAre(20, 30, 50));
}

TYPED_TEST(NCDataVectorStructure, RemoveOfIndicesNeitherUnlinksNorCounts) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({10, -99, 30}), twin(v);
  v.Remove(Ints({2}));
  EXPECT_EQ(v.GetVector(), twin.GetVector());
  EXPECT_THAT(v, ElementsAre(10, 30));
  EXPECT_EQ(v.GetNumMisVal(), 1);            // the hole is gone, its count is not
  EXPECT_THAT(twin, ElementsAre(10, 30, 30));  // moved in the common block
}

TYPED_TEST(NCDataVectorStructure, RemoveOfAValueKeepsTheOthersInOrder) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({5, 1, 5, 5, 2, 3}), twin(v);
  v.Remove(TypeParam(5));
  EXPECT_THAT(v, ElementsAre(1, 2, 3));
  EXPECT_EQ(v.GetNumMisVal(), 0);
  v.Remove(TypeParam(5));
  EXPECT_THAT(v, ElementsAre(1, 2, 3));
  EXPECT_THAT(twin, ElementsAre(5, 1, 5, 5, 2, 3));
  NCDataVector<TypeParam> empty;
  empty.Remove(TypeParam(5));
  EXPECT_THAT(empty, ElementsAre());
}

TYPED_TEST(NCDataVectorStructure, RemoveOfAValueSubtractsTheHolesThatStandInTheTail) {
  // (5, 1, -99): 1 and -99 move to the front and the tail still holds -99, which is subtracted, though that hole stays.
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({5, 1, -99});
  v.Remove(TypeParam(5));
  EXPECT_THAT(v, ElementsAre(1, -99));
  EXPECT_EQ(v.GetNumMisVal(), 0);
  // (-99, 5, 1): the tail holds 1.
  NCDataVector<TypeParam> w = VectorOf<TypeParam>({-99, 5, 1});
  w.Remove(TypeParam(5));
  EXPECT_THAT(w, ElementsAre(-99, 1));
  EXPECT_EQ(w.GetNumMisVal(), 1);
}

TYPED_TEST(NCDataVectorStructure, RemoveOfTheMissingValueStartsFromZeroAndSubtractsTheTail) {
  // (-99, 1, 2): the kept cells leave a tail of 2.
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({-99, 1, 2});
  v.Remove(kHole<TypeParam>);
  EXPECT_THAT(v, ElementsAre(1, 2));
  EXPECT_EQ(v.GetNumMisVal(), 0);
  // (1, -99, -99): nothing moves, both holes stand in the tail.
  NCDataVector<TypeParam> w = VectorOf<TypeParam>({1, -99, -99});
  w.Remove(kHole<TypeParam>);
  EXPECT_THAT(w, ElementsAre(1));
  EXPECT_EQ(w.GetNumMisVal(), -2);
}

TYPED_TEST(NCDataVectorStructure, RemoveOfTheMissingValueStartsFromZeroWithoutACellToo) {
  NCDataVector<TypeParam> v(2);
  v.Remove(kHole<TypeParam>);
  ASSERT_EQ(v.Size(), 0);
  ASSERT_EQ(v.GetNumMisVal(), -2);  // both stood in the tail
  v.Remove(kHole<TypeParam>);
  EXPECT_EQ(v.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorStructure, RemoveOfTheMissingValueDoesNothingWhereNoneIsCounted) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2}), twin(v);
  v.Remove(kHole<TypeParam>);
  EXPECT_EQ(v.GetVector(), twin.GetVector());
}

TYPED_TEST(NCDataVectorStructure, RemoveOfAValueKeepsNaNsEvenWhereOneIsToBeRemoved) {
  const TypeParam nan = std::numeric_limits<TypeParam>::quiet_NaN();
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({nan, 5, -99, nan});
  v.Remove(nan);  // equal to no cell
  EXPECT_EQ(v.Size(), 4);
  EXPECT_EQ(v.GetNumMisVal(), 1);
  v.Remove(TypeParam(5));
  EXPECT_TRUE(v == VectorOf<TypeParam>({nan, -99, nan}));  // equality is of bytes
  EXPECT_EQ(v.GetNumMisVal(), 1);
}

TYPED_TEST(NCDataVectorStructure, ReduceTakesTheListedCellsInTheirOrder) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({10, -99, 30}), twin(v);
  v.Reduce(Ints({3, 1, 3, 2, 2}));
  EXPECT_THAT(v, ElementsAre(30, 10, 30, -99, -99));
  EXPECT_EQ(v.GetNumMisVal(), 2);
  EXPECT_THAT(twin, ElementsAre(10, -99, 30));
  EXPECT_EQ(AppendedUntilTheBlockMoves(&v), 0);  // the new block has room for the listed cells alone
}

TYPED_TEST(NCDataVectorStructure, ReduceCountsAnewOnlyWhereHolesWereCounted) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({10, -99, 30});
  v.Reduce(Ints({3, 1}));
  EXPECT_EQ(v.GetNumMisVal(), 0);
  v.TransformTo_Sub_d_x_Vt(1.0, VectorOf<TypeParam>({1, -99}));  // makes a hole and leaves the count at 0
  v.Reduce(Ints({2, 2}));
  EXPECT_THAT(v, ElementsAre(-99, -99));
  EXPECT_EQ(v.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorStructure, ReduceToNothingEmpties) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({10, -99}), twin(v);
  v.Reduce(Ints({}));
  EXPECT_THAT(v, ElementsAre());
  EXPECT_EQ(v.GetNumMisVal(), 0);
  EXPECT_THAT(twin, ElementsAre(10, -99));
}

TYPED_TEST(NCDataVectorStructure, PushBackAppendsAndCounts) {
  NCDataVector<TypeParam> v;
  v.push_back(TypeParam(1));
  v.push_back(kHole<TypeParam>);
  NCDataVector<TypeParam> twin(v);
  v.push_back(TypeParam(3));
  EXPECT_THAT(v, ElementsAre(1, -99, 3));
  EXPECT_EQ(v.GetNumMisVal(), 1);
  EXPECT_THAT(twin, ElementsAre(1, -99));
}

TYPED_TEST(NCDataVectorStructure, InsertAtAPointerReturnsTheNewCell) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 3}), twin(v);
  TypeParam* cell = v.insert(v.begin() + 1, kHole<TypeParam>);
  EXPECT_EQ(cell, v.begin() + 1);
  EXPECT_THAT(v, ElementsAre(1, -99, 3));
  EXPECT_EQ(v.GetNumMisVal(), 1);
  v.insert(v.end(), TypeParam(4));
  EXPECT_THAT(v, ElementsAre(1, -99, 3, 4));
  EXPECT_THAT(twin, ElementsAre(1, 3));
  NCDataVector<TypeParam> empty;
  EXPECT_EQ(*empty.insert(empty.begin(), TypeParam(5)), 5);
  EXPECT_THAT(empty, ElementsAre(5));
}

TYPED_TEST(NCDataVectorStructure, EraseAtAPointerReturnsTheCellBehind) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, -99, 3, 4}), twin(v);
  TypeParam* behind = v.erase(v.begin() + 1);
  EXPECT_EQ(behind, v.begin() + 1);
  EXPECT_EQ(*behind, 3);
  EXPECT_EQ(v.GetNumMisVal(), 0);
  behind = v.erase(v.begin() + 1, v.end());
  EXPECT_EQ(behind, v.end());
  EXPECT_THAT(v, ElementsAre(1));
  EXPECT_THAT(twin, ElementsAre(1, -99, 3, 4));
}

TYPED_TEST(NCDataVectorStructure, EraseOfAnEmptyRangeHandsOutCellsThatNobodyShares) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2}), twin(v);
  *v.erase(v.begin(), v.begin()) = 7;
  EXPECT_THAT(v, ElementsAre(7, 2));
  EXPECT_THAT(twin, ElementsAre(1, 2));
  NCDataVector<TypeParam> empty;
  EXPECT_EQ(empty.erase(empty.begin(), empty.end()), empty.end());
}

}  // namespace
