#pragma once

#include <string>

#include "kalmia/analysis/fit/FilterResult.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The files that a filter and the filtered table are written to.
struct FilterFiles {
  std::string out;
  std::string saved;  ///< empty if the filter is not stored
};

/// The text of a report, with a filter just made and with a stored one.
KALMIA_EXPORT std::string FilterText(const Table& table, const FilterResult& result, const FilterFiles& files);
/// The same as JSON, format kalmia-filter.
KALMIA_EXPORT std::string FilterJson(const Table& table, const FilterResult& result, const FilterFiles& files,
                       const Notes& notes);

}  // namespace kalmia::analysis
