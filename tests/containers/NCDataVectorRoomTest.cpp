#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "AppendedUntilTheBlockMoves.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/internal/CapacityRule.h"
#include "testing/RandomTables.h"

// Room for cells: reserved, and taken by the rule of growth.

namespace {

using ::testing::ElementsAre;

TEST(CapacityRule, NeverShrinks) {
  EXPECT_EQ(kalmia::GrownCapacity(10, 10), 10);
  EXPECT_EQ(kalmia::GrownCapacity(10, 3), 10);
  EXPECT_EQ(kalmia::GrownCapacity(10, 0), 10);
}

TEST(CapacityRule, StartsWithFourCellsOrWhatIsWanted) {
  EXPECT_EQ(kalmia::GrownCapacity(0, 0), 0);
  EXPECT_EQ(kalmia::GrownCapacity(0, 1), 4);
  EXPECT_EQ(kalmia::GrownCapacity(0, 3), 4);
  EXPECT_EQ(kalmia::GrownCapacity(0, 4), 4);
  EXPECT_EQ(kalmia::GrownCapacity(0, 5), 5);
  EXPECT_EQ(kalmia::GrownCapacity(0, 5000), 5000);
}

TEST(CapacityRule, DoublesBelow3000AndAdds3000FromThereOn) {
  EXPECT_EQ(kalmia::GrownCapacity(1, 2), 2);
  EXPECT_EQ(kalmia::GrownCapacity(2999, 3000), 5998);
  EXPECT_EQ(kalmia::GrownCapacity(3000, 3001), 6000);
  EXPECT_EQ(kalmia::GrownCapacity(3001, 3002), 6001);
}

TEST(CapacityRule, HonoursARequestBeyondTheStepExactly) {
  EXPECT_EQ(kalmia::GrownCapacity(10, 20), 20);
  EXPECT_EQ(kalmia::GrownCapacity(10, 21), 21);
  EXPECT_EQ(kalmia::GrownCapacity(3000, 6001), 6001);
}

TEST(CapacityRule, StaysAnIntAtTheEndOfTheRange) {
  EXPECT_EQ(kalmia::GrownCapacity(2147483000, 2147483647), 2147483647);
}

template <class T>
class NCDataVectorRoom : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataVectorRoom, CellTypes, CellTypeNames);

TYPED_TEST(NCDataVectorRoom, CapacityOf2999GrowsTo5998AndOf3000To6000) {
  NCDataVector<TypeParam> v(2999);
  v.push_back(TypeParam(1));
  EXPECT_EQ(AppendedUntilTheBlockMoves(&v), 5998 - 3000);
  NCDataVector<TypeParam> w(3000);
  w.push_back(TypeParam(1));
  EXPECT_EQ(AppendedUntilTheBlockMoves(&w), 6000 - 3001);
}

TYPED_TEST(NCDataVectorRoom, ARequestBeyondTheStepIsHonouredExactly) {
  NCDataVector<TypeParam> v(10);
  v.Resize(50, TypeParam(1));
  EXPECT_EQ(AppendedUntilTheBlockMoves(&v), 0);
}

TYPED_TEST(NCDataVectorRoom, TheFirstCellTakesRoomForFour) {
  NCDataVector<TypeParam> v;
  v.push_back(TypeParam(1));
  EXPECT_EQ(AppendedUntilTheBlockMoves(&v), 3);
}

TYPED_TEST(NCDataVectorRoom, ReserveTakesExactlyWhatIsAskedAndKeepsTheCells) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, -99}), twin(v);
  v.Reserve(7);
  EXPECT_THAT(v, ElementsAre(1, -99));
  EXPECT_EQ(v.GetNumMisVal(), 1);
  EXPECT_NE(v.GetVector(), twin.GetVector());
  EXPECT_EQ(AppendedUntilTheBlockMoves(&v), 5);
  EXPECT_THAT(twin, ElementsAre(1, -99));
}

TYPED_TEST(NCDataVectorRoom, ReserveOfWhatIsThereDoesNothing) {
  NCDataVector<TypeParam> v(5), twin(v);
  v.Reserve(5);
  v.Reserve(2);
  EXPECT_EQ(v.GetVector(), twin.GetVector());
  NCDataVector<TypeParam> empty;
  empty.Reserve(3);
  EXPECT_EQ(empty.Size(), 0);
  EXPECT_EQ(AppendedUntilTheBlockMoves(&empty), 3);
}

TYPED_TEST(NCDataVectorRoom, SetSizeToFewerCellsKeepsTheBlock) {
  NCDataVector<TypeParam> v(9, TypeParam(1));
  const TypeParam* block = v.GetVector();
  v.SetSize(2);
  v.SetSize(9);
  EXPECT_EQ(v.GetVector(), block);
}

TYPED_TEST(NCDataVectorRoom, SetSizeBeyondTheRoomTakesItByTheRule) {
  NCDataVector<TypeParam> v(10, TypeParam(1));
  v.SetSize(11);
  EXPECT_EQ(AppendedUntilTheBlockMoves(&v), 20 - 11);
  NCDataVector<TypeParam> shared(10, TypeParam(1));
  shared.Reserve(100);
  const NCDataVector<TypeParam> twin(shared);
  shared.SetSize(11);  // unlinked first, to a block of its 10 cells
  EXPECT_EQ(AppendedUntilTheBlockMoves(&shared), 20 - 11);
  EXPECT_EQ(twin.Size(), 10);
}

TYPED_TEST(NCDataVectorRoom, UnInitialisedGapsAreNeverSeen) {
  // Growth by one cell at a time through every step of the capacity up to a few blocks, in front and behind.
  NCDataVector<TypeParam> v;
  std::vector<TypeParam> expected;
  for (int i = 0; i < 3100; ++i) {
    const TypeParam cell = static_cast<TypeParam>(i);
    if (i % 2 == 0) {
      v.push_back(cell);
      expected.push_back(cell);
    } else {
      v.InsertValues(1, 1, cell);
      expected.insert(expected.begin(), cell);
    }
  }
  EXPECT_EQ(CellsOf(v), expected);
}

TYPED_TEST(NCDataVectorRoom, InsertsIntoTheRoomThatIsThere) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2, 3});
  v.Reserve(10);
  const TypeParam* block = v.GetVector();
  v.InsertValues(2, 3, TypeParam(7));
  EXPECT_EQ(v.GetVector(), block);
  EXPECT_THAT(v, ElementsAre(1, 7, 7, 7, 2, 3));
}

}  // namespace
