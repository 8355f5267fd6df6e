#include "app/DisplayText.h"

#include <algorithm>
#include <array>

namespace kalmia::app {

namespace {

constexpr std::size_t kLongestQuotation = 40;

bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

std::string Escaped(char byte) {
  switch (byte) {
    case '\n': return "\\n";
    case '\r': return "\\r";
    case '\t': return "\\t";
    default: break;
  }
  constexpr std::array<char, 17> kDigits = {"0123456789abcdef"};
  const auto code = static_cast<unsigned char>(byte);
  return {'\\', 'x', kDigits[code >> 4U], kDigits[code & 15U]};
}

}  // namespace

std::string OneLine(std::string_view text) {
  std::string line;
  for (const char byte : text) {
    const auto code = static_cast<unsigned char>(byte);
    if (code < 0x20U || code == 0x7FU) {
      line += Escaped(byte);
    } else {
      line += byte;
    }
  }
  return line;
}

std::string Quoted(std::string_view text) {
  std::string line = OneLine(text);
  if (line.size() > kLongestQuotation) {
    std::size_t end = kLongestQuotation;
    while (end > 0 && IsContinuation(line[end])) --end;  // never cut inside a character
    line = line.substr(0, end) + "...";
  }
  return "'" + line + "'";
}

std::string Listed(const std::vector<std::string>& names, std::size_t limit) {
  const bool cut = limit > 0 && names.size() > limit;
  const std::size_t shown = cut ? limit : names.size();
  std::string text;
  for (std::size_t i = 0; i < shown; ++i) {
    if (i > 0) text += !cut && i + 1 == shown ? " and " : ", ";
    text += OneLine(names[i]);
  }
  if (cut) text += " and " + std::to_string(names.size() - shown) + " more";
  return text;
}

std::string Counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::size_t DisplayWidth(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return !IsContinuation(c); }));
}

}  // namespace kalmia::app
