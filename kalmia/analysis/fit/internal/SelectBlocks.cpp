#include "kalmia/analysis/fit/internal/SelectBlocks.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <utility>

#include "kalmia/analysis/fit/internal/SharedColumns.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/table/internal/ReadTableCell.h"
#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/pcapls/PCACrossValidation.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kNamed = 10;  ///< a note names so many rows or columns, and counts the others

/// Rows of both tables, from 0, that belong together.
struct RowPairs {
  std::vector<int> x;
  std::vector<int> y;
};

/// The row of each id.
std::unordered_map<std::string, int> RowsOfIds(const Table& table, int column) {
  std::unordered_map<std::string, int> rows;
  for (int row = 0; row < table.Rows(); ++row) {
    const std::string id = table.Cell(row, column);
    if (ReadTableCell(table, id).kind == CellKind::Missing) {
      const std::string& name = table.ColumnNames()[static_cast<std::size_t>(column)];
      Refuse(table, table.RowPlace(row) + " has no id in column " + Quoted(name), InCell(row, name, id));
    }
    const auto [first, isNew] = rows.emplace(id, row);
    if (!isNew) {
      Refuse(table, "the id " + Quoted(id) + " comes twice, in " + table.RowPlace(first->second) + " and " +
                        table.RowPlace(row),
             InCell(row, table.ColumnNames()[static_cast<std::size_t>(column)], id));
    }
  }
  return rows;
}

/// The items at these places, from 0.
template <class T>
std::vector<T> Picked(const std::vector<T>& items, const std::vector<int>& places) {
  std::vector<T> picked;
  picked.reserve(places.size());
  for (const int place : places) picked.push_back(items[static_cast<std::size_t>(place)]);
  return picked;
}

/// Works from the two tables to the blocks.
class Selection {
 public:
  Selection(const Table& xTable, const Table& yTable, const O2PLSRecipe& recipe, Notes* notes)
      : xTable_(xTable), yTable_(yTable), recipe_(recipe), notes_(notes) {}

  BlockPair Select() {
    PairRows();
    ReadBlock(xTable_, recipe_.x, rows_.x, "X", &pair_.x);
    ReadBlock(yTable_, recipe_.y, rows_.y, "Y", &pair_.y);
    if (recipe_.fill) LeaveOutEmptyRows();
    if (rows_.x.size() < 2) {
      throw BadData(xTable_.Name() + " and " + yTable_.Name() + " have only " + Counted(rows_.x.size(), "row") +
                    " with cells in both: a model takes two or more");
    }
    LeaveOutColumns(xTable_, "X", &pair_.x);
    LeaveOutColumns(yTable_, "Y", &pair_.y);
    RefuseSharedColumns();
    if (!recipe_.fill) RefuseHoles();
    MakeGroups();
    NoteMovedCells(moved_, notes_);
    return std::move(pair_);
  }

 private:
  void PairRows() {
    if (recipe_.id.empty()) {
      PairRowsByPlace();
    } else {
      PairRowsById();
    }
  }

  void PairRowsByPlace() {
    if (xTable_.Rows() != yTable_.Rows()) {
      throw BadData(xTable_.Name() + ": there are " + Counted(static_cast<std::size_t>(xTable_.Rows()), "row") +
                        ", but " + std::to_string(yTable_.Rows()) + " in " + yTable_.Name(),
                    Remedy::NameRows);
    }
    for (int row = 0; row < xTable_.Rows(); ++row) {
      rows_.x.push_back(row);
      rows_.y.push_back(row);
    }
    pair_.rowNames = RowNames(xTable_, -1);
  }

  void PairRowsById() {
    xId_ = RequireColumn(xTable_, recipe_.id);
    yId_ = RequireColumn(yTable_, recipe_.id);
    RowsOfIds(xTable_, xId_);
    const auto rowsOfY = RowsOfIds(yTable_, yId_);
    std::vector<bool> taken(static_cast<std::size_t>(yTable_.Rows()), false);
    for (int row = 0; row < xTable_.Rows(); ++row) {
      const std::string id = xTable_.Cell(row, xId_);
      const auto found = rowsOfY.find(id);
      if (found == rowsOfY.end()) {
        pair_.onlyInX.push_back(id);
        continue;
      }
      rows_.x.push_back(row);
      rows_.y.push_back(found->second);
      taken[static_cast<std::size_t>(found->second)] = true;
      pair_.rowNames.push_back(id);
    }
    for (int row = 0; row < yTable_.Rows(); ++row) {
      if (!taken[static_cast<std::size_t>(row)]) pair_.onlyInY.push_back(yTable_.Cell(row, yId_));
    }
    if (rows_.x.empty()) {
      throw BadData(xTable_.Name() + " and " + yTable_.Name() + " have no id of column " + Quoted(recipe_.id) +
                    " in common",
                    InColumn(recipe_.id));
    }
    NoteRows("rows of " + xTable_.Name() + " that " + yTable_.Name() + " lacks", pair_.onlyInX);
    NoteRows("rows of " + yTable_.Name() + " that " + xTable_.Name() + " lacks", pair_.onlyInY);
  }

  void NoteRows(const std::string& what, const std::vector<std::string>& rows) {
    if (!rows.empty()) notes_->Add("left out, " + what + ": " + Listed(rows, kNamed));
  }

  void ReadBlock(const Table& table, const std::vector<std::string>& arguments, const std::vector<int>& rows,
                 const std::string& name, Block* block) {
    block->table = table.Name();
    const int id = &table == &xTable_ ? xId_ : yId_;
    for (const int column : RequireColumnsOrAll(table, arguments)) {
      const std::string& title = table.ColumnNames()[static_cast<std::size_t>(column)];
      if (column == id || title == recipe_.groupColumn) continue;
      switch (KindOfColumn(table, column)) {
        case ColumnKind::Texts: block->textColumns.push_back(title); break;
        case ColumnKind::Empty: block->emptyColumns.push_back(title); break;
        case ColumnKind::Numbers:
          block->names.push_back(title);
          block->measured.push_back(Picked(ReadNumbers(table, column), rows));
      }
    }
    RefuseWithoutColumns(table, name, *block);
  }

  /// A row without a cell in one of the blocks says nothing of what they share; it would be filled with means.
  void LeaveOutEmptyRows() {
    const auto isEmpty = [](const Block& block, std::size_t row) {
      return std::all_of(block.measured.begin(), block.measured.end(),
                         [row](const std::vector<double>& column) { return std::isnan(column[row]); });
    };
    std::vector<int> kept;
    for (std::size_t i = 0; i < rows_.x.size(); ++i) {
      if (isEmpty(pair_.x, i) || isEmpty(pair_.y, i)) {
        pair_.emptyRows.push_back(pair_.rowNames[i]);
      } else {
        kept.push_back(static_cast<int>(i));
      }
    }
    NoteRows("rows without any cell of X or of Y", pair_.emptyRows);
    if (pair_.emptyRows.empty()) return;
    rows_ = {Picked(rows_.x, kept), Picked(rows_.y, kept)};
    pair_.rowNames = Picked(pair_.rowNames, kept);
    for (Block* block : {&pair_.x, &pair_.y}) {
      for (std::vector<double>& column : block->measured) column = Picked(column, kept);
    }
  }

  /// Those in which no two cells differ in the rows of both tables.
  void LeaveOutColumns(const Table& table, const std::string& name, Block* block) {
    Block varying;
    std::vector<std::vector<float>> singles;
    std::vector<std::string> losing;
    const bool isCentred = Centres(recipe_.scaling);
    for (std::size_t c = 0; c < block->names.size(); ++c) {
      std::vector<double>& column = block->measured[c];
      const double shift = isCentred ? ShiftOf(column) : 0.0;
      std::vector<float> cells = SingleCells(column, shift, &moved_);
      const std::string& title = block->names[c];
      if (IsConstant(cells)) {
        const bool isEmpty = std::all_of(cells.begin(), cells.end(), IsMissing);
        (isEmpty ? block->emptyColumns : block->constantColumns).push_back(title);
        continue;
      }
      if (!isCentred && LosesDigits(column)) losing.push_back(title);
      varying.names.push_back(title);
      varying.shifts.push_back(shift);
      varying.measured.push_back(std::move(column));
      singles.push_back(std::move(cells));
    }
    block->names = std::move(varying.names);
    block->measured = std::move(varying.measured);
    block->shifts = std::move(varying.shifts);
    block->cells = MatrixOf(singles, static_cast<int>(rows_.x.size()));
    ClearZeros(&block->shifts);
    NoteLostDigits(losing, notes_);
    RefuseWithoutColumns(table, name, *block);
    NoteColumns(name, "text columns", block->textColumns);
    NoteColumns(name, "constant columns", block->constantColumns);
    NoteColumns(name, "empty columns", block->emptyColumns);
  }

  static void RefuseWithoutColumns(const Table& table, const std::string& name, const Block& block) {
    if (!block.names.empty()) return;
    Refuse(table, "no column of numbers that varies is left for " + name + LeftOutText(block) + SeparatorHint(table));
  }

  static std::string LeftOutText(const Block& block) {
    std::string text;
    for (const auto& [kind, names] : {std::make_pair("constant columns", &block.constantColumns),
                                      std::make_pair("empty columns", &block.emptyColumns),
                                      std::make_pair("text columns", &block.textColumns)}) {
      if (!names->empty()) text += std::string("; ") + kind + ": " + Listed(*names, kNamed);
    }
    return text;
  }

  void NoteColumns(const std::string& block, const std::string& kind, const std::vector<std::string>& names) {
    if (!names.empty()) notes_->Add("left out of " + block + ", " + kind + ": " + Listed(names, kNamed));
  }

  void RefuseSharedColumns() const {
    const std::string shared = SharedColumnsText(pair_.x, pair_.y);
    if (shared.empty()) return;
    throw BadData(xTable_.Name() + " and " + yTable_.Name() +
                      ": the same column is in both blocks, which would predict it from itself: " + shared,
                  Remedy::ChooseColumnsOrNameRows);
  }

  void RefuseHoles() const {
    const int missing = pair_.x.cells.GetNumMisVal() + pair_.y.cells.GetNumMisVal();
    if (missing == 0) return;
    const bool inX = pair_.x.cells.GetNumMisVal() > 0;
    const Block& block = inX ? pair_.x : pair_.y;
    const Table& table = inX ? xTable_ : yTable_;
    const std::vector<int>& rows = inX ? rows_.x : rows_.y;
    for (std::size_t r = 0; r < rows.size(); ++r)
      for (std::size_t c = 0; c < block.names.size(); ++c) {
        if (block.cells[static_cast<int>(r) + 1][static_cast<int>(c) + 1] != kMissingCell<float>) continue;
        throw BadData(table.Name() + ": " + table.RowPlace(rows[r]) + ", column " + Quoted(block.names[c]) +
                          ": a cell is missing, one of " + std::to_string(missing) +
                          " in both blocks; O2PLS takes complete blocks",
                      Remedy::FillHoles, InCell(rows[r], block.names[c]));
      }
  }

  /// Numbers the labels in the order in which they appear.
  void NumberGroups() {
    const int column = RequireColumn(xTable_, recipe_.groupColumn);
    std::unordered_map<std::string, int> numberOf;
    for (const int row : rows_.x) {
      const std::string label = xTable_.Cell(row, column);
      if (ReadTableCell(xTable_, label).kind == CellKind::Missing) {
        Refuse(xTable_, xTable_.RowPlace(row) + " has no group in column " + Quoted(recipe_.groupColumn),
               InCell(row, recipe_.groupColumn, label));
      }
      pair_.groups.push_back(numberOf.emplace(label, static_cast<int>(numberOf.size())).first->second);
      pair_.groupLabels.push_back(label);
    }
    pair_.rounds = static_cast<int>(numberOf.size());
    if (pair_.rounds > 1) return;
    Refuse(xTable_, "all rows have the same group in column " + Quoted(recipe_.groupColumn),
           InColumn(recipe_.groupColumn));
  }

  void MakeGroups() {
    if (!recipe_.groupColumn.empty()) {
      NumberGroups();
      return;
    }
    const auto rows = static_cast<int>(rows_.x.size());
    pair_.rounds = std::min(recipe_.groups, rows);
    if (recipe_.judgeComponents && pair_.rounds < recipe_.groups) {
      notes_->Add(std::to_string(recipe_.groups) + " groups are cut to " + std::to_string(rows) +
                  ", the number of rows");
    }
    pair_.groups = GetDeafultCVGroupsVector(rows, pair_.rounds);
  }

  const Table& xTable_;
  const Table& yTable_;
  const O2PLSRecipe& recipe_;
  Notes* notes_;
  BlockPair pair_;
  int xId_ = -1;
  int yId_ = -1;
  RowPairs rows_;
  int moved_ = 0;  ///< cells measured as the missing value
};

}  // namespace

BlockPair SelectBlocks(const Table& xTable, const Table& yTable, const O2PLSRecipe& recipe, Notes* notes) {
  return Selection(xTable, yTable, recipe, notes).Select();
}

}  // namespace kalmia::analysis
