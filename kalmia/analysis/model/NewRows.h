#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// The rows of a new table as a stored model wants them.
struct NewRows {
  std::vector<std::string> names;
  std::vector<std::string> missingColumns;  ///< columns that X is made of and the table does not have
  NCDataMatrix<float> x;                    ///< the model's X columns, through its preprocessing, less its shifts
  int moved = 0;                            ///< cells measured as the missing value
};

/// Matches the columns of the table by name, and notes which are not there. Rows are named by the column `id`, or where
/// that is empty by the column that named the training rows, or by number.
/// Throws BadData: no column of X is there, no cell is; no such `id`; a cell that is no number, or that the
/// preprocessing cannot take; std::bad_alloc. The rows go through the preprocessing in blocks: beyond the rows
/// themselves it takes room for some 4 million cells, or one row.
KALMIA_EXPORT NewRows ReadNewRows(const ModelInfo& model, const Table& table, const std::string& id, Notes* notes,
                    NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
