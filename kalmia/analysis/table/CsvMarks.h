#pragma once

#include <optional>

#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

class Table;

/// What stands between the fields of a CSV text, and within its numbers.
struct CsvMarks {
  char separator = ',';
  char decimal = '.';
};

/// The marks that somebody asks for: comma, semicolon or tab; point or comma.
struct AskedMarks {
  std::optional<char> separator;
  std::optional<char> decimal;

  bool Any() const { return separator.has_value() || decimal.has_value(); }
};

/// The marks that are asked for, otherwise those of `otherwise`. Where both would be commas, the one that is not asked
/// for gives way: the separator becomes a semicolon, or the decimal mark a point.
KALMIA_EXPORT CsvMarks MarksOf(const AskedMarks& asked, const CsvMarks& otherwise = {});

/// Notes where the decimal commas of a table that is written anew give way so.
KALMIA_EXPORT void NoteDecimalsThatGiveWay(const AskedMarks& asked, const Table& table, Notes* notes);

}  // namespace kalmia::analysis
