#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "kalmia/analysis/table/internal/CsvRecords.h"

namespace kalmia::analysis {

/// The new content of a field, by the number of its record (0 is the header) and its place in the record, both from 0;
/// nothing for a field that stays.
using FieldReplacement = std::function<std::optional<std::string>(std::size_t record, std::size_t field)>;

/// The CSV text with some fields replaced. Everything else stays byte for byte: other fields with their quotation marks
/// and blanks, line ends, blank lines, comments, and all bytes before the first line that counts. Records and fields
/// are those of ForEachCsvRecord, which must read the text without failure; otherwise std::logic_error is thrown. New
/// content must need no quotation marks.
std::string WithFieldsReplaced(std::string_view text, const CsvFormat& format, const FieldReplacement& replacement);

}  // namespace kalmia::analysis
