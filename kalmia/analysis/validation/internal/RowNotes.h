#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/analysis/validation/Folds.h"
#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia::analysis {

// Rows of a table that make its validation say something else than it seems to.

/// Notes rows that have the cells of X and Y of another row, which stays in while they are left out: it foretells them
/// whatever the model is worth. Rows without Y count nowhere, and rows of few cells may well be alike: nothing is said of
/// fewer than five columns. One pass over X; of several repeats the first is looked at.
void NoteEqualRows(const NCDataMatrix<float>& x, const std::vector<std::vector<double>>& measuredY, const Folds& folds,
                   Notes* notes);

/// Notes rows whose left-out error in some Y column is more than ten standard deviations off, as the median of all
/// absolute errors has it (1.4826 of it for normal ones): a single one of them decides what the validation says.
/// Columns with fewer than ten errors say nothing. `squaredErrors` N x M, not a number where a cell does not count.
void NoteFarErrors(const std::vector<std::string>& rowNames, const std::vector<std::string>& yNames,
                   const RealMatrix& squaredErrors, Notes* notes);

}  // namespace kalmia::analysis
