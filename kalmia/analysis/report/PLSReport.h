#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/fit/PLSResult.h"
#include "kalmia/analysis/report/CsvFile.h"
#include "kalmia/analysis/report/WrittenFiles.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The text of a report: for each component R2X, R2Y, Q2 with its limit and the verdict, then RMSEE and RMSECV.
/// `files` names what was written.
KALMIA_EXPORT std::string PLSText(const PLSResult& result, const FitFiles& files);

/// The same as JSON, format kalmia-pls.
KALMIA_EXPORT std::string PLSJson(const Table& table, const PLSResult& result, const Notes& notes,
                                  const FitFiles& files);

/// The CSV files, for a model that kept components: one line for each row or column of the table,
/// under its name.
KALMIA_EXPORT std::vector<CsvFile> PLSCsvFiles(const PLSResult& result, const CsvMarks& marks);

/// The names of these files, before there is a model.
KALMIA_EXPORT std::vector<std::string> PLSCsvFileNames();

}  // namespace kalmia::analysis
