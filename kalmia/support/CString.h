#pragma once

#include <memory>

#include "kalmia/support/Export.h"

/// The string of the interface, for messages and for names of variables and observations: bytes, closed by a zero byte,
/// in any encoding. It is one pointer wide, and the empty string takes no heap, so long lists of short names stay
/// small.
/// Throws only std::bad_alloc.
class KALMIA_EXPORT CString {
 public:
  CString() = default;
  CString(const char* text);  // NOLINT: implicit on purpose; a null pointer gives the empty string
  CString(const CString& other) : CString(other.Get()) {}
  CString(CString&& other) noexcept = default;
  CString& operator=(const CString& other);
  CString& operator=(CString&& other) noexcept = default;
  ~CString() = default;

  operator const char*() const { return Get(); }  // NOLINT: implicit on purpose

  /// Compares bytes as strcmp does: below, equal to or above 0. A null pointer counts as "".
  int Compare(const char* other) const;

  /// Replaces the text by what printf would print. An argument may point into this string.
  void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));

 private:
  const char* Get() const { return text_ ? text_.get() : ""; }

  std::unique_ptr<char[]> text_;  ///< null for the empty string
};

// Equality and order by Compare.
KALMIA_EXPORT bool operator==(const CString& a, const CString& b);
KALMIA_EXPORT bool operator==(const CString& a, const char* b);
KALMIA_EXPORT bool operator==(const char* a, const CString& b);
KALMIA_EXPORT bool operator!=(const CString& a, const CString& b);
KALMIA_EXPORT bool operator!=(const CString& a, const char* b);
KALMIA_EXPORT bool operator!=(const char* a, const CString& b);
KALMIA_EXPORT bool operator<(const CString& a, const CString& b);
KALMIA_EXPORT bool operator<(const CString& a, const char* b);
KALMIA_EXPORT bool operator<(const char* a, const CString& b);
KALMIA_EXPORT bool operator>(const CString& a, const CString& b);
KALMIA_EXPORT bool operator>(const CString& a, const char* b);
KALMIA_EXPORT bool operator>(const char* a, const CString& b);
KALMIA_EXPORT bool operator<=(const CString& a, const CString& b);
KALMIA_EXPORT bool operator<=(const CString& a, const char* b);
KALMIA_EXPORT bool operator<=(const char* a, const CString& b);
KALMIA_EXPORT bool operator>=(const CString& a, const CString& b);
KALMIA_EXPORT bool operator>=(const CString& a, const char* b);
KALMIA_EXPORT bool operator>=(const char* a, const CString& b);
