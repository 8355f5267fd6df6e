#include "kalmia/analysis/model/NewRows.h"

#include <algorithm>
#include <new>

#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

constexpr int kCellsAtOnce = 1 << 22;  ///< of the rows that go through the preprocessing together: some 16 MB

/// A column that the table has.
struct SourceColumn {
  int place = 0;  ///< among the columns that X is made of, from 1
  std::vector<float> cells;
};

[[noreturn]] void Refuse(const CsvTable& table, const std::string& message) {
  throw BadData(table.Name() + ": " + message);
}

int IdColumn(const ModelInfo& model, const CsvTable& table, const std::string& id) {
  if (!id.empty()) return RequireColumn(table, id);
  return model.idColumn.empty() ? -1 : table.Find(model.idColumn);
}

/// Columns of the table that X is made of.
const std::vector<std::string>& SourceNames(const ModelInfo& model) {
  return model.chain.Empty() ? model.xNames : model.chain.inputNames;
}

std::vector<SourceColumn> ReadSource(const ModelInfo& model, const CsvTable& table, NewRows* rows) {
  std::vector<SourceColumn> source;
  int place = 0;
  for (const std::string& name : SourceNames(model)) {
    ++place;
    const int column = table.Find(name);
    if (column < 0) {
      rows->missingColumns.push_back(name);
    } else {
      source.push_back({place, ReadNumbers(table, column, &rows->moved)});
    }
  }
  return source;
}

bool IsWithoutCell(const SourceColumn& column) {
  return std::all_of(column.cells.begin(), column.cells.end(), [](float cell) { return cell == kMissingCell<float>; });
}

/// Some rows, from 0, of so many columns; those that the table does not have are missing.
NCDataMatrix<float> RowsOf(const std::vector<SourceColumn>& source, int columns, int first, int count) {
  NCDataMatrix<float> rows(count, columns);
  for (const SourceColumn& column : source) {
    const float* const cells = column.cells.data() + first;
    for (int r = 0; r < count; ++r) rows(r + 1, column.place, cells[r]);
  }
  return rows;
}

/// The chain may take and make far more columns than the table or X have, so that rows go through it a block at a time.
NCDataMatrix<float> Preprocessed(const ModelInfo& model, const CsvTable& table, int idColumn,
                                 const std::vector<SourceColumn>& source, NCProgress* progress) {
  const auto columns = static_cast<int>(SourceNames(model).size());
  if (model.chain.Empty()) return RowsOf(source, columns, 0, table.Rows());
  const std::vector<std::string> places = RowPlaces(table, idColumn);
  NCDataMatrix<float> x;
  const int atOnce = std::max(1, kCellsAtOnce / columns);
  for (int first = 0; first < table.Rows(); first += atOnce) {
    const int count = std::min(atOnce, table.Rows() - first);
    const auto place = places.begin() + first;
    Signals signals{table.Name(), {place, place + count}, model.chain.inputNames, {},
                    RowsOf(source, columns, first, count)};
    ApplyChain(model.chain, &signals, progress);
    for (const NCDataVector<float>& row : PickColumns(signals, model.xNames)) x.push_back(row);
  }
  return x;
}

NewRows Read(const ModelInfo& model, const CsvTable& table, const std::string& id, Notes* notes,
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
  rows.x = Preprocessed(model, table, idColumn, source, progress);
  return rows;
}

}  // namespace

NewRows ReadNewRows(const ModelInfo& model, const CsvTable& table, const std::string& id, Notes* notes,
                    NCProgress* progress) try {
  return Read(model, table, id, notes, progress);
} catch (const std::bad_alloc&) {
  Refuse(table, "there is not enough memory for " + Counted(static_cast<std::size_t>(table.Rows()), "row") +
                    " of the " + Counted(SourceNames(model).size(), "column") + " that the model takes");
}

}  // namespace kalmia::analysis
