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

  /// Returns whether the whole text is a decimal number in the range of float, and if so sets `value` to the nearest
  /// float. The syntax, in any locale: an optional sign; digits with at most one point among, before or after them;
  /// optionally e or E, an optional sign and digits. No blanks, no "inf" or "nan", no hexadecimals. Numbers that
  /// overflow float, or are not 0 but nearer to 0 than the smallest float, are refused.
  static bool ToFloat(const char* text, float& value);

  /// Compares bytes with A to Z as a to z, in any locale: below, equal to or above 0. Null counts as "".
  static int CompareWithoutCase(const char* a, const char* b);
};
