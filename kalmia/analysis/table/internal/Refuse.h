#pragma once

#include <string>
#include <utility>

#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

// Places of failures; rows count from 0 here, as those of a table do.
inline FailurePlace InRow(int row) { return {row + 1}; }
inline FailurePlace InColumn(std::string column) { return {{}, std::move(column)}; }
inline FailurePlace InCell(int row, std::string column, std::string word = {}) {
  return {row + 1, std::move(column), std::move(word)};
}
/// A name that the table does not have, or that does not tell one thing.
inline FailurePlace AtWord(std::string word) { return {{}, {}, std::move(word)}; }

/// Throws BadData that names the table.
[[noreturn]] inline void Refuse(const Table& table, const std::string& message, FailurePlace place = {}) {
  throw BadData(table.Name() + ": " + message, std::move(place));
}

/// Throws BadData that names table, row, column, and what is wrong with the cell.
[[noreturn]] inline void RefuseCell(const Table& table, int row, int column, const std::string& what,
                                    Remedy remedy = Remedy::None) {
  const std::string& name = table.ColumnNames()[static_cast<std::size_t>(column)];
  throw BadData(table.Name() + ": " + table.RowPlace(row) + ", column " + Quoted(name) + ": " + what, remedy,
                InCell(row, name, table.Cell(row, column)));
}

}  // namespace kalmia::analysis
