#pragma once

#include <string>
#include <string_view>

#include "kalmia/analysis/table/ReadOptions.h"
#include "kalmia/analysis/table/internal/CsvRecords.h"

namespace kalmia::analysis {

/// Whether the separator is one of those that DetectFormat looks for: tab, semicolon and comma. Others have to be named
/// by a line of the text.
bool IsDetected(char separator);

/// Finds how the records of a table are divided. A byte order mark and the lines to be skipped are left out. Where the
/// next line that is neither blank nor a comment is "sep=;", it names the separator and is left out too (capitals,
/// quotes and further separators after it do not matter). The separator may be a tab, and any punctuation except
/// quotation marks and . + - _.
/// Otherwise the separator is the first of tab, semicolon and comma that divides the header and the first row into the
/// same number of fields, else the one that divides the header most.
/// Throws BadData where there is no header, where the separator that is named begins comments, and where the
/// bytes are no text that can be read (see RefuseOtherThanText). `name` is how messages call the text.
CsvFormat DetectFormat(std::string_view text, const std::string& name, const ReadOptions& options);

}  // namespace kalmia::analysis
