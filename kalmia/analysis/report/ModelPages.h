#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/figure/ModelFigures.h"
#include "kalmia/analysis/model/Contributions.h"
#include "kalmia/analysis/report/ReportPage.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/analysis/validation/Analysis.h"
#include "kalmia/analysis/validation/O2PLSAnalysis.h"
#include "kalmia/analysis/validation/OPLSAnalysis.h"
#include "kalmia/analysis/validation/PCAAnalysis.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

// The page of an analysis: its figures and the text of its report; of each row what the figures have of it, and the
// texts and the columns of the table that the model leaves out, by which rows may be coloured. Components can be chosen
// where the model has two. Throws as Figures does.

KALMIA_EXPORT ReportPage PageOf(const Table& table, const PCAAnalysis& analysis, const Notes& notes,
                                const FigureRecipe& recipe = {},
                                const std::vector<RowContributions>& contributions = {});
KALMIA_EXPORT ReportPage PageOf(const Table& table, const PLSAnalysis& analysis, const Notes& notes,
                                const FigureRecipe& recipe = {},
                                const std::vector<RowContributions>& contributions = {});
KALMIA_EXPORT ReportPage PageOf(const Table& table, const OPLSAnalysis& analysis, const Notes& notes,
                                const FigureRecipe& recipe = {},
                                const std::vector<RowContributions>& contributions = {});
/// Rows have the columns that the figures have of them, but none of the tables.
KALMIA_EXPORT ReportPage PageOf(const O2PLSAnalysis& analysis, const Notes& notes, const FigureRecipe& recipe = {});

}  // namespace kalmia::analysis
