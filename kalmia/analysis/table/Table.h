#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kalmia/analysis/table/CsvCells.h"
#include "kalmia/analysis/table/CsvRecords.h"
#include "kalmia/analysis/table/CsvRows.h"
#include "kalmia/analysis/table/ReadOptions.h"
#include "kalmia/analysis/table/TextBuffer.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// A table as its file has it: numbers by column, below a header of column names, and the text itself, from which texts
/// are read again when they are asked for. Rows and columns count from 0 here; messages count rows from 1, as a reader
/// does. No row or column number is checked.
class KALMIA_EXPORT Table {
 public:
  /// Bytes that a thread reads at once: few enough to stay in a cache and to be stopped soon.
  static constexpr std::size_t kBytesAtOnce = std::size_t{1} << 18U;

  /// Reads a CSV text, on all threads; the table does not depend on them, nor on `bytesAtOnce`. The separator is
  /// detected as DetectFormat says. With every one but the comma, decimal commas are detected too: they are taken where
  /// more cells are numbers with a comma than with a point. A column without a name is called after its place
  /// ("column 3"). `name` is how messages call the text. `progress` (may be null) moves from 0 to 1.
  /// Throws BadData: what DetectFormat refuses, no data rows, a row with another number of fields than the
  /// header, two columns of one name, quotation marks that do not pair up; Stopped on a stop of the progress.
  Table(TextBuffer text, const std::string& name, const ReadOptions& options = {}, NCProgress* progress = nullptr,
           std::size_t bytesAtOnce = kBytesAtOnce);

  const std::string& Name() const { return name_; }
  std::string_view Text() const { return text_.View(); }
  const CsvFormat& Format() const { return format_; }
  char Separator() const { return format_.separator; }
  bool DecimalComma() const { return cellFormat_.decimalComma; }
  /// Words for missing cells beside NA, NaN and nan.
  const std::vector<std::string>& MissingWords() const { return cellFormat_.missingWords; }
  int Rows() const { return static_cast<int>(rows_.Size()); }
  int Columns() const { return static_cast<int>(columnNames_.size()); }
  const std::vector<std::string>& ColumnNames() const { return columnNames_; }
  /// The column of that name, or -1.
  int Find(const std::string& columnName) const;
  const CsvColumn& Column(int column) const { return cells_.columns[static_cast<std::size_t>(column)]; }

  /// The texts of a row, without quotes. Goes through the row in the text.
  std::vector<std::string> RowTexts(int row) const;
  /// The text of one cell: goes through its row as far as the cell.
  std::string Cell(int row, int column) const;
  /// The texts of all cells of a column.
  std::vector<std::string> ColumnTexts(int column) const;
  /// What a cell with this text is.
  CellValue ValueOf(std::string_view cell) const { return ReadCell(cell, cellFormat_); }
  /// The line of the text on which a row begins.
  std::size_t Line(int row) const { return rows_.Line(static_cast<std::size_t>(row)); }
  /// "row 3 (line 4)": the place of a row for messages.
  std::string RowPlace(int row) const;

 private:
  /// Reads the header. The place where its last line ends.
  CsvPlace ReadHeader(const Proceed& proceed);
  std::size_t RowsInSample() const;
  void ReadRows(std::size_t bytesAtOnce, const Proceed& proceed);
  [[noreturn]] void RefuseRow(std::size_t row) const;

  std::string name_;
  TextBuffer text_;
  CsvFormat format_;
  CellFormat cellFormat_;
  std::vector<std::string> columnNames_;
  std::unordered_map<std::string, int> columnOf_;
  CsvRows rows_;
  CsvCells cells_;
};

}  // namespace kalmia::analysis
