#pragma once

#include <string>

#include "kalmia/support/Export.h"

namespace kalmia::analysis {

// Numbers as text, with a decimal point whatever the locale; `none` for numbers that are not finite.

/// With so many digits behind the point.
KALMIA_EXPORT std::string Fixed(double value, int decimals, const std::string& none = "-");
/// With so many significant digits; with an exponent below 0.0001 and from 1e8 on.
KALMIA_EXPORT std::string Significant(double value, int digits, const std::string& none = "-");
/// With the fewest digits that read back as the same value.
KALMIA_EXPORT std::string Shortest(double value, const std::string& none = "");
KALMIA_EXPORT std::string Shortest(float value, const std::string& none = "");

/// whole * 10^exponent, as exact as a double can be.
KALMIA_EXPORT double TimesPowerOfTen(double whole, int exponent);

/// To so many significant digits.
KALMIA_EXPORT double Rounded(double value, int digits);

/// The double nearest to the float's shortest digits: 0.05 for 0.05F, which as a double is 0.0500000007. Rounded to
/// float it is the same value again, so order stays.
KALMIA_EXPORT double ShortestDouble(float value);

}  // namespace kalmia::analysis
