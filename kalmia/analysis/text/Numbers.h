#pragma once

#include <string>

#include "kalmia/support/Export.h"

namespace kalmia::analysis {

// Numbers as text, with a decimal point whatever the locale; what is no finite number is `none`.

/// With so many digits behind the point.
KALMIA_EXPORT std::string Fixed(double value, int decimals, const std::string& none = "-");
/// With so many digits that count; with an exponent below 0.0001 and from 1e8 on.
KALMIA_EXPORT std::string Significant(double value, int digits, const std::string& none = "-");
/// With as few digits as bring the same value back.
KALMIA_EXPORT std::string Shortest(double value, const std::string& none = "");
KALMIA_EXPORT std::string Shortest(float value, const std::string& none = "");

/// whole * 10^exponent, as exact as a double can be.
KALMIA_EXPORT double TimesPowerOfTen(double whole, int exponent);

/// To so many digits that count.
KALMIA_EXPORT double Rounded(double value, int digits);

/// The double that the fewest digits of a float name: 0.05 for 0.05F, which as a double is 0.0500000007. Order and
/// value as a float stay.
KALMIA_EXPORT double ShortestDouble(float value);

}  // namespace kalmia::analysis
