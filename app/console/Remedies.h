#pragma once

#include <string>

#include "app/Analysis.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Notes.h"

namespace kalmia::app {

/// What the failure of a subcommand says, and by which option it may be helped; for a request that makes no sense also
/// where the help is.
std::string MessageOf(const Failure& failure, const std::string& command);

/// The notes, each followed by the option that may help.
Notes WithRemedies(const Notes& notes);

}  // namespace kalmia::app
