#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "kalmia/kernels/simd/Targets.h"  // before any header of Highway

#include "hwy/highway.h"
#include "kernels/SameBits.h"
#include "testing/RandomTables.h"

// What the tests of the lane code share: every instruction set of this machine in turn, rows with holes at telling
// places, and special values.

/// Runs a test on one instruction set, and gives the choice back to the machine afterwards.
class OneTarget {
 public:
  explicit OneTarget(int64_t target) { hwy::GetChosenTarget().Update(target); }
  ~OneTarget() { hwy::GetChosenTarget().DeInit(); }
};

/// The instruction sets that are compiled in and that this machine has.
inline std::vector<int64_t> TargetsOfThisMachine() { return hwy::SupportedAndGeneratedTargets(); }

enum class HolePattern { None, First, Last, EveryThird, Random, AllButOne, All };
constexpr HolePattern kHolePatterns[] = {HolePattern::None,   HolePattern::First,     HolePattern::Last,
                                         HolePattern::EveryThird, HolePattern::Random, HolePattern::AllButOne,
                                         HolePattern::All};

inline bool IsHole(HolePattern pattern, int i, int n, std::mt19937& random) {
  switch (pattern) {
    case HolePattern::None: return false;
    case HolePattern::First: return i == 0;
    case HolePattern::Last: return i == n - 1;
    case HolePattern::EveryThird: return i % 3 == 0;
    case HolePattern::Random: return random() % 10 < 3;
    case HolePattern::AllButOne: return i != n / 2;
    case HolePattern::All: return true;
  }
  return false;
}

/// n cells of full precision, with holes by the pattern.
template <class T>
std::vector<T> Cells(int n, HolePattern pattern, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<T> normal;
  std::vector<T> cells(n);
  for (int i = 0; i < n; ++i) {
    const T x = normal(random);
    cells[i] = IsHole(pattern, i, n, random) ? kHole<T> : x;
  }
  return cells;
}

/// Puts infinities and NaNs into `b` opposite the holes of `a`: a hole takes no part, whatever it meets.
template <class T>
void PoisonOppositeHoles(const std::vector<T>& a, std::vector<T>& b) {
  for (std::size_t i = 0; i < a.size(); ++i)
    if (a[i] == kHole<T> && b[i] != kHole<T>)
      b[i] = i % 2 ? std::numeric_limits<T>::infinity() : std::numeric_limits<T>::quiet_NaN();
}

/// n cells, half of them of the kinds that go wrong first: infinities, what overflows, denormals, zeros of both signs.
template <class T>
std::vector<T> SpecialCells(int n, unsigned seed) {
  using Limits = std::numeric_limits<T>;
  const T special[] = {Limits::infinity(), Limits::max(), Limits::min() / 3, Limits::denorm_min(), T(0), kHole<T>};
  std::vector<T> cells = Cells<T>(n, HolePattern::None, seed);
  std::mt19937 random(seed + 1);
  for (T& cell : cells)
    if (random() % 2 == 0) cell = random() % 2 == 0 ? special[random() % 6] : -special[random() % 6];
  return cells;
}

/// Equality of bits, but that a NaN is a NaN.
template <class T>
::testing::AssertionResult SameBitsOrNaNs(std::vector<T> a, std::vector<T> b) {
  for (std::vector<T>* numbers : {&a, &b})
    for (T& number : *numbers)
      if (std::isnan(number)) number = std::numeric_limits<T>::quiet_NaN();
  return SameBits(a, b);
}

/// Lengths around every width up to four times the sixteen lanes, and two long ones.
inline std::vector<int> TellingLengths() {
  std::vector<int> lengths(68);
  for (int n = 0; n < 68; ++n) lengths[n] = n;
  lengths.push_back(255);
  lengths.push_back(1030);
  return lengths;
}
