#pragma once

#include "kalmia/support/Export.h"

/// 1, 0 or -1: whether a is above, as good as equal to, or below b. With e the binary exponent (as of frexp) of
/// whichever has the larger magnitude, the two are as good as equal while |a - b| <= tolerance * 2^e. A NaN on either
/// side gives 0. Two zeros have e = 0. An infinity equals itself and lies beyond every other number; where
/// tolerance * 2^e is beyond the range of double, all finite numbers are as good as equal. Throws nothing.
KALMIA_EXPORT int CompareWithTolerance(double a, double b, double tolerance);
