#pragma once

#include <cstdint>
#include <cstring>

#include "kalmia/containers/Missing.h"

namespace kalmia {

/// Accumulators of every sum over a vector, whatever the width of the machine.
constexpr int kLanes = 16;

/// The sum of the accumulators, folded in halves: each of the first half takes the one half a length behind it, until
/// one is left, which holds the sum. Every sum over a vector ends so: its bits are the same on every machine.
inline double FoldInHalves(double (&lane)[kLanes]) {
  for (int half = kLanes / 2; half > 0; half /= 2)
    for (int k = 0; k < half; ++k) lane[k] += lane[k + half];
  return lane[0];
}

/// Sum of term(i) over 0 <= i < n, in double. Term i goes to accumulator i mod 16, and FoldInHalves ends it.
/// The order is fixed, and yet the loop can run on vector registers.
template <class Term>
inline double LaneSum(int n, Term term) {
  double lane[kLanes] = {};
  int i = 0;
  for (; n - i >= kLanes; i += kLanes)
    for (int k = 0; k < kLanes; ++k) lane[k] += term(i + k);
  for (int k = 0; i < n; ++i, ++k) lane[k] += term(i);
  return FoldInHalves(lane);
}

/// x, or +0 where it is not kept, without a branch: which cells are holes cannot be foreseen. A sum that started at +0
/// stays the same to the bit when +0 is added, so a term that is not kept takes no part.
inline double Kept(bool keep, double x) {
  std::uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  bits &= std::uint64_t{0} - static_cast<std::uint64_t>(keep);
  std::memcpy(&x, &bits, sizeof x);
  return x;
}

/// Sum of f(x) over the present cells among the n from 0 on.
template <class T, class F>
double SumPresent(const T* x, int n, bool complete, F f) {
  if (complete) return LaneSum(n, [=](int i) { return f(static_cast<double>(x[i])); });
  return LaneSum(n, [=](int i) { return Kept(x[i] != kMissingCell<T>, f(static_cast<double>(x[i]))); });
}

}  // namespace kalmia
