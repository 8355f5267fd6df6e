#include <gtest/gtest.h>

#include "kalmia/containers/NCDataMatrix.h"
#include "testing/RandomTables.h"

namespace {

template <class T>
class NCDataMatrixRegressColumns : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataMatrixRegressColumns, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixRegressColumns, TheFixHoldsTheDenominatorAtAThirdOfTheFullSum) {
  const auto x = MatrixOf<TypeParam>({{2}, {-99}, {-99}});
  // numerator 2, pairs 1, a third of the full sum 1
  EXPECT_EQ(x.SpecialNipalsRegressColumnsFix(VectorOf<TypeParam>({1, 1, 1}))[1], 2);
  // numerator 2, pairs 1, a third of the full sum 3
  EXPECT_EQ(x.SpecialNipalsRegressColumnsFix(VectorOf<TypeParam>({1, 2, 2}))[1], static_cast<TypeParam>(2.0L / 3));
  EXPECT_EQ(x.RegressColumns(VectorOf<TypeParam>({1, 2, 2}))[1], 2);
}

}  // namespace
