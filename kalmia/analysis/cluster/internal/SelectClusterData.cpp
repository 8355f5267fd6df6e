#include "kalmia/analysis/cluster/internal/SelectClusterData.h"

#include <algorithm>
#include <utility>

#include "kalmia/analysis/fit/internal/FillColumns.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

constexpr int kMostRows = 65535;  ///< the library numbers pairs of rows in 32 bits

void CheckRows(const Table& table) {
  if (table.Rows() < 2) Refuse(table, "there is only one row: clusters take two or more");
  if (table.Rows() > kMostRows) {
    Refuse(table, std::to_string(table.Rows()) + " rows are too many for a cluster tree, which takes up to " +
                      std::to_string(kMostRows));
  }
}

void NoteLeftOut(const std::string& kind, const std::vector<std::string>& names, Notes* notes) {
  if (!names.empty()) notes->Add("left out, " + kind + " columns: " + Listed(names));
}

/// The columns of numbers among those that are chosen and not excluded; the others by kind.
NumberColumns ReadColumns(const Table& table, const std::vector<int>& chosen, const std::vector<int>& excluded,
                          NCScale::Scaling scaling, ClusterData* data, Notes* notes) {
  NumberColumns columns;
  std::vector<std::vector<float>> numbers;
  std::vector<std::string> losing;
  int moved = 0;
  for (const int column : chosen) {
    if (std::find(excluded.begin(), excluded.end(), column) != excluded.end()) continue;
    const std::string& name = table.ColumnNames()[static_cast<std::size_t>(column)];
    switch (KindOfColumn(table, column)) {
      case ColumnKind::Texts: data->textColumns.push_back(name); break;
      case ColumnKind::Empty: data->emptyColumns.push_back(name); break;
      case ColumnKind::Numbers: {
        const std::vector<double> cells = ReadNumbers(table, column);
        if (!Centres(scaling) && LosesDigits(cells)) losing.push_back(name);
        columns.names.push_back(name);
        numbers.push_back(SingleCells(cells, Centres(scaling) ? ShiftOf(cells) : 0.0, &moved));
      }
    }
  }
  NoteMovedCells(moved, notes);
  NoteLostDigits(losing, notes);
  columns.cells = MatrixOf(numbers, table.Rows());
  return columns;
}

bool DividesBySpread(NCScale::Scaling scaling) {
  return scaling == NCScale::ScalingUnitVariance || scaling == NCScale::ScalingPareto;
}

/// Takes the columns over, but for the constant ones where these have no scale.
void TakeColumns(const NumberColumns& columns, NCScale::Scaling scaling, ClusterData* data) {
  std::vector<int> taken;
  for (int c = 1; c <= columns.cells.SizeColumns(); ++c) {
    const std::string& name = columns.names[static_cast<std::size_t>(c) - 1];
    if (DividesBySpread(scaling) && IsConstant(columns.cells, c)) {
      data->constantColumns.push_back(name);
    } else {
      taken.push_back(c);
      data->columnNames.push_back(name);
    }
  }
  data->cells = NCDataMatrix<float>(columns.cells.SizeRows(), static_cast<int>(taken.size()));
  for (int r = 1; r <= data->cells.SizeRows(); ++r) {
    const NCDataVector<float>& row = columns.cells[r];
    for (int c = 1; c <= data->cells.SizeColumns(); ++c) data->cells(r, c, row[taken[static_cast<std::size_t>(c) - 1]]);
  }
}

/// Why no column is left.
std::string NothingLeftText(const ClusterData& data) {
  const auto named = [](const std::string& what, const std::vector<std::string>& names) {
    return what + ": " + Listed(names, kColumnsNamed);
  };
  if (!data.constantColumns.empty()) {
    return named("no column varies, so none can be scaled (without scaling they would be taken); constant columns",
                 data.constantColumns);
  }
  if (!data.emptyColumns.empty()) return named("every cell is missing; empty columns", data.emptyColumns);
  if (!data.textColumns.empty()) return named("no column of numbers is left; text columns", data.textColumns);
  return "no column of numbers is left";
}

}  // namespace

ClusterData SelectClusterData(const Table& table, const ClusterRecipe& recipe, Notes* notes) {
  CheckRows(table);
  ClusterData data;
  std::vector<int> excluded = ColumnsToExclude(table, recipe.exclude);
  const int idColumn = recipe.id.empty() ? -1 : RequireColumn(table, recipe.id);
  if (idColumn >= 0) excluded.push_back(idColumn);
  data.rowNames = RowNames(table, idColumn);
  const std::vector<int> chosen = RequireColumnsOrAll(table, recipe.x);
  TakeColumns(ReadColumns(table, chosen, excluded, recipe.scaling, &data, notes), recipe.scaling, &data);
  if (data.columnNames.empty()) Refuse(table, NothingLeftText(data));
  NoteLeftOut("text", data.textColumns, notes);
  NoteLeftOut("constant", data.constantColumns, notes);
  NoteLeftOut("empty", data.emptyColumns, notes);
  ScaleColumns(recipe.scaling, data.columnNames, &data.cells);
  return data;
}

}  // namespace kalmia::analysis
