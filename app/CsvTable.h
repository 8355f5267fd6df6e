#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kalmia::app {

/// A table as its file has it: texts in rows and columns, below a header of column names. Rows and columns count from 0
/// here; messages count rows from 1, as a reader does. No row or column number is checked.
class CsvTable {
 public:
  /// Reads a CSV text. The separator is detected: the first of tab, semicolon and comma that divides the header and the
  /// first row into the same number of fields, else the one that divides the header most. A byte order mark is dropped.
  /// With tabs and semicolons, decimal commas are detected too: they are taken where more cells are numbers with a
  /// comma than with a point. A column without a name is called after its place ("column 3").
  /// Throws Failure (BadData): empty, no data rows, a row with another number of fields than the header, two columns of
  /// one name, quotation marks that do not pair up, zero bytes or UTF-16. `name` is how messages call the text.
  CsvTable(std::string_view text, const std::string& name);

  const std::string& Name() const { return name_; }
  char Separator() const { return separator_; }
  bool DecimalComma() const { return decimalComma_; }
  int Rows() const { return static_cast<int>(lines_.size()); }
  int Columns() const { return static_cast<int>(columnNames_.size()); }
  const std::vector<std::string>& ColumnNames() const { return columnNames_; }
  /// The column of that name, or -1.
  int Find(const std::string& columnName) const;
  /// The text of a cell, without quotes.
  std::string_view Cell(int row, int column) const;
  /// "row 3 (line 4)": the place of a row for messages.
  std::string RowPlace(int row) const;

 private:
  void DetectSeparator(std::string_view text);
  void Read(std::string_view text);
  void TakeHeader(const std::vector<std::string>& fields);
  void TakeRow(const std::vector<std::string>& fields, int line);
  void DetectDecimalComma();

  std::string name_;
  char separator_ = ',';
  bool decimalComma_ = false;
  std::vector<std::string> columnNames_;
  std::unordered_map<std::string, int> columnOf_;
  std::string cells_;              ///< the texts of all cells, row by row, without gaps
  std::vector<std::size_t> ends_;  ///< where in cells_ each cell ends
  std::vector<int> lines_;         ///< the line of the file on which each row begins
};

}  // namespace kalmia::app
