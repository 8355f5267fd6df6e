#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/Contributions.h"
#include "kalmia/analysis/report/CsvFile.h"
#include "kalmia/analysis/report/WrittenFiles.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/analysis/validation/PCAAnalysis.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The text of a report: R2X and Q2 by number of components and what was compared to choose it; by component R2X, Q2
/// with its limit and the verdicts; then loadings and scores by name, and what columns contribute to rows that were
/// asked for. `files` names what was written.
KALMIA_EXPORT std::string PCAText(const PCAAnalysis& analysis, const FitFiles& files,
                                  const std::vector<RowContributions>& contributions = {});

/// The same as JSON, format kalmia-pca.
KALMIA_EXPORT std::string PCAJson(const Table& table, const PCAAnalysis& analysis, const Notes& notes,
                                  const FitFiles& files,
                                  const std::vector<RowContributions>& contributions = {});

/// The CSV files, for a fit that is usable: one line for each row or column of the table,
/// under its name.
KALMIA_EXPORT std::vector<CsvFile> PCACsvFiles(const PCAAnalysis& analysis, const CsvMarks& marks);

/// The names of these files, before there is a model.
KALMIA_EXPORT std::vector<std::string> PCACsvFileNames();

}  // namespace kalmia::analysis
