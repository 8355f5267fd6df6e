#pragma once

#include <string>

#include "kalmia/analysis/fit/FilterResult.h"
#include "kalmia/analysis/table/CsvTable.h"
#include "kalmia/analysis/text/Notes.h"

namespace kalmia::analysis {

/// The files that a filter and the filtered table are written to.
struct FilterFiles {
  std::string out;
  std::string saved;  ///< empty if the filter is not stored
};

/// The text of a report, with a filter just made and with a stored one.
std::string FilterText(const CsvTable& table, const FilterResult& result, const FilterFiles& files);
/// The same as JSON, format kalmia-filter.
std::string FilterJson(const CsvTable& table, const FilterResult& result, const FilterFiles& files,
                       const Notes& notes);

}  // namespace kalmia::analysis
