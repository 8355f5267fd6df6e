#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kalmia::analysis {

/// The text without the spaces and tabs at its ends.
std::string_view WithoutBlanks(std::string_view text);

/// What stands before, between and behind the separators: one part more than there are of them.
std::vector<std::string> Split(std::string_view text, char separator);

}  // namespace kalmia::analysis
