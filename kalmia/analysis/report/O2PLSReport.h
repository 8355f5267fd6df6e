#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/report/CsvFile.h"
#include "kalmia/analysis/report/WrittenFiles.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/analysis/validation/O2PLSAnalysis.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The text of a report: all components that were tried with their verdicts, where cross-validation has judged them; by
/// refits the errors of left-out rows; joint, unique and remaining variation of each block, what the predictions
/// describe, then loadings and scores by name. `files` names what was
/// written.
KALMIA_EXPORT std::string O2PLSText(const O2PLSAnalysis& analysis, const FitFiles& files);

/// The same as JSON, format kalmia-o2pls.
KALMIA_EXPORT std::string O2PLSJson(const O2PLSAnalysis& analysis, const Notes& notes, const FitFiles& files);

/// The CSV files; docs/command/o2pls.md describes them. `analysis.fit` has a model.
KALMIA_EXPORT std::vector<CsvFile> O2PLSCsvFiles(const O2PLSAnalysis& analysis, const CsvMarks& marks);

/// Their names, before there is anything to write.
KALMIA_EXPORT std::vector<std::string> O2PLSCsvFileNames();

}  // namespace kalmia::analysis
