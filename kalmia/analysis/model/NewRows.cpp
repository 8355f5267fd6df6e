#include "kalmia/analysis/model/NewRows.h"

#include <algorithm>
#include <cmath>

#include "kalmia/analysis/table/CellRows.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

constexpr int kCellsAtOnce = 1 << 22;  ///< of the rows that go through the preprocessing together: some 32 MB

/// A column that the table has.
struct SourceColumn {
  int place = 0;  ///< among the columns that X is made of, from 0
  std::vector<double> cells;
};

int IdColumn(const ModelInfo& model, const Table& table, const std::string& id) {
  if (!id.empty()) return RequireColumn(table, id);
  return model.idColumn.empty() ? -1 : table.Find(model.idColumn);
}

/// Columns of the table that X is made of.
const std::vector<std::string>& SourceNames(const ModelInfo& model) {
  return model.chain.Empty() ? model.xNames : model.chain.inputNames;
}

std::vector<SourceColumn> ReadSource(const ModelInfo& model, const Table& table, NewRows* rows) {
  std::vector<SourceColumn> source;
  int place = -1;
  for (const std::string& name : SourceNames(model)) {
    ++place;
    const int column = table.Find(name);
    if (column < 0) {
      rows->missingColumns.push_back(name);
    } else {
      source.push_back({place, ReadNumbers(table, column)});
    }
  }
  return source;
}

bool IsWithoutCell(const SourceColumn& column) {
  return std::all_of(column.cells.begin(), column.cells.end(), [](double cell) { return std::isnan(cell); });
}

/// Some rows, from 0, of so many columns; those that the table does not have are missing.
CellRows RowsOf(const std::vector<SourceColumn>& source, int columns, int first, int count) {
  CellRows rows(count, columns);
  for (const SourceColumn& column : source) rows.SetColumn(column.place, column.cells.data() + first);
  return rows;
}

/// Gives rows of a column of X, from 0, to the model, from row `first` on.
void TakeCells(const ModelInfo& model, int column, int first, const std::vector<double>& cells, NewRows* rows) {
  const double shift = model.xScaling.ShiftOfColumn(static_cast<std::size_t>(column));
  int row = first;
  for (const float cell : SingleCells(cells, shift, &rows->moved)) rows->x(++row, column + 1, cell);
}

/// The chain may take and make far more columns than the table or X have, so that rows go through it a block at a time.
void Preprocess(const ModelInfo& model, const Table& table, int idColumn, const std::vector<SourceColumn>& source,
                NCProgress* progress, NewRows* rows) {
  const auto columns = static_cast<int>(SourceNames(model).size());
  const std::vector<std::string> places = RowPlaces(table, idColumn);
  const int atOnce = std::max(1, kCellsAtOnce / columns);
  for (int first = 0; first < table.Rows(); first += atOnce) {
    const int count = std::min(atOnce, table.Rows() - first);
    const auto place = places.begin() + first;
    Signals signals{table.Name(), {place, place + count}, model.chain.inputNames, {},
                    RowsOf(source, columns, first, count)};
    for (int row = first; row < first + count; ++row) signals.rows.push_back(row);
    ApplyChain(model.chain, &signals, progress);
    int column = 0;
    for (const int taken : PlacesOf(signals, model.xNames)) {
      TakeCells(model, column++, first, signals.cells.Column(taken), rows);
    }
  }
}

void NoteEmptyColumns(const ModelInfo& model, const std::vector<SourceColumn>& source, Notes* notes) {
  std::vector<std::string> empty;
  for (const SourceColumn& column : source) {
    if (IsWithoutCell(column)) empty.push_back(SourceNames(model)[static_cast<std::size_t>(column.place)]);
  }
  if (!empty.empty()) notes->Add("empty in the table: " + Listed(empty, kColumnsNamed));
}

}  // namespace

NewRows ReadNewRows(const ModelInfo& model, const Table& table, const std::string& id, Notes* notes,
                    NCProgress* progress) {
  NewRows rows;
  const int idColumn = IdColumn(model, table, id);
  rows.names = RowNames(table, idColumn);
  const std::vector<SourceColumn> source = ReadSource(model, table, &rows);
  if (source.empty()) {
    Refuse(table,
           "no column has the name of one of the model's " + model.inputBlock + " columns" + SeparatorHint(table));
  }
  if (std::all_of(source.begin(), source.end(), IsWithoutCell)) {
    Refuse(table, "every cell of the model's " + model.inputBlock + " columns is missing");
  }
  if (!rows.missingColumns.empty()) {
    notes->Add("taken as missing cells, not in the table: " + Listed(rows.missingColumns, kColumnsNamed));
  }
  NoteEmptyColumns(model, source, notes);
  rows.x = NCDataMatrix<float>(table.Rows(), static_cast<int>(model.xNames.size()));
  if (model.chain.Empty()) {
    for (const SourceColumn& column : source) TakeCells(model, column.place, 0, column.cells, &rows);
  } else {
    Preprocess(model, table, idColumn, source, progress, &rows);
  }
  return rows;
}

}  // namespace kalmia::analysis
