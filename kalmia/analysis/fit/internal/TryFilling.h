#pragma once

#include <optional>

#include "kalmia/analysis/fit/FillTrial.h"
#include "kalmia/analysis/fit/internal/FillColumns.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Chooses the number of components, at most 15. Each trial hides a tenth of the present cells of columns that vary;
/// trials go on until 1000 cells were hidden, for ten trials at most, and are the same in every run. The search ends
/// where three further components have not made the error smaller by more than 1 %.
/// Throws as FillColumns.
FillChoice ChooseComponents(const NumberColumns& columns, NCProgress* progress = nullptr);

/// Hides a tenth of the present cells of columns that vary, fills them, and compares. The draw is fixed, and
/// differs from all draws of ChooseComponents. Without `components`, ChooseComponents finds their number without the hidden
/// cells. Every row and column keeps a cell. Means are those of the cells that stay, standard deviations those of all
/// present cells.
/// Throws as FillColumns.
FillTrial TryFilling(const NumberColumns& columns, const std::optional<int>& components,
                     NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
