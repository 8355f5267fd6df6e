#include "kalmia/analysis/table/CountTable.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/table/internal/ReadTableCell.h"
#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/WorkProgress.h"

namespace kalmia::analysis {

namespace {

constexpr float kExactFloats = 16777216.0F;  ///< 2^24: larger whole numbers may have been rounded

/// Digits alone are read as they are; other forms of a whole number ("3.0", "1e3") while single precision is exact.
std::int64_t ReadCount(const Table& table, int row, int column, const std::string& text) {
  const std::string quoted = Quoted(text);
  std::int64_t digits = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), digits);
  const CellValue cell = ReadTableCell(table, text);
  const auto value = static_cast<float>(cell.value);
  if (cell.kind == CellKind::Missing) RefuseCell(table, row, column, "a count is missing");
  if (cell.kind == CellKind::Infinite) RefuseCell(table, row, column, quoted + " is infinite");
  if (cell.kind == CellKind::Word) {
    RefuseCell(table, row, column, quoted + " is not a number" + MissingWordsHint(table), Remedy::NameMissingWords);
  }
  if (cell.kind == CellKind::TooLarge) RefuseCell(table, row, column, quoted + " is too large for a count");
  if (value < 0.0F) RefuseCell(table, row, column, "the count " + quoted + " is negative");
  if (result.ec == std::errc() && result.ptr == text.data() + text.size()) return digits;
  if (value >= kExactFloats) RefuseCell(table, row, column, quoted + " is too large for a count");
  if (value != std::floor(value)) RefuseCell(table, row, column, "the count " + quoted + " is not a whole number");
  return static_cast<std::int64_t>(value);
}

std::vector<int> ColumnsOfCounts(const Table& table, Notes* notes) {
  std::vector<int> columns;
  std::vector<std::string> texts;
  for (int column = 0; column < table.Columns(); ++column) {
    if (KindOfColumn(table, column) == ColumnKind::Texts) {
      texts.push_back(table.ColumnNames()[static_cast<std::size_t>(column)]);
    } else {
      columns.push_back(column);
    }
  }
  if (!texts.empty()) notes->Add("columns of text are left out: " + Listed(texts));
  return columns;
}

}  // namespace

CountTable ReadCounts(const Table& table, Notes* notes, NCProgress* progress) {
  const std::vector<int> columns = ColumnsOfCounts(table, notes);
  CountTable counts;
  counts.name = table.Name();
  counts.rows = table.Rows();
  counts.columns = static_cast<int>(columns.size());
  if (counts.rows < 2 || counts.columns < 2) {
    Refuse(table, "an exact test takes at least 2 rows and 2 columns of counts, not " + std::to_string(counts.rows) +
                      " and " + std::to_string(counts.columns) + SeparatorHint(table));
  }
  std::int64_t total = 0;
  WorkProgress work(progress);
  work.Begin("reading the counts");
  for (int row = 0; row < counts.rows; ++row) {
    work.MoveToPart(row + 1, counts.rows);
    const std::vector<std::string> texts = table.RowTexts(row);
    for (const int column : columns) {
      const std::int64_t count = ReadCount(table, row, column, texts[static_cast<std::size_t>(column)]);
      if (count > std::numeric_limits<int>::max() - total) {
        Refuse(table, "the counts add up to more than " + std::to_string(std::numeric_limits<int>::max()));
      }
      total += count;
      counts.counts.push_back(static_cast<int>(count));
    }
  }
  if (total == 0) Refuse(table, "every count is 0");
  counts.total = static_cast<int>(total);
  return counts;
}

}  // namespace kalmia::analysis
