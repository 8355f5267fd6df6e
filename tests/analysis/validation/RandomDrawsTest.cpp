// Numbers of tests/analysis/data/random_draws.py, which computes them apart in Python 3.11.2.

#include "kalmia/analysis/validation/RandomDraws.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::uint64_t> Words(RandomDraws draws, int count) {
  std::vector<std::uint64_t> words;
  for (int i = 0; i < count; ++i) words.push_back(draws.Word());
  return words;
}

std::vector<std::uint64_t> Bounded(RandomDraws draws, std::uint64_t bound, int count) {
  std::vector<std::uint64_t> numbers;
  for (int i = 0; i < count; ++i) numbers.push_back(draws.Below(bound));
  return numbers;
}

TEST(RandomDraws, GoOnFromAStateAsOtherImplementationsDo) {  // words in the tests of the Rust crate rand_xoshiro
  EXPECT_THAT(Words(RandomDraws({1, 2, 3, 4}), 4), ElementsAre(11520U, 0U, 1509978240U, 1215971899390074240U));
}

TEST(RandomDraws, BeginWithTheWordsThatTheSeedGives) {
  EXPECT_THAT(Words(RandomDraws(1), 3),
              ElementsAre(12966619160104079557U, 9600361134598540522U, 10590380919521690900U));
  EXPECT_THAT(Words(RandomDraws(18446744073709551615U), 3),
              ElementsAre(10328197420357168392U, 14156678507024973869U, 9357971779955476126U));
}

TEST(RandomDraws, OfAnotherUseBeginTwoToThe128WordsFurtherOn) {
  EXPECT_THAT(Words(RandomDraws(1, RandomUse::Permutations), 3),
              ElementsAre(3686199559692413392U, 203099001685823382U, 14083488663737595453U));
  EXPECT_THAT(Words(RandomDraws(1, RandomUse::SignFlips), 3),
              ElementsAre(13838283481213388003U, 3533144811432990164U, 15287506490962398541U));
}

TEST(RandomDraws, BelowABoundPassOverTheWordsThatWouldFavourSomeNumbers) {
  EXPECT_THAT(Bounded(RandomDraws(7), 10, 12), ElementsAre(4, 4, 8, 4, 4, 1, 6, 6, 8, 9, 3, 6));
  EXPECT_THAT(Bounded(RandomDraws(7), std::uint64_t{3} << 62, 8),
              ElementsAre(12923355070828475994U, 5142052590334782674U, 1653334851210475926U, 4263000589367013952U,
                          4443087921155932952U, 2264779426952744009U, 7447070967899653408U,
                          9986469540036305303U));
  EXPECT_THAT(Bounded(RandomDraws(7), 1, 3), ElementsAre(0, 0, 0));
}

TEST(RandomDraws, PutPlacesInOrder) {
  EXPECT_THAT(RandomDraws(1).Order(10), ElementsAre(3, 8, 0, 9, 2, 5, 6, 4, 1, 7));
  EXPECT_THAT(RandomDraws(1).Order(1), ElementsAre(0));
  EXPECT_THAT(RandomDraws(1).Order(0), IsEmpty());
}

TEST(RandomDraws, GiveEachOrderOfFourPlacesEquallyOften) {
  std::vector<int> seen(256, 0);
  RandomDraws draws(1);
  constexpr int kRuns = 24000;
  for (int run = 0; run < kRuns; ++run) {
    const std::vector<std::size_t> order = draws.Order(4);
    ++seen[64 * order[0] + 16 * order[1] + 4 * order[2] + order[3]];
  }
  // 24 orders of 1000 each; chi-square with 23 degrees exceeds 49.7 in one of a thousand seeds, and the seed is fixed.
  double chiSquared = 0.0;
  int orders = 0;
  for (const int count : seen) {
    if (count == 0) continue;
    ++orders;
    chiSquared += (count - 1000.0) * (count - 1000.0) / 1000.0;
  }
  EXPECT_EQ(orders, 24);
  EXPECT_LT(chiSquared, 49.7);
}

}  // namespace
}  // namespace kalmia::analysis
