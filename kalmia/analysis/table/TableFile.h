#pragma once

#include <string>

#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/table/ReadOptions.h"
#include "kalmia/analysis/table/TextBuffer.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// The table in the bytes of a CSV file, unpacked first if they are those of a gzip file. `name` is how messages call
/// it. `progress` (may be null) moves from 0 to 1. Throws BadData where they are no table (see Table) or a damaged
/// gzip file, Stopped on a stop of the progress.
KALMIA_EXPORT Table TableOfBytes(TextBuffer bytes, const std::string& name, const ReadOptions& options = {},
                      NCProgress* progress = nullptr);

/// The table in a CSV file, unpacked first if it is a gzip file. Its name in messages is the path. `progress` (may be
/// null) is asked while the file is read, and moves from 0 to 1 while it is understood.
/// Throws BadFile where the file cannot be read, otherwise as TableOfBytes.
KALMIA_EXPORT Table ReadTableFile(const std::string& path, const ReadOptions& options = {},
                                     NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
