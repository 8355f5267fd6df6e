// Feeds texts to the reader of tables. What is accepted has a cell in every row and column, and is the same table again
// when it is written field by field.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "app/console/ExitCode.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/table/internal/CellNumber.h"
#include "kalmia/analysis/table/internal/CsvRecords.h"

using kalmia::analysis::Table;

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

/// The table as a CSV text with commas, behind a byte order mark, so that a name may begin with one.
std::string TextOf(const Table& table) {
  std::string text = "\xEF\xBB\xBF";
  const auto append = [&](std::string_view field, int column) {
    text += kalmia::analysis::CsvField(field);
    text += column + 1 < table.Columns() ? ',' : '\n';
  };
  for (int column = 0; column < table.Columns(); ++column)
    append(table.ColumnNames()[static_cast<std::size_t>(column)], column);
  for (int row = 0; row < table.Rows(); ++row)
    for (int column = 0; column < table.Columns(); ++column) append(table.Cell(row, column), column);
  return text;
}

void RequireTheSameFromItsText(const Table& a) try {
  const Table b(TextOf(a), "again", {}, nullptr, /*bytesAtOnce=*/7);
  Require(a.ColumnNames() == b.ColumnNames() && a.Rows() == b.Rows());
  for (int row = 0; row < a.Rows(); ++row)
    for (int column = 0; column < a.Columns(); ++column) Require(a.Cell(row, column) == b.Cell(row, column));
} catch (const kalmia::analysis::Failure&) {
  Require(false);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) try {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const Table table(text, "table");
  Require(table.Rows() > 0 && table.Columns() > 0);
  for (int row = 0; row < table.Rows(); ++row) {
    Require(!table.RowPlace(row).empty());
    for (int column = 0; column < table.Columns(); ++column)
      for (const bool decimalComma : {false, true}) kalmia::analysis::ReadCell(table.Cell(row, column), decimalComma);
  }
  if (table.Columns() > 1) RequireTheSameFromItsText(table);
  return 0;
} catch (const kalmia::analysis::Failure& failure) {
  Require(kalmia::app::ExitCodeOf(failure) == kalmia::app::ExitCode::BadData);
  return 0;
}
