#include "kalmia/support/CString.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {
const char* OrEmpty(const char* text) { return text ? text : ""; }
}  // namespace

CString::CString(const char* text) : text_(OrEmpty(text)) {}

int CString::Compare(const char* other) const { return std::strcmp(text_.c_str(), OrEmpty(other)); }

void CString::Format(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  std::string result;
  if (length > 0) {
    std::vector<char> buffer(static_cast<std::size_t>(length) + 1);
    std::vsnprintf(buffer.data(), buffer.size(), format, again);
    result.assign(buffer.data(), static_cast<std::size_t>(length));
  }
  va_end(again);
  text_.swap(result);  // last, because an argument may point into the old text
}

bool operator==(const CString& a, const CString& b) { return a.Compare(b) == 0; }
bool operator==(const CString& a, const char* b) { return a.Compare(b) == 0; }
bool operator==(const char* a, const CString& b) { return b.Compare(a) == 0; }
bool operator!=(const CString& a, const CString& b) { return !(a == b); }
bool operator!=(const CString& a, const char* b) { return !(a == b); }
bool operator!=(const char* a, const CString& b) { return !(a == b); }
