#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/table/CellRows.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// A table without what a filter takes out of it.
struct FilteredTable {
  CellRows cells;  ///< all rows of the table by the filter's X columns, in the units of the table
  std::vector<std::string> missingColumns;
  double removed = 0.0;       ///< share of the sum of squares of the scaled X
};

/// A filter, and what it makes of a table.
struct FilterResult {
  StoredFilter filter;
  std::string source;      ///< how messages call the file of a stored filter; empty for one just made
  std::string endedEarly;  ///< why a filter just made has fewer components than asked for; or empty
  FilteredTable filtered;
  Notes notes;  ///< what was done of its own accord
};

/// Makes the filter that the recipe asks for, and applies it. Rows without any X cell, or without any Y cell, take no
/// part in the fit, with a note; they are filtered like the others. Here as below `progress` may be null. Throws as
/// FitRecipes.h says, and as ApplyFilter does.
KALMIA_EXPORT FilterResult Fit(const FilterRecipe& recipe, const Table& table, NCProgress* progress = nullptr);

/// Filters the rows of a table by a stored filter, which the result holds. Columns are matched by name. The rows
/// that a filter was made of come out with the same bits as Fit gave them. A missing cell stays missing. Throws
/// BadData as ReadNewRows, and where the numbers overflow.
KALMIA_EXPORT FilterResult ApplyFilter(StoredFilter filter, const Table& table, NCProgress* progress = nullptr);

/// The text of the table with the filtered cells in it, as WithNewCells writes it, with its note; a missing cell stays
/// as it is.
KALMIA_EXPORT std::string FilteredText(const Table& table, const FilterResult& result, const AskedMarks& marks,
                         Notes* notes, NCProgress* progress);

}  // namespace kalmia::analysis
