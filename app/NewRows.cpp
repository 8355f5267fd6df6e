#include "app/NewRows.h"

#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/TableColumns.h"

namespace kalmia::app {

namespace {

constexpr std::size_t kColumnsNamed = 10;  ///< a note names so many missing columns, and counts the others

[[noreturn]] void Refuse(const CsvTable& table, const std::string& message) {
  throw Failure(ExitCode::BadData, table.Name() + ": " + message);
}

int IdColumn(const ModelFrame& model, const CsvTable& table, const std::string& id) {
  if (!id.empty()) return RequireColumn(table, id);
  return model.idColumn.empty() ? -1 : table.Find(model.idColumn);
}

/// Columns of the table that X is made of.
const std::vector<std::string>& SourceNames(const ModelFrame& model) {
  return model.chain.Empty() ? model.xNames : model.chain.inputNames;
}

void ReadSource(const ModelFrame& model, const CsvTable& table, NewRows* rows) {
  const std::vector<std::string>& names = SourceNames(model);
  rows->x = NCDataMatrix<float>(table.Rows(), static_cast<int>(names.size()));
  for (std::size_t k = 0; k < names.size(); ++k) {
    const int column = table.Find(names[k]);
    if (column < 0) {
      rows->missingColumns.push_back(names[k]);
      continue;
    }
    const std::vector<float> cells = ReadNumbers(table, column, &rows->moved);
    for (std::size_t i = 0; i < cells.size(); ++i) {
      rows->x(static_cast<int>(i) + 1, static_cast<int>(k) + 1, cells[i]);
    }
  }
}

/// The chain makes more columns than X has: those left out of X for want of variance.
void Preprocess(const ModelFrame& model, const CsvTable& table, int idColumn, NewRows* rows) {
  if (model.chain.Empty()) return;
  Signals signals{table.Name(), RowPlaces(table, idColumn), model.chain.inputNames, {}, rows->x};
  ApplyChain(model.chain, &signals);
  rows->x = PickColumns(signals, model.xNames);
}

}  // namespace

NewRows ReadNewRows(const ModelFrame& model, const CsvTable& table, const std::string& id, Notes* notes) {
  NewRows rows;
  const int idColumn = IdColumn(model, table, id);
  rows.names = RowNames(table, idColumn);
  ReadSource(model, table, &rows);
  if (rows.missingColumns.size() == SourceNames(model).size()) {
    Refuse(table,
           "no column has the name of one of the model's " + model.inputBlock + " columns" + SeparatorHint(table));
  }
  if (rows.x.GetNumMisVal() == static_cast<long long>(rows.x.SizeRows()) * rows.x.SizeColumns()) {
    Refuse(table, "every cell of the model's " + model.inputBlock + " columns is missing");
  }
  if (!rows.missingColumns.empty()) {
    notes->Add("taken as missing cells, not in the table: " + Listed(rows.missingColumns, kColumnsNamed));
  }
  Preprocess(model, table, idColumn, &rows);
  return rows;
}

}  // namespace kalmia::app
