#pragma once

#include <string>

#include "app/ChartResult.h"
#include "app/CsvMarks.h"
#include "app/Notes.h"

namespace kalmia::app {

/// What `kalmia chart` prints: the limits of each panel, the spreads they come from, and the signals.
std::string ChartText(const ChartResult& result);

std::string ChartJson(const ChartResult& result, const Notes& notes);

/// A line for each point: its rows, each series with its limits, the signals, with run rules also their names.
std::string ChartCsv(const ChartResult& result, const CsvMarks& marks);

}  // namespace kalmia::app
