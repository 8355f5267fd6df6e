#pragma once

namespace kalmia::simd {

/// How far ahead of the cells that they read the functions of this folder fetch memory. The hardware does not foresee
/// eight rows that are read at once; nearer comes too late, farther pushes out what is still needed.
constexpr int kBytesAhead = 384;

/// Rows that a call takes at most, and that a caller does well to hand over: vectors beside them are loaded once for
/// all, column sums stay in registers that long, and memory is busiest with so many rows under way.
constexpr int kRowsSideBySide = 8;

/// Whether the processor has vector instructions that the lane code was built for. Asked once, then kept.
bool HasVectorInstructions();

/// Holds every function of this folder to its scalar twin, or lets it use the lanes again. For tests: bits are the same
/// either way. At first the environment decides: KALMIA_SIMD=scalar means twins. Not to be called while a kernel runs.
void UseScalarTwins(bool on);
bool UsesScalarTwins();

}  // namespace kalmia::simd
