#pragma once

#include <string>

namespace kalmia::app {

class CommandOptions;

/// What stands between the fields of a CSV text, and within its numbers.
struct CsvMarks {
  char separator = ',';
  char decimal = '.';
};

/// What --separator and --decimal ask for: a word or the mark itself; empty where they are not given.
struct CsvMarkOptions {
  std::string separator;
  std::string decimal;

  bool Given() const { return !separator.empty() || !decimal.empty(); }
};

/// Declares --separator and --decimal to the parser, for all CSV that a command writes.
void DeclareCsvMarks(CommandOptions* command, CsvMarkOptions* options);

/// The marks that are asked for, otherwise those of `otherwise`. Where both would be commas, the one that is not asked
/// for gives way: the separator becomes a semicolon, or the decimal mark a point.
CsvMarks MarksOf(const CsvMarkOptions& options, const CsvMarks& otherwise = {});

}  // namespace kalmia::app
