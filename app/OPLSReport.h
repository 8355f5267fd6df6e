#pragma once

#include <string>

#include "app/CsvTable.h"
#include "app/WrittenFiles.h"
#include "app/Notes.h"
#include "app/OPLSOutcome.h"

namespace kalmia::app {

/// What `kalmia opls` prints: for each component what it is, R2X, R2Y, Q2 with its limit and the verdict, then RMSEE
/// and RMSECV. `files` names what was written.
std::string OPLSText(const OPLSOutcome& outcome, const FitFiles& files);

/// The same as JSON, format kalmia-opls.
std::string OPLSJson(const CsvTable& table, const OPLSOutcome& outcome, const Notes& notes, const FitFiles& files);

}  // namespace kalmia::app
