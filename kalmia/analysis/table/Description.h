#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "kalmia/analysis/table/ColumnMoments.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// A cell among numbers that is none: text, or infinite, or beyond single precision.
struct StrayWord {
  std::string text;  ///< its beginning
  int row = 0;       ///< from 1
  std::size_t line = 0;  ///< of the text; 0 without one
};

/// What is told of one column.
struct ColumnDescription {
  std::string name;
  int missing = 0;
  int words = 0;
  std::vector<StrayWord> firstWords;
  ColumnMoments moments;

  bool IsConstant() const { return moments.n > 0 && moments.min == moments.max; }
  bool IsEmpty() const { return moments.n == 0 && words == 0; }
};

/// What is told of a table.
struct KALMIA_EXPORT Description {
  std::string table;
  int rows = 0;
  std::size_t allColumns = 0;              ///< of numbers and of texts
  std::vector<ColumnDescription> columns;  ///< all but those of text
  std::vector<std::string> textColumns;
  Notes notes;                             ///< what may be wrong with the separator

  // Names of columns.
  std::vector<std::string> Constant() const;
  std::vector<std::string> Empty() const;
  bool HasWords() const;
};

/// Describes each column of the table, on all threads. `progress` may be null.
/// Throws BadData where every cell is missing, Stopped where the bar wants to stop.
KALMIA_EXPORT Description Describe(const Table& table, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
