#pragma once

#include <cstdint>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"

// The lengths that transforms of signals want, and what makes a signal that long.

namespace kalmia {

/// The smallest J with 2^J >= n; 0 for n below 2.
KALMIA_EXPORT int Levels(std::int64_t n);
/// The smallest power of two that is not below n; 1 for n below 2, and 0 where it would not be an int.
KALMIA_EXPORT int PowerLength(std::int64_t n);
KALMIA_EXPORT bool IsPowerOfTwo(int n);

/// Continues a signal of n >= 1 cells, n not checked, to `length` cells so that its end leads back to its start: with
/// p = length - n new cells, x(n) - t (x(n) - x(1)) / (p - 1) for t = 0 to p - 1. A single new cell is half of
/// x(n) - x(1), the difference and not the mean. A `length` that is not above n changes nothing.
KALMIA_EXPORT void PadBackToStart(NCDataVector<float>* signal, int length);

}  // namespace kalmia
