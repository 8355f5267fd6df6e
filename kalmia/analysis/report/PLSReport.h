#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/Contributions.h"
#include "kalmia/analysis/report/CsvFile.h"
#include "kalmia/analysis/report/WrittenFiles.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/analysis/validation/Analysis.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The text of a report: R2X, R2Y, Q2 and RMSECV by number of components, what was compared to choose the number, RMSEE
/// and RMSECV, CV-ANOVA; by component R2X, R2Y, Q2 with its limit and the verdict; what columns contribute to rows that
/// were asked for. `files` names what was written.
KALMIA_EXPORT std::string PLSText(const PLSAnalysis& analysis, const FitFiles& files,
                                  const std::vector<RowContributions>& contributions = {});

/// The same as JSON, format kalmia-pls.
KALMIA_EXPORT std::string PLSJson(const Table& table, const PLSAnalysis& analysis, const Notes& notes,
                                  const FitFiles& files,
                                  const std::vector<RowContributions>& contributions = {});

/// The CSV files, for a fit that is usable: one line for each row or column of the table, under its name.
KALMIA_EXPORT std::vector<CsvFile> PLSCsvFiles(const PLSAnalysis& analysis, const CsvMarks& marks);

/// The names of these files, before there is a model.
KALMIA_EXPORT std::vector<std::string> PLSCsvFileNames();

}  // namespace kalmia::analysis
