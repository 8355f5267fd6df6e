#include "kalmia/support/CString.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "kalmia/support/VexString.h"

using kalmia::OrEmpty;

CString::CString(const char* text) {
  const std::size_t length = std::strlen(OrEmpty(text));
  if (length == 0) return;
  text_.reset(new char[length + 1]);
  std::memcpy(text_.get(), text, length + 1);
}

CString& CString::operator=(const CString& other) { return *this = CString(other); }

int CString::Compare(const char* other) const { return std::strcmp(Get(), OrEmpty(other)); }

void CString::Format(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  std::unique_ptr<char[]> result;
  if (length > 0) {
    const std::size_t bytes = static_cast<std::size_t>(length) + 1;
    result.reset(new char[bytes]);
    std::vsnprintf(result.get(), bytes, format, again);
  }
  va_end(again);
  text_.swap(result);  // last, because an argument may point into the old text
}

bool operator==(const CString& a, const CString& b) { return a.Compare(b) == 0; }
bool operator==(const CString& a, const char* b) { return a.Compare(b) == 0; }
bool operator==(const char* a, const CString& b) { return 0 == b.Compare(a); }
bool operator!=(const CString& a, const CString& b) { return a.Compare(b) != 0; }
bool operator!=(const CString& a, const char* b) { return a.Compare(b) != 0; }
bool operator!=(const char* a, const CString& b) { return 0 != b.Compare(a); }
bool operator<(const CString& a, const CString& b) { return a.Compare(b) < 0; }
bool operator<(const CString& a, const char* b) { return a.Compare(b) < 0; }
bool operator<(const char* a, const CString& b) { return 0 < b.Compare(a); }
bool operator>(const CString& a, const CString& b) { return a.Compare(b) > 0; }
bool operator>(const CString& a, const char* b) { return a.Compare(b) > 0; }
bool operator>(const char* a, const CString& b) { return 0 > b.Compare(a); }
bool operator<=(const CString& a, const CString& b) { return a.Compare(b) <= 0; }
bool operator<=(const CString& a, const char* b) { return a.Compare(b) <= 0; }
bool operator<=(const char* a, const CString& b) { return 0 <= b.Compare(a); }
bool operator>=(const CString& a, const CString& b) { return a.Compare(b) >= 0; }
bool operator>=(const CString& a, const char* b) { return a.Compare(b) >= 0; }
bool operator>=(const char* a, const CString& b) { return 0 >= b.Compare(a); }
