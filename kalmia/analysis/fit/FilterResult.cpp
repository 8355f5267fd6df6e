#include "kalmia/analysis/fit/FilterResult.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "kalmia/analysis/fit/internal/FilterExtraction.h"
#include "kalmia/analysis/fit/internal/FitSetup.h"
#include "kalmia/analysis/fit/internal/RecipeChecks.h"
#include "kalmia/analysis/fit/internal/SelectData.h"
#include "kalmia/analysis/model/NewRows.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/analysis/table/internal/TableText.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kRowsNamed = 10;  ///< a note names so many rows, and counts the others
constexpr double kRounding = 1e-4;  ///< of the largest score: far above what single precision makes of the same row
constexpr auto kTooGood = ": a cross-validation of a model of the filtered table is too good, as each left-out row has "
                          "had its say in the filter";

/// Takes the rows out that say nothing of Y.
void LeaveOutRowsWithoutY(ModelData* data, Notes* notes) {
  std::vector<std::string> left, names;
  NCDataMatrix<float> x, y;
  for (int r = 1; r <= data->y.SizeRows(); ++r) {
    const NCDataMatrix<float>& yCells = data->y;
    const NCDataMatrix<float>& xCells = data->x;
    const std::string& name = data->rowNames[static_cast<std::size_t>(r) - 1];
    if (yCells[r].GetNumMisVal() == yCells[r].Size()) {
      left.push_back(name);
      continue;
    }
    names.push_back(name);
    x.push_back(xCells[r]);
    y.push_back(yCells[r]);
  }
  if (left.empty()) return;
  notes->Add("no part of the fit, without any Y cell: " + std::string(left.size() == 1 ? "row " : "rows ") +
             Listed(left, kRowsNamed));
  data->rowNames = std::move(names);
  data->x = x;
  data->y = y;
}

/// Whether all rows that the filter was made of are among these, scaled as its X: in their order, with their names and
/// their first scores. Never of a filter without its rows.
bool HasRowsOfFilter(const StoredFilter& filter, const std::vector<std::string>& names, const NCDataMatrix<float>& x) {
  if (filter.rowNames.empty() || filter.t.SizeRows() == 0) return false;
  const NCDataVector<float> scores = x.RegressRows(filter.w[1]);
  const NCDataVector<float>& own = filter.t[1];
  double largest = 0.0;
  for (const float score : own) largest = std::max(largest, std::fabs(static_cast<double>(score)));
  std::size_t found = 0;
  for (std::size_t i = 0; i < names.size() && found < filter.rowNames.size(); ++i) {
    const double gap = static_cast<double>(scores[static_cast<int>(i) + 1]) - own[static_cast<int>(found) + 1];
    if (names[i] == filter.rowNames[found] && std::fabs(gap) <= kRounding * largest) ++found;
  }
  return found == filter.rowNames.size();
}

FilteredTable FilterRows(const StoredFilter& filter, const Table& table, Notes* notes, NCProgress* progress) {
  NewRows rows = ReadNewRows(filter, table, "", notes, progress);
  NoteMovedCells(rows.moved, notes);
  FilteredTable filtered;
  filtered.missingColumns = std::move(rows.missingColumns);
  ApplyScale(filter.xScaling, &rows.x);
  if (HasRowsOfFilter(filter, rows.names, rows.x)) {
    notes->Add("the filter was made of these rows and has seen their Y" + std::string(kTooGood));
  }
  NCDataMatrix<float> left = rows.x;
  TakeOut(filter, &left);
  filtered.removed = DescribedShare(rows.x, left);
  filtered.cells = CellRows(left.SizeRows(), left.SizeColumns());
  const NCDataMatrix<float>& scaled = rows.x;
  const NCDataMatrix<float>& residuals = left;
  for (int r = 1; r <= left.SizeRows(); ++r)
    for (int c = 1; c <= left.SizeColumns(); ++c) {
      if (IsMissing(scaled[r][c])) continue;
      const double shift = filter.xScaling.ShiftOfColumn(static_cast<std::size_t>(c) - 1);
      const double centre = CentreOf(filter.xScaling, c) - shift;
      const auto cell = static_cast<float>(residuals[r][c] / FactorOf(filter.xScaling, c) + centre);
      if (!std::isfinite(cell)) {
        Refuse(table, table.RowPlace(r - 1) + ": its cells are too large for single precision",
               InCell(r - 1, filter.xNames[static_cast<std::size_t>(c) - 1]));
      }
      filtered.cells.Row(r - 1)[c - 1] = InUnitsOfTable(cell, shift);
    }
  return filtered;
}

FilterResult Compute(const FilterRecipe& recipe, const Table& table, NCProgress* progress) {
  FilterResult result;
  ModelData data = SelectXAndY(table, recipe, recipe.y, &result.notes);
  LeaveOutRowsWithoutY(&data, &result.notes);
  StoredFilter& filter = result.filter;
  FillInfo(table, recipe, data, &filter);
  filter.yNames = data.yNames;
  NCDataMatrix<float> x = data.x;
  NCDataMatrix<float> y = data.y;
  filter.xScaling = ScaleColumns(recipe.scaling, data.xNames, &x, data.xShifts);
  ScaleColumns(ScalingOfY(recipe.scaling), data.yNames, &y);
  const int most = MostComponents(data, recipe.components, &result.notes);
  FilterComponents fit = FitOrNameLeftOut(data, [&] { return ExtractFilter(x, y, most, progress); });
  filter.w = *fit.filter->GetWprim();
  filter.p = *fit.filter->GetPprim();
  filter.t = *fit.filter->GetTprim();
  filter.xResiduals = *fit.filter->GetXResiduals();
  filter.components = std::move(fit.components);
  result.endedEarly = std::move(fit.endedEarly);
  result.notes.Add("the filter has seen Y of all rows" + std::string(kTooGood));
  Notes said;  // by the selection of the data already
  result.filtered = FilterRows(filter, table, &said, progress);
  return result;
}

}  // namespace

FilterResult Fit(const FilterRecipe& recipe, const Table& table, NCProgress* progress) {
  CheckRecipe(recipe);
  return WithoutLibraryErrors([&] { return Compute(recipe, table, progress); });
}

FilterResult ApplyFilter(StoredFilter filter, const Table& table, NCProgress* progress) {
  FilterResult result;
  result.filter = std::move(filter);
  result.filtered =
      WithoutLibraryErrors([&] { return FilterRows(result.filter, table, &result.notes, progress); });
  return result;
}

std::string FilteredText(const Table& table, const FilterResult& result, const AskedMarks& marks,
                         Notes* notes, NCProgress* progress) {
  const StoredFilter& filter = result.filter;
  const FilteredTable& filtered = result.filtered;
  std::vector<int> matrixColumn(static_cast<std::size_t>(table.Columns()), 0);  // from 1; 0: not filtered
  for (std::size_t k = 0; k < filter.xNames.size(); ++k) {
    const int column = table.Find(filter.xNames[k]);
    if (column >= 0) matrixColumn[static_cast<std::size_t>(column)] = static_cast<int>(k) + 1;
  }
  const auto filteredCell = [&](int row, int column) -> std::optional<double> {
    const int place = matrixColumn.at(static_cast<std::size_t>(column));
    if (place == 0 || std::isnan(filtered.cells.Row(row)[place - 1])) return std::nullopt;
    return filtered.cells.Row(row)[place - 1];
  };
  return WithNewCells(table, filter.idColumn, marks, filteredCell, notes, progress);
}

}  // namespace kalmia::analysis
