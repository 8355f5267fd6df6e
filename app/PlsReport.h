#pragma once

#include <string>
#include <vector>

#include "app/CsvTable.h"
#include "app/Notes.h"
#include "app/PlsOutcome.h"

namespace kalmia::app {

/// What `kalmia pls` prints: for each component R2X, R2Y, Q2 with its limit and the verdict, then RMSEE and RMSECV.
/// `saved` and `csvFiles` name what was written.
std::string PlsText(const PlsOutcome& outcome, const std::string& saved, const std::vector<std::string>& csvFiles);

/// The same as JSON, format kalmia-pls.
std::string PlsJson(const CsvTable& table, const PlsOutcome& outcome, const Notes& notes, const std::string& saved,
                    const std::vector<std::string>& csvFiles);

}  // namespace kalmia::app
