#pragma once

#include <optional>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/fit/O2PLSResult.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/O2PLSValidation.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// An O2PLS model of two tables and what judges it.
struct O2PLSAnalysis {
  ValidationRecipe recipe;                    ///< by which it was judged
  O2PLSResult fit;                            ///< `notes` are of the validation too
  std::optional<O2PLSValidation> validation;  ///< of full refits alone
};

/// Finds the numbers of components that are not given, by its own rules on a cross-validation by component, whatever
/// the method; `validation.selection` is not read.
/// Refit: the model of these numbers is judged as Validate does, which needs no joint component: then the mean is.
/// Component: that cross-validation judges given numbers too. None: takes given numbers, and leaves nothing out.
///
/// `progress` may be null. Throws Failure as Validate and Fit do; BadRequest for None without numbers and for Component
/// with rows dealt otherwise than interleaved.
KALMIA_EXPORT O2PLSAnalysis Analyse(const O2PLSRecipe& recipe, const Table& xTable, const Table& yTable,
                                    const ValidationRecipe& validation = {}, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
