#pragma once

#include "kalmia/analysis/cluster/ClusterData.h"
#include "kalmia/analysis/cluster/ClusterRecipe.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"

namespace kalmia::analysis {

/// Selects columns and row names as the recipe says, and scales. Columns without numbers and empty ones are left out;
/// so are constant ones where columns are divided by their spread. Each kind with one note.
/// Throws BadData: a column that does not exist; no column or one row left; more rows than can be clustered;
/// a cell that is no finite number; a column that cannot be scaled.
ClusterData SelectClusterData(const Table& table, const ClusterRecipe& recipe, Notes* notes);

}  // namespace kalmia::analysis
