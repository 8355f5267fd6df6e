#pragma once

#include <string>

/// The string of the interface: messages, names of variables and observations. Bytes, closed by a zero byte;
/// no encoding is assumed. Throws nothing but std::bad_alloc.
class CString {
 public:
  CString() = default;
  CString(const char* text);  // NOLINT: implicit on purpose; a null pointer gives the empty string

  operator const char*() const { return text_.c_str(); }  // NOLINT: implicit on purpose

  /// Order by bytes, as of strcmp: below, equal to or above 0. A null pointer counts as "".
  int Compare(const char* other) const;

  /// Replaces the text by what printf would print. An argument may point into this string.
  void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));

 private:
  std::string text_;
};

bool operator==(const CString& a, const CString& b);
bool operator==(const CString& a, const char* b);
bool operator==(const char* a, const CString& b);
bool operator!=(const CString& a, const CString& b);
bool operator!=(const CString& a, const char* b);
bool operator!=(const char* a, const CString& b);
