#pragma once

#include <string>

#include "kalmia/analysis/table/CsvTable.h"
#include "kalmia/analysis/table/ReadOptions.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// The table in a CSV file, unpacked first if it is a gzip file. Its name in messages is the path. `progress` (may be
/// null) is asked while the file is read, and moves from 0 to 1 while it is understood.
/// Throws BadFile where the file cannot be read, BadData where it is no table (see CsvTable) or a damaged gzip file,
/// Stopped on a stop of the progress.
CsvTable ReadTableFile(const std::string& path, const ReadOptions& options = {}, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
