#pragma once

#include <string>
#include <vector>

#include "app/CsvText.h"
#include "app/Notes.h"
#include "app/SpectrumResult.h"

namespace kalmia::app {

/// The correlations and the power of each column, with what is largest of each.
std::string SpectrumText(const SpectrumResult& result);

/// The same as JSON, format kalmia-spectrum.
std::string SpectrumJson(const SpectrumResult& result, const Notes& notes);

/// correlation.csv and power.csv.
std::vector<CsvFile> SpectrumCsvFiles(const SpectrumResult& result, const CsvMarks& marks);

}  // namespace kalmia::app
