#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/table/Table.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

KALMIA_EXPORT ColumnKind KindOfColumn(const Table& table, int column);

/// What counts as missing in the table, for messages about a word: "; missing cells are empty or NA, ...". They end
/// with it, for Remedy::NameMissingWords.
KALMIA_EXPORT std::string MissingWordsHint(const Table& table);

/// What to look at where a name is not found in a table that turned out to have one column only; empty for any other.
KALMIA_EXPORT std::string SeparatorHint(const Table& table);

/// The cells of a column as numbers; a missing one is NaN.
/// Throws BadData with row, column and text of a cell that is neither a number nor missing, infinite or
/// beyond the largest float. Such cells are known as the strays of the column.
KALMIA_EXPORT std::vector<double> ReadNumbers(const Table& table, int column);

/// The same with strays taken for missing cells.
KALMIA_EXPORT std::vector<double> NumbersBesideStrays(const Table& table, int column);

/// The column of that name. Throws BadData if there is none, with the name that was probably meant.
KALMIA_EXPORT int RequireColumn(const Table& table, const std::string& name);

/// The columns that the arguments of an option name, in their order: each argument names columns and ranges with commas
/// between them. "FIRST..LAST" is a range in the order of the table, both included. Names may hold commas and dots: of
/// what can be read in more than one way, the longest name or range from the left is taken, and a name before a range.
/// Throws BadData if a name is not in the table or a column comes twice, or if LAST stands before FIRST.
KALMIA_EXPORT std::vector<int> RequireColumns(const Table& table, const std::vector<std::string>& arguments);

/// Those that arguments that exclude columns name, in the same way; a column that is named again changes nothing.
KALMIA_EXPORT std::vector<int> ColumnsToExclude(const Table& table, const std::vector<std::string>& arguments);

/// As RequireColumns; without any argument all columns.
KALMIA_EXPORT std::vector<int> RequireColumnsOrAll(const Table& table, const std::vector<std::string>& arguments);

/// The text of a cell that names a group or a class; empty where the cell counts as missing.
KALMIA_EXPORT std::string LabelOf(const Table& table, int row, int column);

/// Names for the rows: the texts of the column, or the numbers from 1 where `column` is -1.
KALMIA_EXPORT std::vector<std::string> RowNames(const Table& table, int column);

/// "row 3 (line 4), 'tank 7'": how messages call the rows, the text of the column behind their place; without one
/// where `column` is -1. Two rows never have the same, whatever the column holds.
KALMIA_EXPORT std::vector<std::string> RowPlaces(const Table& table, int column);

}  // namespace kalmia::analysis
