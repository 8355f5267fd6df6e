#include "kalmia/support/VexPointer.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "testing/AllocationMeter.h"

namespace {

/// Counts how many of its kind there are.
struct Witness {
  Witness() { ++alive; }
  ~Witness() { --alive; }
  static int alive;
};
int Witness::alive = 0;

VexPointer<Witness> OwnOne() { return VexPointer<Witness>(new Witness); }
VexVecPointer<Witness> OwnThree() {
  // A statement of its own: inside the call g++ 12 would end the three a second time where the pointer throws.
  Witness* three = new Witness[3];
  return VexVecPointer<Witness>(three);
}

// Volatile, so that the compiler cannot see through a call and do without the allocations that are to fail.
VexPointer<Witness> (*volatile ownOne)() = OwnOne;
VexVecPointer<Witness> (*volatile ownThree)() = OwnThree;

template <class Pointer>
Pointer Owner();
template <>
VexPointer<Witness> Owner() {
  return ownOne();
}
template <>
VexVecPointer<Witness> Owner() {
  return ownThree();
}

template <class Pointer>
class VexPointers : public ::testing::Test {};

using Pointers = ::testing::Types<VexPointer<Witness>, VexVecPointer<Witness>>;
struct PointerNames {
  template <class Pointer>
  static const char* GetName(int i) {
    return i == 0 ? "VexPointer" : "VexVecPointer";
  }
};
TYPED_TEST_SUITE(VexPointers, Pointers, PointerNames);

TYPED_TEST(VexPointers, DeleteWhatTheyOwnWithTheLastHolder) {
  std::vector<TypeParam> holders(1, Owner<TypeParam>());
  const int owned = Witness::alive;
  EXPECT_GT(owned, 0);
  EXPECT_EQ(holders[0].UseCount(), 1);
  holders.push_back(holders[0]);
  EXPECT_EQ(holders[1].Get(), holders[0].Get());
  EXPECT_EQ(holders[0].UseCount(), 2);
  EXPECT_EQ(holders[1].UseCount(), 2);
  holders[0] = TypeParam();
  EXPECT_EQ(holders[0].Get(), nullptr);
  EXPECT_EQ(holders[1].UseCount(), 1);
  EXPECT_EQ(Witness::alive, owned);
  holders.pop_back();
  EXPECT_EQ(Witness::alive, 0);
}

TYPED_TEST(VexPointers, DeleteWhatTheyOwnedBeforeAnAssignment) {
  TypeParam pointer = Owner<TypeParam>();
  const int owned = Witness::alive;
  pointer = Owner<TypeParam>();
  EXPECT_EQ(Witness::alive, owned);
  EXPECT_EQ(pointer.UseCount(), 1);
}

TYPED_TEST(VexPointers, StayAsTheyAreWhenAssignedToThemselves) {
  TypeParam pointer = Owner<TypeParam>();
  const TypeParam& same = pointer;
  const auto* object = pointer.Get();
  const int owned = Witness::alive;
  pointer = same;
  EXPECT_EQ(pointer.Get(), object);
  EXPECT_EQ(pointer.UseCount(), 1);
  EXPECT_EQ(Witness::alive, owned);
}

TYPED_TEST(VexPointers, SwapWhatTheyOwn) {
  TypeParam a = Owner<TypeParam>(), none;
  const auto* object = a.Get();
  a.swap(none);
  EXPECT_EQ(a.Get(), nullptr);
  EXPECT_EQ(none.Get(), object);
  EXPECT_EQ(none.UseCount(), 1);
}

TEST(VexPointer, ReachesItsObject) {
  const VexPointer<std::string> pointer(new std::string("text"));
  EXPECT_EQ(pointer->size(), 4u);
  *pointer += "s";
  EXPECT_EQ(*pointer.Get(), "texts");
}

TEST(VexVecPointer, ReachesItsItems) {
  const VexVecPointer<int> pointer(new int[2]{7, 8});
  pointer[1] += 1;
  EXPECT_EQ(pointer[0], 7);
  EXPECT_EQ(pointer.Get()[1], 9);
}

TYPED_TEST(VexPointers, DeleteWhatTheyWereGivenWhereThereIsNoMemoryForACount) {
  bool failed = false;
  {
    const FailAllocation failure(/*which=*/2);  // behind the object's own
    try {
      const TypeParam owner = Owner<TypeParam>();
    } catch (const std::bad_alloc&) {
      failed = true;
    }
  }
  EXPECT_TRUE(failed);
  EXPECT_EQ(Witness::alive, 0);
}

}  // namespace
