#pragma once

#include <string>

#include "kalmia/analysis/chart/ChartResult.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The text of a report: the limits of each panel, the spreads they come from, and the signals.
KALMIA_EXPORT std::string ChartText(const ChartResult& result);

KALMIA_EXPORT std::string ChartJson(const ChartResult& result);

/// A line for each point: its rows, each series with its limits, the signals, with run rules also their names.
KALMIA_EXPORT std::string ChartCsv(const ChartResult& result, const CsvMarks& marks);

}  // namespace kalmia::analysis
