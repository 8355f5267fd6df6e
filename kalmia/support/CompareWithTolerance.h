#pragma once

#include "kalmia/support/Export.h"

/// 1 if a is above b, -1 if below, 0 if they are practically equal:  |a - b| <= tolerance * 2^e,  where e is the binary
/// exponent (frexp) of the number of larger magnitude, and 0 for two zeros.
/// A NaN on either side gives 0. An infinity equals itself and lies beyond every finite number. If tolerance * 2^e
/// exceeds the range of double, all finite numbers are equal. Throws nothing.
KALMIA_EXPORT int CompareWithTolerance(double a, double b, double tolerance);
