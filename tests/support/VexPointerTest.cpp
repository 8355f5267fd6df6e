#include "kalmia/support/VexPointer.h"

#include <gtest/gtest.h>

#include <new>

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
  {
    TypeParam first = Owner<TypeParam>();
    const int owned = Witness::alive;
    EXPECT_GT(owned, 0);
    {
      const TypeParam second = first;
      EXPECT_EQ(second.Get(), first.Get());
      EXPECT_EQ(first.UseCount(), 2);
      first = TypeParam();
      EXPECT_EQ(second.UseCount(), 1);
      EXPECT_EQ(Witness::alive, owned);
    }
    EXPECT_EQ(Witness::alive, 0);
    EXPECT_EQ(first.Get(), nullptr);
  }
  EXPECT_EQ(Witness::alive, 0);
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
