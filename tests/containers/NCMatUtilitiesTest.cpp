#include "kalmia/containers/NCMatUtilities.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using IntVector = NCIntegralVector<int, -99>;

IntVector Complement(const std::vector<int>& cells, int last, int first) {
  const IntVector v(cells.data(), static_cast<int>(cells.size()));
  return *std::unique_ptr<IntVector>(NCMatUtilities::ComplementVector(&v, last, first));
}

TEST(NCMatUtilities, TheQuietNaNIsAFloat) {
  static_assert(std::is_same_v<decltype(NCMatUtilities::NCGetQuietNaN()), float>);
  EXPECT_TRUE(std::isnan(NCMatUtilities::NCGetQuietNaN()));
}

TEST(NCMatUtilities, TheComplementHoldsWhatIsNotInTheVector) {
  EXPECT_THAT(Complement({2, 4}, 5, 1), ElementsAre(1, 3, 5));
  EXPECT_THAT(Complement({}, 3, 1), ElementsAre(1, 2, 3));
  EXPECT_THAT(Complement({1, 2, 3}, 3, 1), IsEmpty());
  EXPECT_THAT(Complement({-1}, 1, -2), ElementsAre(-2, 0, 1));
}

TEST(NCMatUtilities, TheComplementPassesOverRepeatsAndNumbersOutsideTheRange) {
  EXPECT_THAT(Complement({-7, 0, 2, 2, 9, 11}, 4, 1), ElementsAre(1, 3, 4));
}

TEST(NCMatUtilities, TheComplementIsEmptyWhereTheRangeIs) {
  EXPECT_THAT(Complement({1}, 2, 3), IsEmpty());
  EXPECT_THAT(Complement({1}, 0, 1), IsEmpty());
}

TEST(NCMatUtilities, TheComplementEndsAtTheLargestInt) {
  EXPECT_THAT(Complement({2147483646}, 2147483647, 2147483645), ElementsAre(2147483645, 2147483647));
}

}  // namespace
