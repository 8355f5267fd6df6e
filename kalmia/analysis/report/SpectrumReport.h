#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/chart/SpectrumResult.h"
#include "kalmia/analysis/report/CsvFile.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The correlations and the power of each column, with what is largest of each.
KALMIA_EXPORT std::string SpectrumText(const SpectrumResult& result);

/// The same as JSON, format kalmia-spectrum.
KALMIA_EXPORT std::string SpectrumJson(const SpectrumResult& result);

/// correlation.csv and power.csv.
KALMIA_EXPORT std::vector<CsvFile> SpectrumCsvFiles(const SpectrumResult& result, const CsvMarks& marks);

/// Their names, before there is anything to write.
KALMIA_EXPORT std::vector<std::string> SpectrumCsvFileNames();

}  // namespace kalmia::analysis
