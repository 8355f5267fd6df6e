#pragma once

#include <string>

#include "app/CsvTable.h"
#include "app/WrittenFiles.h"
#include "app/Notes.h"
#include "app/PCAOutcome.h"

namespace kalmia::app {

/// What `kalmia pca` prints: for each component R2X, Q2 with its limit and the verdicts, then loadings and scores by
/// name. `files` names what was written.
std::string PCAText(const PCAOutcome& outcome, const FitFiles& files);

/// The same as JSON, format kalmia-pca.
std::string PCAJson(const CsvTable& table, const PCAOutcome& outcome, const Notes& notes, const FitFiles& files);

}  // namespace kalmia::app
