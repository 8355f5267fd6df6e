#pragma once

#include <string>
#include <vector>

#include "app/ComponentRecord.h"
#include "app/CsvTable.h"
#include "app/FilterOutcome.h"
#include "app/Json.h"
#include "app/Notes.h"
#include "app/Options.h"

namespace kalmia::app {

/// The components of a filter, one line each: what they take out of X, and their angle to Y.
std::string FilterComponentText(const std::vector<FilterComponentRecord>& components);
Json FilterComponentJson(const std::vector<FilterComponentRecord>& components);

/// What `kalmia filter` prints, with a filter just made and with a stored one.
std::string FilterText(const CsvTable& table, const FilterOutcome& outcome, const FilterOptions& options);
/// The same as JSON, format kalmia-filter.
std::string FilterJson(const CsvTable& table, const FilterOutcome& outcome, const FilterOptions& options,
                       const Notes& notes);

}  // namespace kalmia::app
