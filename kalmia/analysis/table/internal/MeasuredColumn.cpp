#include "kalmia/analysis/table/internal/MeasuredColumn.h"

#include <vector>

#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::analysis {

NCDataVector<float> ReadMeasurements(const Table& table, const std::string& column, Notes* notes) {
  const int place = RequireColumn(table, column);
  const auto refuse = [&](const std::string& what) {
    Refuse(table, "the column " + Quoted(column) + " " + what, InColumn(column));
  };
  const ColumnKind kind = KindOfColumn(table, place);
  if (kind == ColumnKind::Texts) refuse("holds text, not numbers");
  if (kind == ColumnKind::Empty) refuse("has no measurement");
  int moved = 0;
  const std::vector<double> numbers = ReadNumbers(table, place);
  const std::vector<float> cells = SingleCells(numbers, /*shift=*/0.0, &moved);
  NoteMovedCells(moved, notes);
  if (LosesDigits(numbers)) NoteLostDigits({column}, notes);
  NCDataVector<float> measurements;
  measurements.CopyZeroBasedVector(cells.data(), static_cast<int>(cells.size()));
  return measurements;
}

}  // namespace kalmia::analysis
