#include "kalmia/containers/NCIntegralVector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "AppendedUntilTheBlockMoves.h"
#include "testing/AllocationMeter.h"
#include "testing/Ints.h"

// Life, sharing, access and structure.

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using IntVector = NCIntegralVector<int, -99>;
using BoolCells = NCIntegralVector<bool, 0>;
using LongVector = NCIntegralVector<unsigned long, 0>;

TEST(NCIntegralVector, IsEmptyAtFirst) {
  const IntVector v;
  EXPECT_TRUE(v.empty());
  EXPECT_EQ(v.Size(), 0);
  EXPECT_EQ(v.size(), 0);
  EXPECT_EQ(v.GetPtr(), nullptr);
  EXPECT_EQ(v.begin(), v.end());
}

TEST(NCIntegralVector, OfASizeHoldsTheMissingConstantOfItsType) {
  EXPECT_THAT(IntVector(2), ElementsAre(-99, -99));
  EXPECT_THAT(BoolCells(2), ElementsAre(false, false));
  EXPECT_THAT(LongVector(2), ElementsAre(0u, 0u));
  EXPECT_THAT(IntVector(0), IsEmpty());
}

TEST(NCIntegralVector, OfAValueOrAnArray) {
  EXPECT_THAT(IntVector(3, 7), ElementsAre(7, 7, 7));
  const bool flags[] = {true, false, true};
  EXPECT_THAT(BoolCells(flags, 3), ElementsAre(true, false, true));
  const unsigned long numbers[] = {5, 4294967296ul};
  EXPECT_THAT(LongVector(numbers, 2), ElementsAre(5u, 4294967296ul));
  EXPECT_THAT(IntVector(nullptr, 0), IsEmpty());
}

TEST(NCIntegralVector, CountsPositionsFrom1) {
  const IntVector v = Ints({10, 20, 30});
  EXPECT_EQ(v[1], 10);
  EXPECT_EQ(v.GetPtr()[3], 30);
  EXPECT_EQ(v.begin(), v.GetPtr() + 1);
  EXPECT_EQ(v.end() - v.begin(), 3);
  EXPECT_FALSE(v.empty());
}

TEST(NCIntegralVector, CopiesShareUntilOneIsWritten) {
  const IntVector a = Ints({1, 2, 3});
  IntVector b(a), c;
  c = b;
  EXPECT_EQ(a.GetPtr(), b.GetPtr());
  EXPECT_EQ(a.GetPtr(), c.GetPtr());
  b(2) = 5;
  EXPECT_THAT(a, ElementsAre(1, 2, 3));
  EXPECT_THAT(b, ElementsAre(1, 5, 3));
  EXPECT_EQ(a.GetPtr(), c.GetPtr());
}

TEST(NCIntegralVector, AssignmentToItselfKeepsTheCells) {
  IntVector a = Ints({1, 2});
  const IntVector& self = a;
  a = self;
  EXPECT_THAT(a, ElementsAre(1, 2));
}

TEST(NCIntegralVector, ForceUnlinkPartsAndKeepsTheRoom) {
  IntVector a = Ints({1, 2});
  a.Reserve(5);
  IntVector b(a);
  b.ForceUnlink();
  EXPECT_NE(a.GetPtr(), b.GetPtr());
  EXPECT_THAT(b, ElementsAre(1, 2));
  EXPECT_EQ(AppendedUntilTheBlockMoves(&b), 3);
  const int* block = a.GetPtr();
  a.ForceUnlink();
  EXPECT_EQ(a.GetPtr(), block);
  IntVector none, copy(none);
  copy.ForceUnlink();
  EXPECT_THAT(copy, IsEmpty());
}

TEST(NCIntegralVector, GivesBackAllItsMemory) {
  const PeakBytesDuring meter;
  {
    IntVector a(100, 1), b(a), c;
    c = a;
    b.push_back(2);
    c.Clear();
  }
  EXPECT_EQ(meter.GetLiveBytes(), 0);
}

TEST(NCIntegralVector, ClearLeavesTwinsAlone) {
  IntVector a = Ints({1, 2}), b(a);
  a.Clear();
  EXPECT_TRUE(a.empty());
  EXPECT_EQ(a.GetPtr(), nullptr);
  EXPECT_THAT(b, ElementsAre(1, 2));
  b.clear();
  EXPECT_TRUE(b.empty());
}

TEST(NCIntegralVector, CopyContentIsAPrivateCopy) {
  IntVector a = Ints({1, 2}), b(5, 7), twin(b);
  b.CopyContent(a);
  EXPECT_THAT(b, ElementsAre(1, 2));
  EXPECT_NE(a.GetPtr(), b.GetPtr());
  EXPECT_THAT(twin, ElementsAre(7, 7, 7, 7, 7));
  IntVector shared(a);
  shared.CopyContent(a);
  EXPECT_NE(a.GetPtr(), shared.GetPtr());
  const int* block = a.GetPtr();
  a.CopyContent(a);
  EXPECT_THAT(a, ElementsAre(1, 2));
  EXPECT_EQ(a.GetPtr(), block);
  a.CopyContent(IntVector());
  EXPECT_THAT(a, IsEmpty());
}

TEST(NCIntegralVector, SetSizeToThePresentSizeKeepsTheCells) {
  IntVector a = Ints({1, 2, 3}), twin(a);
  a.SetSize(3);
  EXPECT_EQ(a.GetPtr(), twin.GetPtr());
}

TEST(NCIntegralVector, SetSizeTakesRoomByTheRuleOfTheDataVector) {
  IntVector a(2999, 1);
  a.SetSize(3000);
  EXPECT_EQ(a.Size(), 3000);
  EXPECT_EQ(AppendedUntilTheBlockMoves(&a), 5998 - 3000);
  IntVector b = Ints({1, 2, 3}), twin(b);
  b.SetSize(2);
  EXPECT_EQ(b.Size(), 2);
  b(1) = 9;
  EXPECT_THAT(twin, ElementsAre(1, 2, 3));
}

TEST(NCIntegralVector, SetNumValuesTakesExactlyThatManyCells) {
  IntVector a = Ints({1, 2, 3, 4, 5}), twin(a);
  a.SetNumValues(2, 7);
  EXPECT_THAT(a, ElementsAre(7, 7));
  EXPECT_EQ(AppendedUntilTheBlockMoves(&a), 0);
  EXPECT_THAT(twin, ElementsAre(1, 2, 3, 4, 5));
  a.SetNumValues(0, 7);
  EXPECT_THAT(a, IsEmpty());
}

TEST(NCIntegralVector, SetAllValuesAndSetRangeLeaveTwinsAlone) {
  IntVector a = Ints({1, 2, 3, 4}), twin(a);
  a.SetRange(2, 2, 0);
  EXPECT_THAT(a, ElementsAre(1, 0, 0, 4));
  a.SetAllValues(6);
  EXPECT_THAT(a, ElementsAre(6, 6, 6, 6));
  EXPECT_THAT(twin, ElementsAre(1, 2, 3, 4));
  IntVector none;
  none.SetRange(1, 5, 7);
  none.SetAllValues(7);
  none.GenerateIndex(1, 1);
  EXPECT_THAT(none, IsEmpty());
}

TEST(NCIntegralVector, GenerateIndexCountsInSteps) {
  IntVector a(4, 0), twin(a);
  a.GenerateIndex(10, -3);
  EXPECT_THAT(a, ElementsAre(10, 7, 4, 1));
  EXPECT_THAT(twin, Each(0));
  LongVector b(3);
  b.GenerateIndex(1, 1);
  EXPECT_THAT(b, ElementsAre(1u, 2u, 3u));
  b.GenerateIndex(1, 2000000000);
  EXPECT_THAT(b, ElementsAre(1u, 2000000001u, 4000000001u));
}

TEST(NCIntegralVector, ReserveTakesExactlyWhatIsAsked) {
  IntVector a = Ints({1, 2}), twin(a);
  a.Reserve(2);
  EXPECT_EQ(a.GetPtr(), twin.GetPtr());
  a.reserve(7);
  EXPECT_THAT(a, ElementsAre(1, 2));
  EXPECT_EQ(AppendedUntilTheBlockMoves(&a), 5);
  EXPECT_THAT(twin, ElementsAre(1, 2));
}

TEST(NCIntegralVector, InsertsValuesAnywhere) {
  for (int room : {0, 10})
    for (int at = 1; at <= 5; ++at) {
      IntVector a = Ints({1, 2, 3}), reserved(a);
      if (room) a.Reserve(room);
      std::vector<int> expected = {1, 2, 3};
      expected.insert(expected.begin() + std::min(at, 4) - 1, 2, 7);
      a.InsertValues(at, 2, 7);
      EXPECT_THAT(a, ElementsAreArray(expected));
      EXPECT_THAT(reserved, ElementsAre(1, 2, 3));
    }
  IntVector a = Ints({1}), twin(a);
  a.InsertValues(1, 0, 7);
  a.InsertValues(1, IntVector());
  a.Concat(IntVector());
  EXPECT_EQ(a.GetPtr(), twin.GetPtr());
}

TEST(NCIntegralVector, InsertsVectorsAndItself) {
  IntVector a = Ints({1, 2});
  a.InsertValues(2, Ints({7, 8}));
  EXPECT_THAT(a, ElementsAre(1, 7, 8, 2));
  a.Concat(a);
  EXPECT_THAT(a, ElementsAre(1, 7, 8, 2, 1, 7, 8, 2));
  a.Reserve(100);
  a.InsertValues(2, a);
  EXPECT_THAT(a, ElementsAre(1, 1, 7, 8, 2, 1, 7, 8, 2, 7, 8, 2, 1, 7, 8, 2));
}

TEST(NCIntegralVector, PushBackInsertAndErase) {
  IntVector a;
  a.push_back(1);
  a.push_back(3);
  IntVector twin(a);
  EXPECT_EQ(*a.insert(a.begin() + 1, 2), 2);
  a.insert(a.end(), 4);
  EXPECT_THAT(a, ElementsAre(1, 2, 3, 4));
  EXPECT_EQ(*a.erase(a.begin()), 2);
  EXPECT_THAT(a, ElementsAre(2, 3, 4));
  const int* behind = a.erase(a.begin() + 1, a.end());
  EXPECT_EQ(behind, a.end());
  EXPECT_THAT(a, ElementsAre(2));
  EXPECT_THAT(twin, ElementsAre(1, 3));
  IntVector none;
  EXPECT_EQ(none.erase(none.begin(), none.end()), none.end());
  none.insert(none.begin(), 5);
  EXPECT_THAT(none, ElementsAre(5));
}

TEST(NCIntegralVector, EraseOfAnEmptyRangeHandsOutCellsThatNobodyShares) {
  IntVector a = Ints({1, 2}), twin(a);
  *a.erase(a.begin(), a.begin()) = 7;
  EXPECT_THAT(a, ElementsAre(7, 2));
  EXPECT_THAT(twin, ElementsAre(1, 2));
}

TEST(NCIntegralVector, ResizeKeepsTheCells) {
  IntVector a = Ints({1, 2}), twin(a);
  EXPECT_EQ(&a.Resize(4, 7), &a);
  EXPECT_THAT(a, ElementsAre(1, 2, 7, 7));
  a.resize(5);
  EXPECT_THAT(a, ElementsAre(1, 2, 7, 7, -99));
  a.resize(1);
  EXPECT_THAT(a, ElementsAre(1));
  EXPECT_THAT(twin, ElementsAre(1, 2));
}

TEST(NCIntegralVector, RemovesValues) {
  IntVector a = Ints({1, 2, 3, 4}), twin(a);
  a.RemoveValues(1, 0);
  EXPECT_EQ(a.GetPtr(), twin.GetPtr());
  a.RemoveValues(2, 2);
  EXPECT_THAT(a, ElementsAre(1, 4));
  EXPECT_THAT(twin, ElementsAre(1, 2, 3, 4));
}

TEST(NCIntegralVector, RemoveOfIndicesKeepsTheOthersInOrder) {
  LongVector a(5);
  a.GenerateIndex(10, 10);
  LongVector twin(a);
  a.Remove(Ints({4, 1, 99}));
  EXPECT_THAT(a, ElementsAre(20u, 30u, 50u));
  EXPECT_EQ(twin.Size(), 5);
  EXPECT_EQ(twin[1], 10u);
  IntVector self = Ints({2, 4, 6});
  self.Remove(self);  // of the positions 2, 4 and 6 there is only the second
  EXPECT_THAT(self, ElementsAre(2, 6));
}

TEST(NCIntegralVector, ReduceTakesTheListedCellsInTheirOrder) {
  IntVector a = Ints({10, 20, 30}), twin(a);
  a.Reduce(Ints({3, 1, 3}));
  EXPECT_THAT(a, ElementsAre(30, 10, 30));
  EXPECT_THAT(twin, ElementsAre(10, 20, 30));
  IntVector self = Ints({2, 3, 1});
  self.Reduce(self);
  EXPECT_THAT(self, ElementsAre(3, 1, 2));
  a.Reduce(IntVector());
  EXPECT_THAT(a, IsEmpty());
}

TEST(NCIntegralVector, PlusEqualsAppliesNothingButUnlinks) {
  IntVector a = Ints({1, 2}), twin(a);
  EXPECT_EQ(&(a += 5), &a);
  EXPECT_THAT(a, ElementsAre(1, 2));
  EXPECT_NE(a.GetPtr(), twin.GetPtr());
}

TEST(NCIntegralVector, InsertIsForDerivedClasses) {
  struct Open : IntVector {
    using IntVector::Insert;
    using IntVector::IntVector;
  };
  Open a;
  a.Insert(1, 2);
  a.SetAllValues(5);
  a.Insert(2, 1);
  a(2) = 7;
  EXPECT_THAT(a, ElementsAre(5, 7, 5));
}

}  // namespace
