#pragma once

#include "app/Analysis.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::app {

/// What the command's exit code says. A stop by Ctrl-C gives the shells' own code for it, 128 + SIGINT; for stops by
/// other signals see ExitStatus.
enum class ExitCode { Success = 0, BadData = 1, Usage = 2, Files = 3, Stopped = 130 };

/// The code for each kind of failure.
ExitCode ExitCodeOf(const Failure& failure);

}  // namespace kalmia::app
