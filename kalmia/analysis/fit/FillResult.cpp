#include "kalmia/analysis/fit/FillResult.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "kalmia/analysis/fit/internal/FillColumns.h"
#include "kalmia/analysis/fit/internal/RecipeChecks.h"
#include "kalmia/analysis/fit/internal/TryFilling.h"
#include "kalmia/analysis/table/ColumnMoments.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/table/internal/CellNumber.h"
#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/analysis/table/internal/TableText.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kNamed = 10;  ///< a note names so many columns, and counts the others

/// Works from the table to the outcome.
class Computation {
 public:
  Computation(const Table& table, const FillRecipe& recipe, NCProgress* progress)
      : table_(table), recipe_(recipe), notes_(&result_.notes), progress_(progress) {}

  FillResult Compute() {
    ReadColumns();
    if (!recipe_.components && columns_.cells.GetNumMisVal() > 0) {
      result_.choice = ChooseComponents(columns_, progress_);
    }
    result_.filled = FillColumns(columns_, recipe_.components.value_or(result_.choice.components), progress_);
    if (recipe_.check) result_.trial = TryFilling(columns_, recipe_.components, progress_);
    CountFilled();
    NoteWhatWasDone();
    return std::move(result_);
  }

 private:
  const std::string& Name(int column) const { return table_.ColumnNames()[static_cast<std::size_t>(column)]; }

  void ReadColumns() {
    std::vector<int> excluded = ColumnsToExclude(table_, recipe_.exclude);
    const int idColumn = recipe_.id.empty() ? -1 : RequireColumn(table_, recipe_.id);
    if (idColumn >= 0) excluded.push_back(idColumn);
    rowNames_ = RowNames(table_, idColumn);
    std::vector<std::vector<float>> numbers;
    int moved = 0;
    for (int column = 0; column < table_.Columns(); ++column) {
      if (std::find(excluded.begin(), excluded.end(), column) != excluded.end()) {
        LeaveColumn(column, LeftEmpty::Reason::ExcludedColumn);
        continue;
      }
      switch (KindOfColumn(table_, column)) {
        case ColumnKind::Texts: LeaveColumn(column, LeftEmpty::Reason::TextColumn); break;
        case ColumnKind::Empty: LeaveColumn(column, LeftEmpty::Reason::EmptyColumn); break;
        case ColumnKind::Numbers:
          result_.columns.push_back(column);
          columns_.names.push_back(Name(column));
          AddColumn(ReadNumbers(table_, column), &numbers, &moved);
      }
    }
    if (numbers.empty()) Refuse(table_, "no column of numbers is left to fill");
    NoteMovedCells(moved, notes_);
    columns_.cells = MatrixOf(numbers, table_.Rows());
    result_.shifts = columns_.shifts;
    result_.missing += columns_.cells.GetNumMisVal();
  }

  /// The only value of a constant column is taken off it: so it is filled with that to the last digit.
  void AddColumn(const std::vector<double>& cells, std::vector<std::vector<float>>* numbers, int* moved) {
    const ColumnMoments moments = MomentsOf(cells);
    columns_.shifts.push_back(moments.min == moments.max ? moments.min : ShiftOf(cells));
    numbers->push_back(SingleCells(cells, columns_.shifts.back(), moved));
  }

  /// Counts the missing cells of a column that is not filled.
  void LeaveColumn(int column, LeftEmpty::Reason reason) {
    const int cells = table_.Column(column).missing;
    result_.missing += cells;
    if (cells > 0) result_.leftEmpty.push_back({reason, Name(column), cells});
  }

  void CountFilled() {
    result_.filledCells = columns_.cells.GetNumMisVal() - result_.filled.cells.GetNumMisVal();
    for (const int row : result_.filled.emptyRows) {
      const int cells = result_.filled.cells[row].GetNumMisVal();
      if (cells == 0) continue;
      result_.leftEmpty.push_back(
          {LeftEmpty::Reason::EmptyRow, rowNames_[static_cast<std::size_t>(row) - 1], cells});
    }
  }

  void NoteWhatWasDone() {
    const FilledColumns& filled = result_.filled;
    if (!filled.constantColumns.empty()) {
      notes_->Add("no part of the model, filled with their only value: constant columns " +
                  Listed(filled.constantColumns, kNamed));
    }
    const FillModel& model = filled.model;
    if (recipe_.components && *recipe_.components > model.components) {
      notes_->Add(std::to_string(*recipe_.components) + " components are cut to " +
                  std::to_string(model.components) + ": " +
                  (model.endedEarly.empty() ? "there are " + Counted(AsSize(filled.modelRows), "row") + " and " +
                                                  Counted(AsSize(filled.modelColumns), "column")
                                            : model.endedEarly));
    }
    if (result_.filledCells == 0) return;
    if (model.components == 0) notes_->Add("no component is used: the cells are filled with means");
    if (!model.Settled()) {
      notes_->Add("cells still moved by up to " + Significant(model.lastMove, 2) + " standard deviations in round " +
                  std::to_string(model.rounds) + ", the last");
    }
  }

  static std::size_t AsSize(int count) { return static_cast<std::size_t>(count); }

  const Table& table_;
  const FillRecipe& recipe_;
  FillResult result_;
  Notes* notes_;  ///< of the result
  NCProgress* progress_;
  NumberColumns columns_;
  std::vector<std::string> rowNames_;
};

}  // namespace

FillResult Fit(const FillRecipe& recipe, const Table& table, NCProgress* progress) {
  CheckRecipe(recipe);
  return WithoutLibraryErrors([&] { return Computation(table, recipe, progress).Compute(); });
}

std::string FilledText(const Table& table, const FillResult& result, const std::string& id,
                       const AskedMarks& marks, Notes* notes, NCProgress* progress) {
  std::vector<int> matrixColumn(static_cast<std::size_t>(table.Columns()), 0);  // from 1; 0: not filled
  for (std::size_t c = 0; c < result.columns.size(); ++c) {
    matrixColumn[static_cast<std::size_t>(result.columns[c])] = static_cast<int>(c) + 1;
  }
  int replaced = 0;
  const auto filledCell = [&](int row, int column) -> std::optional<double> {
    const int place = matrixColumn.at(static_cast<std::size_t>(column));
    if (place == 0 || !std::isnan(table.Column(column).numbers[row])) return std::nullopt;
    const float cell = result.filled.cells[row + 1][place];
    if (IsMissing(cell)) return std::nullopt;
    ++replaced;
    return InUnitsOfTable(cell, result.shifts[static_cast<std::size_t>(place) - 1]);
  };
  std::string filled = WithNewCells(table, id, marks, filledCell, notes, progress);
  if (replaced != result.filledCells) throw std::logic_error("fields are not where the table has them");
  return filled;
}

}  // namespace kalmia::analysis
