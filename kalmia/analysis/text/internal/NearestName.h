#pragma once

#include <string>
#include <vector>

namespace kalmia::analysis {

/// The name that was probably meant by `name`: the first one that differs in nothing but capitals, blanks, `_` and `-`,
/// otherwise the nearest one, where few letters have to be changed, put in, taken out or exchanged with their neighbour
/// for it: one of three or more letters, two of eight or more. Empty if there is none.
std::string NearestName(const std::string& name, const std::vector<std::string>& names);

/// ", did you mean 'octane'?", or nothing.
std::string DidYouMean(const std::string& name, const std::vector<std::string>& names);

}  // namespace kalmia::analysis
