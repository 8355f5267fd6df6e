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

void ReadX(const ModelFrame& model, const CsvTable& table, NewRows* rows) {
  rows->x = NCDataMatrix<float>(table.Rows(), static_cast<int>(model.xNames.size()));
  for (std::size_t k = 0; k < model.xNames.size(); ++k) {
    const int column = table.Find(model.xNames[k]);
    if (column < 0) {
      rows->missingColumns.push_back(model.xNames[k]);
      continue;
    }
    const std::vector<float> cells = ReadNumbers(table, column, &rows->moved);
    for (std::size_t i = 0; i < cells.size(); ++i) {
      rows->x(static_cast<int>(i) + 1, static_cast<int>(k) + 1, cells[i]);
    }
  }
}

}  // namespace

NewRows ReadNewRows(const ModelFrame& model, const CsvTable& table, const std::string& id, Notes* notes) {
  NewRows rows;
  rows.names = RowNames(table, IdColumn(model, table, id));
  ReadX(model, table, &rows);
  if (rows.missingColumns.size() == model.xNames.size()) {
    Refuse(table,
           "no column has the name of one of the model's " + model.inputBlock + " columns" + SeparatorHint(table));
  }
  if (rows.x.GetNumMisVal() == static_cast<long long>(rows.x.SizeRows()) * rows.x.SizeColumns()) {
    Refuse(table, "every cell of the model's " + model.inputBlock + " columns is missing");
  }
  if (!rows.missingColumns.empty()) {
    notes->Add("taken as missing cells, not in the table: " + Listed(rows.missingColumns, kColumnsNamed));
  }
  return rows;
}

}  // namespace kalmia::app
