#pragma once

#include <string>
#include <string_view>

#include "app/CsvRecords.h"
#include "app/ReadOptions.h"

namespace kalmia::app {

/// How the records of a table are told apart. A byte order mark and the lines to be skipped are left out. A first line
/// "sep=;" names the separator, and is left out; otherwise it is the first of tab, semicolon and comma that divides the
/// header and the first row into the same number of fields, else the one that divides the header most.
/// Throws Failure (BadData) where there is no header, and where the bytes are no text that can be read: workbooks,
/// archives, UTF-16, UTF-32, zero bytes. `name` is how messages call the text.
CsvFormat DetectFormat(std::string_view text, const std::string& name, const ReadOptions& options);

}  // namespace kalmia::app
