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

VexPointer<Witness> Own(VexPointer<Witness>*) { return VexPointer<Witness>(new Witness); }
VexVecPointer<Witness> Own(VexVecPointer<Witness>*) { return VexVecPointer<Witness>(new Witness[3]); }

template <class Pointer>
class VexPointers : public ::testing::Test {
 protected:
  static Pointer Owner() { return Own(static_cast<Pointer*>(nullptr)); }
};

using Pointers = ::testing::Types<VexPointer<Witness>, VexVecPointer<Witness>>;
TYPED_TEST_SUITE(VexPointers, Pointers);

TYPED_TEST(VexPointers, DeleteWhatTheyOwnWithTheLastHolder) {
  {
    TypeParam first = this->Owner();
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
      const TypeParam owner = this->Owner();
    } catch (const std::bad_alloc&) {
      failed = true;
    }
  }
  EXPECT_TRUE(failed);
  EXPECT_EQ(Witness::alive, 0);
}

}  // namespace
