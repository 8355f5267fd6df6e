#pragma once

#include <string>
#include <vector>

#include "app/Analysis.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/table/ReadOptions.h"

namespace kalmia::app {

class CommandOptions;

/// Declares --na, --skip-lines and --comment: options of every command that reads a table.
void DeclareReading(CommandOptions* command, ReadOptions* options);

/// What --separator and --decimal ask for: a word or the mark itself; empty where they are not given.
struct CsvMarkOptions {
  std::string separator;
  std::string decimal;

  bool Given() const { return !separator.empty() || !decimal.empty(); }
  AskedMarks Asked() const;
};

/// An option that takes a place for CSV, and that place; empty where it is not given.
struct CsvOption {
  const char* name;
  const std::string* place;
};

/// Declares --separator and --decimal to the parser, for all CSV that a command writes. They are refused unless one of
/// the options `csv` is given; a command without such options always writes CSV.
void DeclareCsvMarks(CommandOptions* command, CsvMarkOptions* options, const std::vector<CsvOption>& csv = {});

}  // namespace kalmia::app
