#pragma once

#include <string>

#include "kalmia/analysis/chart/HistogramResult.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The first bins, one line each, with a bar as long as they are full.
KALMIA_EXPORT std::string HistogramText(const HistogramResult& histogram);

/// All bins as JSON, format kalmia-histogram.
KALMIA_EXPORT std::string HistogramJson(const HistogramResult& histogram);

/// A line for each bin: its edges and centre, how many values it holds, and their rows.
KALMIA_EXPORT std::string HistogramCsv(const HistogramResult& histogram, const CsvMarks& marks);

}  // namespace kalmia::analysis
