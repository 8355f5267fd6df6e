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

/// For each column of the table whether its cells are numbers, which are written with the decimal mark of the CSV text.
/// The column `idColumn`, which names the rows, holds texts; -1 for none.
std::vector<bool> ColumnsOfNumbers(const Table& table, int idColumn);

/// Adds a cell of the table, given by its text, as it is; but in a column of numbers, a number with the decimal mark of
/// the CSV text, and one of the user's words for a missing cell as an empty field, which needs none of them.
void AddTableCell(const Table& table, std::string text, bool isOfNumbers, CsvText* csv);

/// The number that a cell is to become, by its row and its column, both from 0; nothing for a cell that stays.
using NewCell = std::function<std::optional<double>(int row, int column)>;

/// The text of the table with some cells as other numbers, with as few digits as bring the same number back. Where no
/// marks are asked for and the table has a text, every other byte stays and the numbers have the decimal mark of the
/// table; otherwise the table is written anew with the marks, lines ending with LF. Rows are named by the column `id`,
/// or by none where that is empty. A note tells how many cells among numbers stay missing by the user's words alone.
/// `progress` may be null; throws Stopped where the bar wants to stop.
std::string WithNewCells(const Table& table, const std::string& id, const AskedMarks& marks,
                         const NewCell& newCell, Notes* notes, NCProgress* progress);

}  // namespace kalmia::analysis
