#pragma once

#include <optional>

#include "kalmia/analysis/figure/internal/FigureParts.h"
#include "kalmia/analysis/fit/ClassFit.h"

namespace kalmia::analysis {

// Where the training rows of models lie, by components in the order of RowFit::t. Without rows where the file of the
// model leaves them out.

ScoreSpace SpaceOf(const StoredPCA& model);
ScoreSpace SpaceOf(const StoredPLS& model);
ScoreSpace SpaceOf(const StoredOPLS& model);
/// Of the block that the model predicts from.
ScoreSpace SpaceOf(const StoredO2PLS& model);

/// Tells the space the classes of its rows, if they have any.
void TakeClasses(const std::optional<ClassFit>& classes, ScoreSpace* space);

/// Those that figures of scores show unless the recipe says otherwise: of OPLS the first predictive one across, the
/// first orthogonal one up.
FigureAxes AxesOf(const FigureRecipe& recipe, const StoredOPLS& model);

}  // namespace kalmia::analysis
