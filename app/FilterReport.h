#pragma once

#include <string>
#include <vector>

#include "app/ComponentRecord.h"
#include "app/CsvTable.h"
#include "app/FilterOutcome.h"
#include "app/Json.h"
#include "app/Notes.h"

namespace kalmia::app {

/// The components of a filter, one line each: what they take out of X, and their angle to Y.
std::string FilterComponentText(const std::vector<FilterComponentRecord>& components);
Json FilterComponentJson(const std::vector<FilterComponentRecord>& components);

/// The files that a filter and the filtered table are written to.
struct FilterFiles {
  std::string out;
  std::string saved;  ///< empty if the filter is not stored
};

/// What `kalmia filter` prints, with a filter just made and with a stored one.
std::string FilterText(const CsvTable& table, const FilterOutcome& outcome, const FilterFiles& files);
/// The same as JSON, format kalmia-filter.
std::string FilterJson(const CsvTable& table, const FilterOutcome& outcome, const FilterFiles& files,
                       const Notes& notes);

}  // namespace kalmia::app
