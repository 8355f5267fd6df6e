#pragma once

#include <string>
#include <vector>

#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The name that `name` probably stands for: the first that differs only in capitals, blanks, `_` and `-`; otherwise
/// the nearest, if few letters have to be changed, inserted, removed or swapped with a neighbour: one in names of three
/// or more letters, two in names of eight or more. Empty if there is none.
KALMIA_EXPORT std::string NearestName(const std::string& name, const std::vector<std::string>& names);

/// The same among the words of a closed list, of which a beginning, the initials or an addition are enough, too:
/// leave-one-out for 'loo' or 'leave', pls for 'plsda'. Of several with that beginning none.
KALMIA_EXPORT std::string NearestWord(const std::string& word, const std::vector<std::string>& words);

/// ", did you mean 'octane'?", or nothing.
KALMIA_EXPORT std::string DidYouMean(const std::string& name, const std::vector<std::string>& names);

}  // namespace kalmia::analysis
