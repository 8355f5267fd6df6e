#pragma once

#include <string>

#include "app/Notes.h"
#include "app/Options.h"

namespace kalmia::app {

// One function for each subcommand: does the work, writes its files, and returns the text for standard output.
// Throws Failure, and leaves no file behind then.

std::string RunPls(const PlsOptions& options, Notes* notes);
std::string RunPredict(const PredictOptions& options, Notes* notes);
std::string RunInfo(const InfoOptions& options);
std::string RunDescribe(const DescribeOptions& options, Notes* notes);

}  // namespace kalmia::app
