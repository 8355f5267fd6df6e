#pragma once

#include "kalmia/support/Export.h"

namespace kalmia {

/// A null pointer counts as the empty text.
inline const char* OrEmpty(const char* text) { return text ? text : ""; }

}  // namespace kalmia

/// Helpers for C strings.
class KALMIA_EXPORT VexString {
 public:
  /// sprintf: prints into `buffer`, which has to be large enough, and returns the number of characters or a negative
  /// number on failure.
  static int lsprintf(char* buffer, const char* format, ...) __attribute__((format(printf, 2, 3)));

  /// Whether the whole text is a decimal number that a float can hold; then `value` is the float nearest to it, else it
  /// stays. The syntax, whatever the locale: an optional sign, digits with at most one point among, before or behind
  /// them, and optionally e or E, an optional sign and digits. No blanks, no words such as "inf" or "nan", no
  /// hexadecimals. A number beyond the range of float, or not 0 but nearer to it than the smallest float, is none.
  static bool ToFloat(const char* text, float& value);

  /// Order by bytes with A to Z counted as a to z, whatever the locale: below, equal to or above 0. Null counts as "".
  static int CompareWithoutCase(const char* a, const char* b);
};
