#include "app/TableText.h"

#include <algorithm>
#include <utility>

#include "app/CellNumber.h"
#include "app/CsvDialect.h"
#include "app/CsvFields.h"
#include "app/StepProgress.h"
#include "app/TableColumns.h"

namespace kalmia::app {

namespace {

/// Whether a reader would not find the separator of the table by itself: of one column with decimal commas it would take
/// them for separators.
bool HidesSeparator(const CsvTable& table, const CsvMarks& marks) {
  return !IsDetected(marks.separator) || (table.Columns() == 1 && marks.decimal == ',');
}

std::string WrittenAnew(const CsvTable& table, const std::string& id, const CsvMarks& marks, const NewCell& newCell) {
  const std::vector<bool> isOfNumbers = ColumnsOfNumbers(table, id.empty() ? -1 : table.Find(id));
  CsvText csv(marks, table.Format().comment);
  if (HidesSeparator(table, marks)) csv.NameSeparator();
  for (const std::string& name : table.ColumnNames()) csv.Field(name);
  csv.EndLine();
  StepProgress progress("writing the table", table.Rows());
  for (int row = 0; row < table.Rows(); ++row) {
    progress.Begin(row + 1);
    std::vector<std::string> texts = table.RowTexts(row);
    for (int column = 0; column < table.Columns(); ++column) {
      const auto c = static_cast<std::size_t>(column);
      if (const std::optional<float> number = newCell(row, column)) {
        csv.Cell(*number);
      } else {
        AddTableCell(table, std::move(texts[c]), isOfNumbers[c], &csv);
      }
    }
    csv.EndLine();
  }
  return csv.Text();
}

}  // namespace

std::vector<bool> ColumnsOfNumbers(const CsvTable& table, int idColumn) {
  std::vector<bool> isOfNumbers;
  for (int column = 0; column < table.Columns(); ++column) {
    isOfNumbers.push_back(column != idColumn && KindOfColumn(table, column) != ColumnKind::Texts);
  }
  return isOfNumbers;
}

void AddTableCell(const CsvTable& table, std::string text, bool isOfNumbers, CsvText* csv) {
  const CellKind kind = isOfNumbers ? table.ValueOf(text).kind : CellKind::Word;
  if (kind != CellKind::Number && kind != CellKind::TooLarge) {
    csv->Field(text);
    return;
  }
  if (table.DecimalComma()) std::replace(text.begin(), text.end(), ',', '.');
  csv->Digits(std::move(text));
}

std::string WithNewCells(const CsvTable& table, const std::string& id, const CsvMarkOptions& marks,
                         const NewCell& newCell) {
  const char decimal = table.DecimalComma() ? ',' : '.';
  if (marks.Given()) return WrittenAnew(table, id, MarksOf(marks, {table.Separator(), decimal}), newCell);
  StepProgress progress("writing the table", table.Rows());
  const auto replacement = [&](std::size_t record, std::size_t field) -> std::optional<std::string> {
    if (record == 0) return std::nullopt;
    if (field == 0) progress.Begin(static_cast<int>(record));
    const std::optional<float> number = newCell(static_cast<int>(record) - 1, static_cast<int>(field));
    if (!number) return std::nullopt;
    return CellText(*number, table.DecimalComma());
  };
  return WithFieldsReplaced(table.Text(), table.Format(), replacement);
}

}  // namespace kalmia::app
