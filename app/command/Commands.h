#pragma once

#include <string>

#include "app/Analysis.h"
#include "app/options/Options.h"
#include "kalmia/analysis/text/Notes.h"

namespace kalmia::app {

// One function for each subcommand: does the work, writes its files, and returns the text for standard output.
// Throws Failure, and leaves no file behind then. `notes` takes what it did of its own accord.

std::string RunCommand(const PLSOptions& options, Notes* notes);
std::string RunCommand(const PCAOptions& options, Notes* notes);
std::string RunCommand(const OPLSOptions& options, Notes* notes);
std::string RunCommand(const O2PLSOptions& options, Notes* notes);
std::string RunCommand(const CompareOptions& options, Notes* notes);
std::string RunCommand(const PredictOptions& options, Notes* notes);
std::string RunCommand(const FillOptions& options, Notes* notes);
std::string RunCommand(const FilterOptions& options, Notes* notes);
std::string RunCommand(const PreprocessOptions& options, Notes* notes);
std::string RunCommand(const InfoOptions& options, Notes* notes);
std::string RunCommand(const DescribeOptions& options, Notes* notes);
std::string RunCommand(const ClusterOptions& options, Notes* notes);
std::string RunCommand(const ChartOptions& options, Notes* notes);
std::string RunCommand(const HistogramOptions& options, Notes* notes);
std::string RunCommand(const FisherOptions& options, Notes* notes);
std::string RunCommand(const QuantileOptions& options, Notes* notes);
std::string RunCommand(const SpectrumOptions& options, Notes* notes);
/// The answer itself: there is nothing to do.
inline std::string RunCommand(const Answer& answer, Notes* /*notes*/) { return answer.text; }

}  // namespace kalmia::app
