#include "kalmia/analysis/table/CsvMarks.h"

#include "kalmia/analysis/table/Table.h"

namespace kalmia::analysis {

CsvMarks MarksOf(const AskedMarks& asked, const CsvMarks& otherwise) {
  CsvMarks marks = {asked.separator.value_or(otherwise.separator), asked.decimal.value_or(otherwise.decimal)};
  if (marks.separator != ',' || marks.decimal != ',') return marks;
  if (asked.separator) {
    marks.decimal = '.';
  } else {
    marks.separator = ';';
  }
  return marks;
}

void NoteDecimalsThatGiveWay(const AskedMarks& asked, const Table& table, Notes* notes) {
  if (!table.DecimalComma() || asked.decimal) return;
  if (MarksOf(asked, {table.Separator(), ','}).decimal == ',') return;
  notes->Add("the decimal commas of the table are written as points, as commas separate its columns now");
}

}  // namespace kalmia::analysis
