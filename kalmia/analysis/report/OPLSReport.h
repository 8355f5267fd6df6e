#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/fit/OPLSResult.h"
#include "kalmia/analysis/report/CsvFile.h"
#include "kalmia/analysis/report/WrittenFiles.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The text of a report: for each component what it is, R2X, R2Y, Q2 with its limit and the verdict, then RMSEE
/// and RMSECV. `files` names what was written.
KALMIA_EXPORT std::string OPLSText(const OPLSResult& result, const FitFiles& files);

/// The same as JSON, format kalmia-opls.
KALMIA_EXPORT std::string OPLSJson(const Table& table, const OPLSResult& result, const Notes& notes,
                                   const FitFiles& files);

/// The CSV files; docs/command/opls.md describes them. `result` has a model.
KALMIA_EXPORT std::vector<CsvFile> OPLSCsvFiles(const OPLSResult& result, const CsvMarks& marks);

/// Their names, before there is anything to write.
KALMIA_EXPORT std::vector<std::string> OPLSCsvFileNames();

}  // namespace kalmia::analysis
