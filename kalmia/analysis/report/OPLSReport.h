#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/Contributions.h"
#include "kalmia/analysis/report/CsvFile.h"
#include "kalmia/analysis/report/WrittenFiles.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/analysis/validation/OPLSAnalysis.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The text of a report: R2X, R2Y, Q2 and RMSECV by number of components, what was compared to choose the number, RMSEE
/// and RMSECV, CV-ANOVA; by component what it is, R2X, R2Y, Q2 with its limit and the verdict; what columns contribute
/// to rows that were asked for. `files` names what was written.
KALMIA_EXPORT std::string OPLSText(const OPLSAnalysis& analysis, const FitFiles& files,
                                   const std::vector<RowContributions>& contributions = {});

/// The same as JSON, format kalmia-opls.
KALMIA_EXPORT std::string OPLSJson(const Table& table, const OPLSAnalysis& analysis, const Notes& notes,
                                   const FitFiles& files,
                                   const std::vector<RowContributions>& contributions = {});

/// The CSV files; docs/command/opls.md describes them.
KALMIA_EXPORT std::vector<CsvFile> OPLSCsvFiles(const OPLSAnalysis& analysis, const CsvMarks& marks);

/// The names that they can have, before there is anything to write.
KALMIA_EXPORT std::vector<std::string> OPLSCsvFileNames();

}  // namespace kalmia::analysis
