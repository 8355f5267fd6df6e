#pragma once

namespace kalmia::simd {

/// Accumulators of every dot-like sum, whatever the width of the machine: cell i goes to accumulator i mod 16, and the
/// sixteen are folded in halves at the end. The order is fixed, hence so are the bits. Where this folder promises equal
/// bits, a NaN is a NaN: which of several operands gives its sign and payload is left to machine and compiler.
constexpr int kLanes = 16;

/// Folds in halves: lane k takes lane k + 8, then k + 4, k + 2, k + 1.
inline double FoldInHalves(double (&lane)[kLanes]) {
  for (int half = kLanes / 2; half > 0; half /= 2)
    for (int k = 0; k < half; ++k) lane[k] += lane[k + half];
  return lane[0];
}

/// How far ahead of the cells that they read the functions of this folder fetch memory. The hardware does not foresee
/// eight rows that are read at once; nearer comes too late, farther pushes out what is still needed.
constexpr int kBytesAhead = 384;

/// Whether the processor has vector instructions that the lane code was built for. Asked once, then kept.
bool HasVectorInstructions();

/// Holds every function of this folder to its scalar twin, or lets it use the lanes again. For tests: bits are the same
/// either way. At first the environment decides: KALMIA_SIMD=scalar means twins. Not to be called while a kernel runs.
void UseScalarTwins(bool on);
bool UsesScalarTwins();

}  // namespace kalmia::simd
