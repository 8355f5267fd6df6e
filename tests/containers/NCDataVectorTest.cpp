#include "kalmia/containers/NCDataVector.h"

#include <gtest/gtest.h>

namespace {

template <class T>
class NCDataVectorTest : public testing::Test {};
using CellTypes = testing::Types<float, double>;
TYPED_TEST_SUITE(NCDataVectorTest, CellTypes);

TYPED_TEST(NCDataVectorTest, CopiesShareUntilOneIsWritten) {
  NCDataVector<TypeParam> a(3, TypeParam(1));
  NCDataVector<TypeParam> b(a);
  EXPECT_EQ(a.GetVector(), b.GetVector());
  b(2, TypeParam(5));
  EXPECT_NE(a.GetVector(), b.GetVector());
  EXPECT_EQ(a[2], 1);
  EXPECT_EQ(b[2], 5);
}

}  // namespace
