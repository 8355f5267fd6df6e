#pragma once

#include <string>
#include <variant>

#include "app/options/ClusterOptions.h"
#include "app/options/CompareOptions.h"
#include "app/options/ModelOptions.h"
#include "app/options/PreprocessOptions.h"
#include "app/options/StatisticsOptions.h"
#include "app/options/TableOptions.h"

namespace kalmia::app {

struct InfoOptions {
  std::string model;
  bool digest = false;
  bool json = false;
};

struct DescribeOptions {
  std::string table;
  ReadOptions reading;
  bool json = false;
};

/// A text that answers the command line by itself: --help or --version.
struct Answer {
  std::string text;
};

using Command = std::variant<PLSOptions, PCAOptions, OPLSOptions, O2PLSOptions, PredictOptions, FillOptions,
                             FilterOptions, PreprocessOptions, InfoOptions, DescribeOptions, ClusterOptions,
                             ChartOptions, HistogramOptions, FisherOptions, QuantileOptions, SpectrumOptions,
                             CompareOptions, Answer>;

/// Reads the command line. Throws BadRequest with one line for anything that makes no sense.
Command ParseCommandLine(int argc, const char* const* argv);

}  // namespace kalmia::app
