#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/Notes.h"

namespace kalmia::analysis {

/// For each column of the table whether its cells are written as numbers. The column `idColumn`, which names the rows,
/// is written as text; -1 for none.
std::vector<bool> ColumnsOfNumbers(const Table& table, int idColumn);

/// Adds the text of a cell as it is. In a column of numbers a number takes the decimal mark of the CSV text, and one of
/// the user's words for a missing cell becomes an empty field.
void AddTableCell(const Table& table, std::string text, bool isOfNumbers, CsvText* csv);

/// The new number of a cell, by row and column, both from 0; nothing for a cell that stays.
using NewCell = std::function<std::optional<double>(int row, int column)>;

/// The text of the table with new numbers in some cells, in as few digits as bring the same number back. If the table
/// has a text and no marks are asked for, every other byte stays, and the numbers have the decimal mark of the table;
/// otherwise the table is written anew with the marks and LF. The column `id` names the rows; it may be empty. A note
/// counts the cells among numbers that only a reader with the user's words takes as missing.
/// `progress` may be null; throws Stopped where the bar wants to stop.
std::string WithNewCells(const Table& table, const std::string& id, const AskedMarks& marks,
                         const NewCell& newCell, Notes* notes, NCProgress* progress);

}  // namespace kalmia::analysis
