#include "app/TableColumns.h"

#include <cmath>
#include <limits>

#include "app/CellNumber.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::app {

namespace {

constexpr auto kMissingCell = static_cast<float>(kMissing);

[[noreturn]] void Refuse(const CsvTable& table, const std::string& message) {
  throw Failure(ExitCode::BadData, table.Name() + ": " + message);
}

[[noreturn]] void RefuseCell(const CsvTable& table, int row, int column, CellKind kind) {
  const std::string_view cell = table.Cell(row, column);
  std::string what = Quoted(cell);
  if (kind == CellKind::Infinite) {
    what += " is infinite";
  } else if (kind == CellKind::TooLarge) {
    what += " is too large for single precision";
  } else if (ReadCell(cell, !table.DecimalComma()).kind == CellKind::Number) {
    what += table.DecimalComma() ? " is no number in a table with decimal commas"
                                 : " is no number in a table with decimal points";
    if (table.Separator() == ',') what += " (decimal commas take ; or tabs between the columns)";
  } else {
    what += " is not a number";
  }
  Refuse(table, table.RowPlace(row) + ", column " + Quoted(table.ColumnNames()[static_cast<std::size_t>(column)]) +
                    ": " + what);
}

}  // namespace

std::string SeparatorHint(const CsvTable& table) {
  if (table.Columns() > 1) return "";
  return "; the table has one column only, " + Quoted(table.ColumnNames().front()) +
         " (columns are separated by commas, ; or tabs)";
}

ColumnKind KindOfColumn(const CsvTable& table, int column) {
  bool words = false;
  bool infinities = false;
  for (int row = 0; row < table.Rows(); ++row) {
    const std::string_view cell = table.Cell(row, column);
    switch (ReadCell(cell, table.DecimalComma()).kind) {
      case CellKind::Missing: break;
      case CellKind::Infinite: infinities = true; break;
      case CellKind::Number:
      case CellKind::TooLarge: return ColumnKind::Numbers;
      case CellKind::Word:
        // A number with the other decimal mark makes a column of numbers too: it is refused then, not left out.
        if (ReadCell(cell, !table.DecimalComma()).kind == CellKind::Number) return ColumnKind::Numbers;
        words = true;
    }
  }
  if (words) return ColumnKind::Texts;
  return infinities ? ColumnKind::Numbers : ColumnKind::Empty;
}

std::vector<float> ReadNumbers(const CsvTable& table, int column, int* moved) {
  std::vector<float> numbers(static_cast<std::size_t>(table.Rows()), kMissingCell);
  for (int row = 0; row < table.Rows(); ++row) {
    const CellValue cell = ReadCell(table.Cell(row, column), table.DecimalComma());
    if (cell.kind == CellKind::Missing) continue;
    if (cell.kind != CellKind::Number) RefuseCell(table, row, column, cell.kind);
    float& number = numbers[static_cast<std::size_t>(row)];
    number = cell.value;
    if (number == kMissingCell) {
      number = std::nextafter(kMissingCell, std::numeric_limits<float>::lowest());
      ++*moved;
    }
  }
  return numbers;
}

NCDataMatrix<float> MatrixOf(const std::vector<std::vector<float>>& columns, int rows) {
  NCDataMatrix<float> matrix(rows, static_cast<int>(columns.size()));
  for (int c = 1; c <= matrix.SizeColumns(); ++c) {
    const std::vector<float>& cells = columns[static_cast<std::size_t>(c) - 1];
    for (int r = 1; r <= rows; ++r) matrix(r, c, cells[static_cast<std::size_t>(r) - 1]);
  }
  return matrix;
}

void NoteMovedCells(int moved, Notes* notes) {
  if (moved == 0) return;
  notes->Add(Counted(static_cast<std::size_t>(moved), "cell") + " measured as -99 " + (moved == 1 ? "is" : "are") +
             " taken as -99.0000076: -99 itself marks missing cells inside");
}

int RequireColumn(const CsvTable& table, const std::string& name) {
  const int column = table.Find(name);
  if (column < 0) Refuse(table, "there is no column " + Quoted(name) + SeparatorHint(table));
  return column;
}

std::vector<std::string> RowNames(const CsvTable& table, int column) {
  std::vector<std::string> names;
  names.reserve(static_cast<std::size_t>(table.Rows()));
  for (int row = 0; row < table.Rows(); ++row) {
    names.push_back(column < 0 ? std::to_string(row + 1) : std::string(table.Cell(row, column)));
  }
  return names;
}

std::vector<std::string> RowPlaces(const CsvTable& table, int column) {
  std::vector<std::string> places;
  places.reserve(static_cast<std::size_t>(table.Rows()));
  for (int row = 0; row < table.Rows(); ++row) {
    places.push_back(table.RowPlace(row) + (column < 0 ? "" : ", " + Quoted(table.Cell(row, column))));
  }
  return places;
}

}  // namespace kalmia::app
