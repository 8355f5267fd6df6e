#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// What random numbers are drawn for. Each use has a stretch of the generator's numbers to itself, so that folds and
/// permutations of one seed have nothing in common.
enum class RandomUse { Folds = 0, Permutations = 1, SignFlips = 2 };

/// Random numbers that are the same for one seed on every machine: xoshiro256**, with the state s0..s3 of 64-bit words
/// (x <<< k turns x to the left by k bits, sums and products are modulo 2^64). A word is drawn by
///
///   result = ((5 s1) <<< 7) 9;  t = s1 << 17;
///   s2 ^= s0; s3 ^= s1; s1 ^= s2; s0 ^= s3; s2 ^= t; s3 = s3 <<< 45.
///
/// A seed z gives the state as the first four words of splitmix64, each of which is
///
///   z += 0x9e3779b97f4a7c15; x = z;
///   x = (x ^ (x >> 30)) 0xbf58476d1ce4e5b9; x = (x ^ (x >> 27)) 0x94d049bb133111eb; word = x ^ (x >> 31).
///
/// The use of number u begins 2^128 u words further on. Copies go on alike. Cost: a nanosecond a word.
/// Source: D. Blackman, S. Vigna, Scrambled linear pseudorandom number generators, ACM Trans. Math. Softw. 47 (2021);
/// splitmix64: G. L. Steele, D. Lea, C. H. Flood, Fast splittable pseudorandom number generators, OOPSLA 2014.
class KALMIA_EXPORT RandomDraws {
 public:
  explicit RandomDraws(std::uint64_t seed, RandomUse use = RandomUse::Folds);
  /// Goes on from a state, of which one word at least is not 0 (not checked).
  explicit RandomDraws(const std::array<std::uint64_t, 4>& state) : state_(state) {}

  std::uint64_t Word();

  /// A whole number from 0 to bound - 1, each as likely as the others: words below 2^64 mod bound are passed over, and
  /// the first other one is taken modulo the bound. `bound` is at least 1, not checked.
  std::uint64_t Below(std::uint64_t bound);

  /// 0 to count - 1 in random order, each order as likely as the others: from the last place down to the second one,
  /// the number of place i changes places with that of place Below(i + 1).
  /// Source: R. Durstenfeld, Algorithm 235, Commun. ACM 7 (1964).
  std::vector<std::size_t> Order(std::size_t count);
  /// The same of what the places hold.
  void Shuffle(std::vector<std::size_t>* places);

 private:
  void Jump();

  std::array<std::uint64_t, 4> state_;
};

}  // namespace kalmia::analysis
