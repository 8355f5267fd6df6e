#pragma once

#include <string>
#include <vector>

namespace kalmia::analysis {

/// The name that `name` probably stands for: the first that differs only in capitals, blanks, `_` and `-`; otherwise
/// the nearest, if few letters have to be changed, inserted, removed or swapped with a neighbour: one in names of three
/// or more letters, two in names of eight or more. Empty if there is none.
std::string NearestName(const std::string& name, const std::vector<std::string>& names);

/// ", did you mean 'octane'?", or nothing.
std::string DidYouMean(const std::string& name, const std::vector<std::string>& names);

}  // namespace kalmia::analysis
