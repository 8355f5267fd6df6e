#include "kalmia/analysis/table/TableColumns.h"

#include "kalmia/analysis/table/internal/CellNumber.h"
#include "kalmia/analysis/table/internal/ReadTableCell.h"
#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/NearestName.h"

namespace kalmia::analysis {

namespace {

[[noreturn]] void RefuseStray(const Table& table, int row, int column) {
  const std::string cell = table.Cell(row, column);
  const CellKind kind = ReadTableCell(table, cell).kind;
  std::string what = Quoted(cell);
  Remedy remedy = Remedy::None;
  if (kind == CellKind::Infinite) {
    what += " is infinite";
  } else if (kind == CellKind::TooLarge) {
    what += " is too large for single precision";
  } else if (IsNumber(ReadCell(cell, !table.DecimalComma()).kind)) {
    what += table.DecimalComma() ? " is no number in a table with decimal commas"
                                 : " is no number in a table with decimal points";
    if (table.Separator() == ',') what += " (decimal commas take ; or tabs between the columns)";
  } else {
    what += " is not a number" + MissingWordsHint(table);
    remedy = Remedy::NameMissingWords;
  }
  RefuseCell(table, row, column, what, remedy);
}

}  // namespace

std::string MissingWordsHint(const Table& table) {
  std::vector<std::string> words = {"NA", "NaN", "nan"};
  words.insert(words.end(), table.MissingWords().begin(), table.MissingWords().end());
  return "; missing cells are empty or " + Either(words);
}

std::string SeparatorHint(const Table& table) {
  if (table.Columns() > 1) return "";
  return "; the table has one column only, " + Quoted(table.ColumnNames().front()) +
         " (columns are separated by commas, ; or tabs)";
}

ColumnKind KindOfColumn(const Table& table, int column) { return table.Column(column).kind; }

std::vector<double> ReadNumbers(const Table& table, int column) {
  const CsvColumn& source = table.Column(column);
  if (source.strays > 0) RefuseStray(table, source.firstStrays.front(), column);
  return NumbersBesideStrays(table, column);
}

std::vector<double> NumbersBesideStrays(const Table& table, int column) {
  const double* const numbers = table.Column(column).numbers;
  return {numbers, numbers + table.Rows()};
}

int RequireColumn(const Table& table, const std::string& name) {
  const int column = table.Find(name);
  if (column < 0) {
    Refuse(table, "there is no column " + Quoted(name) + DidYouMean(name, table.ColumnNames()) + SeparatorHint(table),
           AtWord(name));
  }
  return column;
}

std::string LabelOf(const Table& table, int row, int column) {
  const std::string label = table.Cell(row, column);
  return ReadTableCell(table, label).kind == CellKind::Missing ? "" : label;
}

std::vector<std::string> RowNames(const Table& table, int column) {
  if (column >= 0) return table.ColumnTexts(column);
  std::vector<std::string> names;
  names.reserve(static_cast<std::size_t>(table.Rows()));
  for (int row = 0; row < table.Rows(); ++row) names.push_back(std::to_string(row + 1));
  return names;
}

std::vector<std::string> RowPlaces(const Table& table, int column) {
  std::vector<std::string> places;
  places.reserve(static_cast<std::size_t>(table.Rows()));
  for (int row = 0; row < table.Rows(); ++row) {
    places.push_back(table.RowPlace(row) + (column < 0 ? "" : ", " + Quoted(table.Cell(row, column))));
  }
  return places;
}

}  // namespace kalmia::analysis
