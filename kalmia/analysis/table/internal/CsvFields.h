#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "kalmia/analysis/table/internal/CsvRecords.h"

namespace kalmia::analysis {

/// What a field is to become, by the number of its record (0 is the header) and its place in it, both from 0; nothing
/// for a field that stays.
using FieldReplacement = std::function<std::optional<std::string>(std::size_t record, std::size_t field)>;

/// The CSV text with some fields replaced, everything else byte for byte: other fields with their quotation marks and
/// blanks, line ends, blank lines, comments, and what stands in front of the first line that counts, a byte order mark
/// too. Records and fields are those of ForEachCsvRecord, which has to read the text without failure; std::logic_error
/// otherwise. What replaces a field must need no quotation marks.
std::string WithFieldsReplaced(std::string_view text, const CsvFormat& format, const FieldReplacement& replacement);

}  // namespace kalmia::analysis
