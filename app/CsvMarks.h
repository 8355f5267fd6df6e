#pragma once

#include <string>
#include <vector>

#include "app/Notes.h"

namespace kalmia::app {

class CommandOptions;
class CsvTable;

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

/// An option behind which a place of CSV stands; empty where it is not given.
struct CsvOption {
  const char* name;
  const std::string* place;
};

/// Declares --separator and --decimal to the parser, for all CSV that a command writes. They are refused where none of
/// the options is given with which it does; without such options it always does.
void DeclareCsvMarks(CommandOptions* command, CsvMarkOptions* options, const std::vector<CsvOption>& csv = {});

/// The marks that are asked for, otherwise those of `otherwise`. Where both would be commas, the one that is not asked
/// for gives way: the separator becomes a semicolon, or the decimal mark a point.
CsvMarks MarksOf(const CsvMarkOptions& options, const CsvMarks& otherwise = {});

/// Notes where the decimal commas of a table that is written anew give way so.
void NoteDecimalsThatGiveWay(const CsvMarkOptions& options, const CsvTable& table, Notes* notes);

}  // namespace kalmia::app
