#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/cluster/ClusterRecipe.h"
#include "kalmia/analysis/table/CsvTable.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia::analysis {

/// The rows to be clustered, scaled, with the names of rows and columns.
struct ClusterData {
  std::vector<std::string> columnNames;
  std::vector<std::string> rowNames;
  NCDataMatrix<float> cells;  ///< all rows of the table by the columns that stay

  // What the table has but the distances do not see.
  std::vector<std::string> textColumns;
  std::vector<std::string> constantColumns;
  std::vector<std::string> emptyColumns;

  int Rows() const { return cells.SizeRows(); }
};

/// Selects columns and row names as the recipe says, and scales. Columns without numbers and empty ones are left out;
/// so are constant ones where columns are divided by their spread. Each kind with one note.
/// Throws BadData: a column that does not exist; no column or one row left; more rows than can be clustered;
/// a cell that is no finite number; a column that cannot be scaled.
ClusterData SelectClusterData(const CsvTable& table, const ClusterRecipe& recipe, Notes* notes);

}  // namespace kalmia::analysis
