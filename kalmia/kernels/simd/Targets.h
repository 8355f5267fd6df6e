#pragma once

/// The instruction sets that lane code is compiled for: on x86 SSE4, AVX2, AVX-512 and plain code below them. Those in
/// between would double the library's size and win nothing. Sets whose vectors have no size at compile time are left
/// out, since the sums hold their accumulators in arrays; such machines run their fixed-size set.
/// To be included before any header of Highway.
#define HWY_DISABLED_TARGETS \
  (HWY_SSSE3 | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
