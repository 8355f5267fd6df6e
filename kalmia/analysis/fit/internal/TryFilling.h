#pragma once

#include <optional>

#include "kalmia/analysis/fit/FillTrial.h"
#include "kalmia/analysis/fit/internal/FillColumns.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Chooses the number of components, at most 15. Each trial hides a tenth of the present cells of columns that vary;
/// there are trials until 1000 cells were hidden, at most ten, the same ones each time. Ends where three further
/// components have not made the error smaller by more than 1 %.
/// Throws as FillColumns.
FillChoice ChooseComponents(const NumberColumns& columns, NCProgress* progress = nullptr);

/// Hides a tenth of the present cells of the columns that vary, others than any trial of ChooseComponents and the same
/// ones each time, fills them with `components` or with as many as ChooseComponents finds without them, and compares.
/// Every row and column keeps a cell. Means: of the cells that were not hidden; standard deviations: of all present
/// cells.
/// Throws as FillColumns.
FillTrial TryFilling(const NumberColumns& columns, const std::optional<int>& components,
                     NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
