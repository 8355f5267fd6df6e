#pragma once

#include <cstdint>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"

// The lengths that transforms of signals need, and the padding to them.

namespace kalmia {

/// The smallest J with 2^J >= n; 0 for n below 2.
KALMIA_EXPORT int Levels(std::int64_t n);
/// The smallest power of two that is not below n; 1 for n below 2, and 0 where it would not be an int.
KALMIA_EXPORT int PowerLength(std::int64_t n);
KALMIA_EXPORT bool IsPowerOfTwo(int n);

/// Extends a signal of n >= 1 cells (not checked) to `length` cells by a ramp from its end back to its start. With
/// p = length - n, the new cells are x(n) - t (x(n) - x(1)) / (p - 1) for t = 0 to p - 1. A single new cell is half the
/// difference x(n) - x(1). A `length` of at most n changes nothing.
KALMIA_EXPORT void PadBackToStart(NCDataVector<float>* signal, int length);

}  // namespace kalmia
