#include "kalmia/analysis/validation/RandomDraws.h"

#include <numeric>
#include <utility>

namespace kalmia::analysis {

namespace {

std::uint64_t TurnedLeft(std::uint64_t word, int bits) { return (word << bits) | (word >> (64 - bits)); }

std::uint64_t NextSplitMix(std::uint64_t* z) {
  *z += 0x9e3779b97f4a7c15U;
  std::uint64_t x = *z;
  x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9U;
  x = (x ^ (x >> 27)) * 0x94d049bb133111ebU;
  return x ^ (x >> 31);
}

/// A step of the generator is linear in the bits of its state. 2^128 steps are this polynomial in the step: bit b of
/// word w is the coefficient of 64 w + b steps.
constexpr std::uint64_t kJump[] = {0x180ec6d33cfd0abaU, 0xd5a61266f0c9392cU, 0xa9582618e03fc9aaU, 0x39abdc4529b1661cU};

}  // namespace

RandomDraws::RandomDraws(std::uint64_t seed, RandomUse use) {
  for (std::uint64_t& word : state_) word = NextSplitMix(&seed);
  for (int u = 0; u < static_cast<int>(use); ++u) Jump();
}

std::uint64_t RandomDraws::Word() {
  auto& s = state_;
  const std::uint64_t result = TurnedLeft(s[1] * 5, 7) * 9;
  const std::uint64_t t = s[1] << 17;
  s[2] ^= s[0];
  s[3] ^= s[1];
  s[1] ^= s[2];
  s[0] ^= s[3];
  s[2] ^= t;
  s[3] = TurnedLeft(s[3], 45);
  return result;
}

void RandomDraws::Jump() {
  std::array<std::uint64_t, 4> sum = {};
  for (const std::uint64_t coefficients : kJump) {
    for (int b = 0; b < 64; ++b) {
      if ((coefficients >> b & 1U) != 0) {
        for (std::size_t w = 0; w < sum.size(); ++w) sum[w] ^= state_[w];
      }
      Word();
    }
  }
  state_ = sum;
}

std::uint64_t RandomDraws::Below(std::uint64_t bound) {
  const std::uint64_t passedOver = (0 - bound) % bound;  // 2^64 mod bound
  std::uint64_t word = Word();
  while (word < passedOver) word = Word();
  return word % bound;
}

std::vector<std::size_t> RandomDraws::Order(std::size_t count) {
  std::vector<std::size_t> places(count);
  std::iota(places.begin(), places.end(), std::size_t{0});
  Shuffle(&places);
  return places;
}

void RandomDraws::Shuffle(std::vector<std::size_t>* places) {
  for (std::size_t i = places->size(); i > 1; --i) std::swap((*places)[i - 1], (*places)[Below(i)]);
}

}  // namespace kalmia::analysis
