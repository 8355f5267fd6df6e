#pragma once

#include <vector>

#include "kalmia/analysis/figure/Figure.h"
#include "kalmia/analysis/figure/ModelFigures.h"
#include "kalmia/analysis/model/PCAPredictions.h"
#include "kalmia/analysis/model/PLSPredictions.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

// Figures of new rows: their scores on those of the training rows, their distances and T2, with the limits of new rows;
// what is predicted of Y with its intervals, against measured values where the table has them and otherwise by the
// row's number; contributions of rows that were asked for. A model whose file leaves its training rows out shows the
// new ones alone, and says so. Throws as Figures of an analysis.

KALMIA_EXPORT std::vector<Figure> Figures(const StoredPLS& model, const PLSPredictions& result,
                                          const FigureRecipe& recipe = {},
                                          const std::vector<RowContributions>& contributions = {});
KALMIA_EXPORT std::vector<Figure> Figures(const StoredOPLS& model, const PLSPredictions& result,
                                          const FigureRecipe& recipe = {},
                                          const std::vector<RowContributions>& contributions = {});
KALMIA_EXPORT std::vector<Figure> Figures(const StoredO2PLS& model, const PLSPredictions& result,
                                          const FigureRecipe& recipe = {},
                                          const std::vector<RowContributions>& contributions = {});
KALMIA_EXPORT std::vector<Figure> Figures(const StoredPCA& model, const PCAPredictions& result,
                                          const FigureRecipe& recipe = {},
                                          const std::vector<RowContributions>& contributions = {});

}  // namespace kalmia::analysis
