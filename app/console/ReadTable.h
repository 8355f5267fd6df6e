#pragma once

#include <string>

#include "app/Analysis.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/table/ReadOptions.h"

namespace kalmia::app {

/// The table in a file, or on standard input where the name is "-"; unpacked first if it is a gzip file. Where that
/// takes long, a bar shows how much of it is done. Stops on Ctrl-C.
/// Throws BadFile when it cannot be read, BadData when it is no table, Stopped on Ctrl-C.
Table ReadTable(const std::string& file, const ReadOptions& options);

}  // namespace kalmia::app
