#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kalmia::app {

/// One record of a CSV text: its fields without quotes, and the line of the text on which it begins, from 1.
struct CsvRecord {
  std::vector<std::string> fields;
  int line = 0;
};

/// Hands the records of a CSV text to `take` one after the other, until that returns false. The same object is used
/// for all of them. Fields may be quoted ("" inside stands for a quotation mark) and then hold separators and line
/// ends; lines end with LF, CRLF or CR; blanks around unquoted fields are dropped, blank lines passed over.
/// Throws Failure (BadData) with the line where a quotation mark stands inside an unquoted field, something follows a
/// closing one, or one is never closed; `name` is how messages call the text.
void ForEachCsvRecord(std::string_view text, char separator, const std::string& name,
                      const std::function<bool(const CsvRecord&)>& take);

/// The text as one field of a CSV line, quoted where it has to be.
std::string CsvField(std::string_view text);

}  // namespace kalmia::app
