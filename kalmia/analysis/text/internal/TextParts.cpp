#include "kalmia/analysis/text/internal/TextParts.h"

namespace kalmia::analysis {

std::string_view WithoutBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  for (;;) {
    const std::size_t end = text.find(separator);
    parts.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

}  // namespace kalmia::analysis
