#include "kalmia/analysis/text/DisplayText.h"

#include <algorithm>
#include <array>

namespace kalmia::analysis {

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

/// The first names, each on one line, `last` before the last of them.
std::string Joined(const std::vector<std::string>& names, std::size_t count, const char* last) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) text += i + 1 == count ? last : ", ";
    text += OneLine(names[i]);
  }
  return text;
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

std::string Beginning(std::string_view text) {
  if (text.size() <= kLongestQuotation) return std::string(text);
  std::size_t end = kLongestQuotation;
  while (end > 0 && IsContinuation(text[end])) --end;  // never cut inside a character
  return std::string(text.substr(0, end)) + "...";
}

std::string Quoted(std::string_view text) { return "'" + Beginning(OneLine(text)) + "'"; }

std::string Listed(const std::vector<std::string>& names, std::size_t limit) {
  if (limit == 0 || names.size() <= limit) return Joined(names, names.size(), " and ");
  return Joined(names, limit, ", ") + " and " + std::to_string(names.size() - limit) + " more";
}

std::string Either(const std::vector<std::string>& names) { return Joined(names, names.size(), " or "); }

std::string Counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::size_t DisplayWidth(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return !IsContinuation(c); }));
}

std::string ShortenedTo(std::size_t columns, const std::string& text) {
  const std::string dots = "...";
  if (DisplayWidth(text) <= columns) return text;
  if (columns < dots.size()) return "";
  std::string words = text;
  while (DisplayWidth(words) + dots.size() > columns) {
    const std::size_t blank = words.find_last_of(' ');
    const std::size_t end = blank == std::string::npos ? blank : words.find_last_not_of(' ', blank);
    words.erase(end == std::string::npos ? 0 : end + 1);
  }
  return words + dots;
}

}  // namespace kalmia::analysis
