#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "kalmia/analysis/table/ReadOptions.h"
#include "kalmia/analysis/table/internal/CsvCells.h"

/// A table as a plain reader sees it, which goes through the text byte by byte, in the order in which it stands: the
/// witness of Table.
struct PlainTable {
  std::string refusal;  ///< the message, without the name of the text; what follows is good only if it is empty
  char separator = ',';
  bool decimalComma = false;
  std::vector<std::string> names;
  std::vector<std::vector<std::string>> rows;
  std::vector<std::size_t> lines;  ///< on which each row begins

  std::vector<std::string> missingWords;  ///< of the user

  kalmia::analysis::CellValue ValueOf(const std::string& cell) const;
  kalmia::analysis::ColumnKind KindOf(std::size_t column) const;
};

/// Reads a text without zero bytes.
PlainTable ReadPlainTable(const std::string& text, const kalmia::analysis::ReadOptions& options);
