#include "kalmia/containers/internal/AlignedBlock.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>

#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"

namespace {

template <class T>
class AlignedBlock : public ::testing::Test {};
TYPED_TEST_SUITE(AlignedBlock, CellTypes, CellTypeNames);

TYPED_TEST(AlignedBlock, ShiftsCellOneToTheNextBoundaryFromEveryAddress) {
  for (std::uintptr_t address = 4096; address < 4096 + 16; ++address) {
    const int offset = kalmia::AlignmentOffset<TypeParam>(address);
    EXPECT_GE(offset, 0);
    EXPECT_LE(offset, 15);
    EXPECT_EQ((address + static_cast<std::uintptr_t>(offset) + sizeof(TypeParam)) % 16, 0u) << address;
  }
}

TYPED_TEST(AlignedBlock, FromABoundaryShiftsBy16BytesLessACell) {
  EXPECT_EQ(kalmia::AlignmentOffset<TypeParam>(4096), 16 - static_cast<int>(sizeof(TypeParam)));
  EXPECT_EQ(kalmia::AlignmentOffset<TypeParam>(4096 + 16 - sizeof(TypeParam)), 0);
}

TYPED_TEST(AlignedBlock, TakesTheCellsCellZeroAndTheLargestShift) {
  // The meter sees what the heap rounds a request up to; over this range a cell more or less would show somewhere.
  for (std::size_t n = 0; n < 40; ++n) {
    const std::size_t bytes = sizeof(TypeParam) == 4 ? n * 4 + 20 : n * 8 + 24;
    const PeakBytesDuring plainMeter;
    ::operator delete(::operator new(bytes));
    const std::int64_t expected = plainMeter.GetBytes();
    const PeakBytesDuring blockMeter;
    { const kalmia::AlignedBlock<TypeParam> block(static_cast<int>(n)); }
    EXPECT_EQ(blockMeter.GetBytes(), expected) << n;
    EXPECT_EQ(blockMeter.GetLiveBytes(), 0) << n;
  }
}

}  // namespace
