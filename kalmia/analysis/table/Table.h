#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

#include "kalmia/analysis/table/CsvColumn.h"
#include "kalmia/analysis/table/ReadOptions.h"
#include "kalmia/analysis/table/SharedWork.h"
#include "kalmia/analysis/table/TextBuffer.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

struct CsvFormat;
struct CsvPlace;

/// A column in memory: numbers, where NaN is a hole, or texts, where an empty one, NA, NaN and nan are missing as they
/// are in a file.
struct NamedColumn {
  std::string name;
  std::variant<std::vector<double>, std::vector<std::string>> cells;
};

/// A table by columns: one that was read from a CSV text, from which texts are read again when they are asked for, or
/// one of columns in memory. Rows and columns count from 0 here; messages count rows from 1, as a reader does. No row
/// or column number is checked.
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
  /// Takes over columns of as many cells each; one without a name is called after its place. Numbers are the table's as
  /// they are, infinite ones and those beyond the largest float are strays. `name` is how messages call the table.
  /// Throws BadData: no column, no row, columns of different lengths, two columns of one name.
  Table(std::vector<NamedColumn> columns, const std::string& name);
  Table(Table&& other) noexcept;
  Table& operator=(Table&& other) noexcept;
  ~Table();

  const std::string& Name() const { return name_; }
  /// Whether the table was read from a text: then it has the text, its format and lines.
  bool HasText() const { return given_.empty(); }
  std::string_view Text() const { return text_.View(); }
  /// How the text is divided, for this library's own writers of tables.
  const CsvFormat& Format() const;
  char Separator() const;
  bool DecimalComma() const { return decimalComma_; }
  /// Words for missing cells beside NA, NaN and nan.
  const std::vector<std::string>& MissingWords() const { return missingWords_; }
  int Rows() const { return rowCount_; }
  int Columns() const { return static_cast<int>(columnNames_.size()); }
  const std::vector<std::string>& ColumnNames() const { return columnNames_; }
  /// The column of that name, or -1.
  int Find(const std::string& columnName) const;
  const CsvColumn& Column(int column) const { return columns_[static_cast<std::size_t>(column)]; }

  /// The texts of a row, without quotes. Goes through the row in the text. The text of a number in memory has as few
  /// digits as bring it back.
  std::vector<std::string> RowTexts(int row) const;
  /// The text of one cell: goes through its row as far as the cell.
  std::string Cell(int row, int column) const;
  /// The texts of all cells of a column.
  std::vector<std::string> ColumnTexts(int column) const;
  /// The line of the text on which a row begins; 0 without a text.
  std::size_t Line(int row) const;
  /// "row 3 (line 4)": the place of a row for messages; "row 3" without a text.
  std::string RowPlace(int row) const;

 private:
  /// Throws BadData where two are the same.
  void TakeNames(std::vector<std::string> names, const Proceed& proceed);
  std::string GivenText(int row, int column) const;
  void PointToNumbers(const NamedColumn& given, CsvColumn* column);
  /// Reads the header. The place where its last line ends.
  CsvPlace ReadHeader(const Proceed& proceed);
  std::size_t RowsInSample() const;
  void ReadRows(std::size_t bytesAtOnce, const Proceed& proceed);
  [[noreturn]] void RefuseRow(std::size_t row) const;

  struct Csv;

  std::string name_;
  TextBuffer text_;
  std::unique_ptr<Csv> csv_;  ///< the format of the text, and where its rows begin
  bool decimalComma_ = false;
  std::vector<std::string> missingWords_;
  std::vector<std::string> columnNames_;
  std::unordered_map<std::string, int> columnOf_;
  std::unique_ptr<double[]> numbers_;  ///< of a table with a text; its columns point to them
  std::vector<CsvColumn> columns_;
  std::vector<NamedColumn> given_;  ///< of a table without a text; its columns point to their numbers
  std::vector<std::vector<double>> besideStrays_;  ///< given numbers of columns with strays, which are NaN, or with none
  int rowCount_ = 0;
};

}  // namespace kalmia::analysis
