#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kalmia/analysis/figure/Figure.h"
#include "kalmia/analysis/model/Contributions.h"
#include "kalmia/analysis/validation/Analysis.h"
#include "kalmia/analysis/validation/O2PLSAnalysis.h"
#include "kalmia/analysis/validation/OPLSAnalysis.h"
#include "kalmia/analysis/validation/PCAAnalysis.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// What figures of a model show.
struct FigureRecipe {
  /// Components, from 1, across and up. Nothing: the first two, or of one the row's number across. Of OPLS they count
  /// the predictive ones, then the orthogonal ones; nothing: the first predictive one across, the first orthogonal one
  /// up.
  std::optional<std::pair<int, int>> axes;
  std::string title;  ///< what figures are called after, "Scores: TITLE"; empty: the model and its table
};

// The figures of an analysis, each with the numbers of the reports and CSV files, signs as they are stored. Figures
// that would be empty are left out: those of scores, loadings and T2 of a model without components, those of what was
// not validated. Limits are those of the rows shown, which the model was fitted to. Of more than six Y columns those
// figures that have a panel for each show the first six, and say so.
//
// T2 of a row in the plane of two components: the ellipse has T2 of those two alone at the limit of 95 % for a model of
// two components, see T2LimitOfTrainingRows; of one component it is a pair of levels.
// `contributions` are of rows that were asked for, a figure each.
// Throws BadRequest for axes that the model does not have, or that are the same.

KALMIA_EXPORT std::vector<Figure> Figures(const PCAAnalysis& analysis, const FigureRecipe& recipe = {},
                                          const std::vector<RowContributions>& contributions = {});
KALMIA_EXPORT std::vector<Figure> Figures(const PLSAnalysis& analysis, const FigureRecipe& recipe = {},
                                          const std::vector<RowContributions>& contributions = {});
KALMIA_EXPORT std::vector<Figure> Figures(const OPLSAnalysis& analysis, const FigureRecipe& recipe = {},
                                          const std::vector<RowContributions>& contributions = {});
/// Of O2PLS, which has no T2 and no contributions, the axes count the joint components, then the unique ones of each
/// block; a block without them shows its first two. Nothing of a model without joint components.
KALMIA_EXPORT std::vector<Figure> Figures(const O2PLSAnalysis& analysis, const FigureRecipe& recipe = {});

/// The names that figures of analyses may have, before there is a model: with so many rows of contributions.
KALMIA_EXPORT std::vector<std::string> FigureNames(std::size_t contributions = 0);

}  // namespace kalmia::analysis
