#include "kalmia/support/VexString.h"

#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <system_error>

namespace {

int LowerCase(char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : static_cast<unsigned char>(c); }

}  // namespace

int VexString::lsprintf(char* buffer, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int written = std::vsprintf(buffer, format, arguments);
  va_end(arguments);
  return written;
}

bool VexString::ToFloat(const char* text, float& value) {
  if (!text) return false;
  const char* first = *text == '+' || *text == '-' ? text + 1 : text;
  const char* const last = first + std::strlen(first);
  // from_chars would take a second sign, "inf" and "nan"; a number starts with a digit or its point.
  if (!std::strchr("0123456789.", *first)) return false;
  float magnitude = 0;
  const auto [end, error] = std::from_chars(first, last, magnitude);
  if (error != std::errc() || end != last) return false;
  value = *text == '-' ? -magnitude : magnitude;
  return true;
}

int VexString::CompareWithoutCase(const char* a, const char* b) {
  a = kalmia::OrEmpty(a);
  b = kalmia::OrEmpty(b);
  while (*a && LowerCase(*a) == LowerCase(*b)) {
    ++a;
    ++b;
  }
  return LowerCase(*a) - LowerCase(*b);
}
