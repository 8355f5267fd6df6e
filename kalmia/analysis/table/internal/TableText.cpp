#include "kalmia/analysis/table/internal/TableText.h"

#include <algorithm>
#include <utility>

#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/table/internal/CellNumber.h"
#include "kalmia/analysis/table/internal/CsvDialect.h"
#include "kalmia/analysis/table/internal/CsvFields.h"
#include "kalmia/analysis/table/internal/CsvRecords.h"
#include "kalmia/analysis/table/internal/ReadTableCell.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/WorkProgress.h"

namespace kalmia::analysis {

namespace {

/// Whether a reader would not find the separator of the table by itself: of one column with decimal commas it would
/// take them for separators.
bool HidesSeparator(const Table& table, const CsvMarks& marks) {
  return !IsDetected(marks.separator) || (table.Columns() == 1 && marks.decimal == ',');
}

/// Whether a cell is missing by one of the user's words for it alone.
bool IsFurtherMissingWord(const Table& table, const std::string& text) {
  if (table.MissingWords().empty() || ReadTableCell(table, text).kind != CellKind::Missing) return false;
  return ReadCell(text, table.DecimalComma()).kind != CellKind::Missing;
}

/// Counts the user's words for missing cells that stay where the table is not written anew.
class KeptWords {
 public:
  KeptWords(const Table& table, const std::string& id) : table_(table) {
    if (!table.MissingWords().empty()) isOfNumbers_ = ColumnsOfNumbers(table, id.empty() ? -1 : table.Find(id));
  }

  /// A cell that stays.
  void Take(int row, std::size_t column) {
    if (isOfNumbers_.empty() || !isOfNumbers_[column]) return;
    if (row != row_) texts_ = table_.RowTexts(row);
    row_ = row;
    if (IsFurtherMissingWord(table_, texts_[column])) ++count_;
  }

  void Note(Notes* notes) const {
    if (count_ == 0) return;
    notes->Add(Counted(count_, "missing cell") + (count_ == 1 ? " stays " : " stay ") + Either(table_.MissingWords()) +
               " in the output: read it with the same words too");
  }

 private:
  const Table& table_;
  std::vector<bool> isOfNumbers_;
  int row_ = -1;
  std::vector<std::string> texts_;
  std::size_t count_ = 0;
};

std::string WrittenAnew(const Table& table, const std::string& id, const CsvMarks& marks, const NewCell& newCell,
                        WorkProgress* progress) {
  const std::vector<bool> isOfNumbers = ColumnsOfNumbers(table, id.empty() ? -1 : table.Find(id));
  CsvText csv(marks, table.Format().comment);
  if (HidesSeparator(table, marks)) csv.NameSeparator();
  for (const std::string& name : table.ColumnNames()) csv.Field(name);
  csv.EndLine();
  for (int row = 0; row < table.Rows(); ++row) {
    progress->MoveToPart(row + 1, table.Rows());
    std::vector<std::string> texts = table.RowTexts(row);
    for (int column = 0; column < table.Columns(); ++column) {
      const auto c = static_cast<std::size_t>(column);
      if (const std::optional<double> number = newCell(row, column)) {
        csv.Number(*number);
      } else {
        AddTableCell(table, std::move(texts[c]), isOfNumbers[c], &csv);
      }
    }
    csv.EndLine();
  }
  return csv.Text();
}

}  // namespace

std::vector<bool> ColumnsOfNumbers(const Table& table, int idColumn) {
  std::vector<bool> isOfNumbers;
  for (int column = 0; column < table.Columns(); ++column) {
    isOfNumbers.push_back(column != idColumn && KindOfColumn(table, column) != ColumnKind::Texts);
  }
  return isOfNumbers;
}

void AddTableCell(const Table& table, std::string text, bool isOfNumbers, CsvText* csv) {
  if (isOfNumbers && IsFurtherMissingWord(table, text)) text.clear();
  if (text.empty() && table.Columns() > 1) {
    csv->Digits("");
    return;
  }
  if (!isOfNumbers || !IsNumber(ReadTableCell(table, text).kind)) {
    csv->Field(text);  // quoted where it is empty: a blank line would be no row
    return;
  }
  if (table.DecimalComma()) std::replace(text.begin(), text.end(), ',', '.');
  csv->Digits(std::move(text));
}

std::string WithNewCells(const Table& table, const std::string& id, const AskedMarks& marks,
                         const NewCell& newCell, Notes* notes, NCProgress* progress) {
  WorkProgress work(progress);
  work.Begin("writing the table");
  const char decimal = table.DecimalComma() ? ',' : '.';
  if (marks.Any() || !table.HasText()) {
    return WrittenAnew(table, id, MarksOf(marks, {table.Separator(), decimal}), newCell, &work);
  }
  KeptWords words(table, id);
  const auto replacement = [&](std::size_t record, std::size_t field) -> std::optional<std::string> {
    if (record == 0) return std::nullopt;
    const auto row = static_cast<int>(record) - 1;
    if (field == 0) work.MoveToPart(row + 1, table.Rows());
    const std::optional<double> number = newCell(row, static_cast<int>(field));
    if (number) return CellText(*number, table.DecimalComma());
    words.Take(row, field);
    return std::nullopt;
  };
  std::string text = WithFieldsReplaced(table.Text(), table.Format(), replacement);
  words.Note(notes);
  return text;
}

}  // namespace kalmia::analysis
