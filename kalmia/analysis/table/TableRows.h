#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/table/Table.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The rows that words name, from 0, in the order of the words; a row that is named again comes once. `names` are those
/// of all rows of the table, as RowNames has them. A word that is no row's name is the number of a row, from 1: a name
/// wins over a number. Throws BadData: there is no such row, with the name that was probably meant; several rows have
/// the name.
KALMIA_EXPORT std::vector<int> RequireRows(const Table& table, const std::vector<std::string>& names,
                                           const std::vector<std::string>& words);

}  // namespace kalmia::analysis
