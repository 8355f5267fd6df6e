#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kalmia::analysis {

/// The text without the spaces and tabs at its ends.
std::string_view WithoutBlanks(std::string_view text);

/// The parts between separators: one more than there are separators.
std::vector<std::string> Split(std::string_view text, char separator);

}  // namespace kalmia::analysis
