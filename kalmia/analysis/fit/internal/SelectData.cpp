#include "kalmia/analysis/fit/internal/SelectData.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <unordered_map>
#include <utility>

#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/steps/internal/PreprocessedX.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/table/internal/ReadTableCell.h"
#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/pcapls/PCACrossValidation.h"

namespace kalmia::analysis {

namespace {

constexpr std::size_t kReplicatesNamed = 3;
constexpr std::size_t kRowsNamed = 10;  ///< a note names so many rows, and counts the others
constexpr int kMostAutomaticComponents = 15;

/// "KIND: a, b"; empty without names. A failure names so many columns, and counts the others.
std::string Named(const std::string& kind, const std::vector<std::string>& names) {
  return names.empty() ? "" : kind + ": " + Listed(names, kColumnsNamed);
}

constexpr double kCopied = 0.999999;  ///< correlation, either way, above which a column copies another
constexpr int kFewestCommonCells = 5;  ///< that tell a copy from chance

/// Whether the cells that both have, at least five, lie on a line. A hole is not a number.
bool AreCopies(const std::vector<double>& a, const std::vector<double>& b) {
  double common = 0.0, aSum = 0.0, bSum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::isnan(a[i]) || std::isnan(b[i])) continue;
    common += 1.0;
    aSum += a[i];
    bSum += b[i];
  }
  if (common < kFewestCommonCells) return false;
  double products = 0.0, aSquares = 0.0, bSquares = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::isnan(a[i]) || std::isnan(b[i])) continue;
    const double ofA = a[i] - aSum / common, ofB = b[i] - bSum / common;
    products += ofA * ofB;
    aSquares += ofA * ofA;
    bSquares += ofB * ofB;
  }
  return std::fabs(products) > kCopied * std::sqrt(aSquares) * std::sqrt(bSquares);
}

/// How many evenly spaced rows are compared first: most columns that are no copy show it there. The rows with the least
/// and the largest Y come on top, so that dummies of classes differ among them.
constexpr std::size_t kSpreadProbes = 14;

/// A Y column, and what shows at a glance that most columns do not copy it.
struct CopiedColumn {
  const NumberColumn* column = nullptr;
  double squares = 0.0;  ///< of its cells about their mean
  std::set<std::size_t> probes;  ///< rows
};

CopiedColumn CopiedColumnOf(const NumberColumn& column) {
  CopiedColumn copied = {&column, 0.0, {}};
  double sum = 0.0, count = 0.0;
  std::size_t least = column.cells.size(), most = least;
  for (std::size_t i = 0; i < column.cells.size(); ++i) {
    const double cell = column.cells[i];
    if (std::isnan(cell)) continue;
    sum += cell;
    count += 1.0;
    if (least == column.cells.size() || cell < column.cells[least]) least = i;
    if (most == column.cells.size() || cell > column.cells[most]) most = i;
  }
  if (count == 0.0) return copied;
  for (const double cell : column.cells) {
    if (!std::isnan(cell)) copied.squares += (cell - sum / count) * (cell - sum / count);
  }
  copied.probes = {least, most};
  for (std::size_t k = 0; k < kSpreadProbes; ++k) copied.probes.insert(k * column.cells.size() / kSpreadProbes);
  return copied;
}

/// Whether the probes alone show that x is no copy. The line through all cells of a copy leaves at most 1 - r^2 of the
/// squares of Y; the line that is fitted to the probes alone leaves no more of theirs.
bool LeavesTheLine(const std::vector<double>& x, const CopiedColumn& y) {
  const std::vector<double>& cells = y.column->cells;
  double common = 0.0, xSum = 0.0, ySum = 0.0;
  for (const std::size_t i : y.probes) {
    if (std::isnan(x[i]) || std::isnan(cells[i])) continue;
    common += 1.0;
    xSum += x[i];
    ySum += cells[i];
  }
  double products = 0.0, xSquares = 0.0, left = 0.0;
  for (const std::size_t i : y.probes) {
    if (std::isnan(x[i]) || std::isnan(cells[i])) continue;
    const double ofX = x[i] - xSum / common, ofY = cells[i] - ySum / common;
    products += ofX * ofY;
    xSquares += ofX * ofX;
    left += ofY * ofY;
  }
  if (xSquares > 0.0) left -= products / xSquares * products;
  // Twice that, so that no rounding tells a copy from its line.
  return left > 2.0 * (1.0 - kCopied * kCopied) * y.squares;
}

/// A column as the model sees it.
struct SingleColumn {
  std::string name;
  double shift = 0.0;
  std::vector<float> cells;
};

void FillMatrix(const std::vector<SingleColumn>& columns, int rows, NCDataMatrix<float>* matrix,
                std::vector<std::string>* names, std::vector<double>* shifts) {
  std::vector<std::vector<float>> cells;
  for (const SingleColumn& column : columns) {
    names->push_back(column.name);
    shifts->push_back(column.shift);
    cells.push_back(column.cells);
  }
  *matrix = MatrixOf(cells, rows);
  ClearZeros(shifts);
}

/// Works from the columns of the table to the matrices.
class Selection {
 public:
  Selection(const Table& table, const XRecipe& recipe, const std::vector<std::string>& y, Notes* notes)
      : table_(table), recipe_(recipe), yArguments_(y), notes_(notes) {}

  /// Takes the steps and the groups of a fit; without them X has no steps, and rows have no groups.
  void TakeFit(const FitRecipe& fit, NCProgress* progress) {
    fit_ = &fit;
    progress_ = progress;
  }

  /// A column whose texts are the classes; names of classes that it may hold, none for any.
  void TakeClasses(const std::string& column, const std::vector<std::string>& names) {
    classColumn_ = RequireColumn(table_, column);
    classNames_ = names;
  }

  ModelData Select() {
    NameColumns();
    if (classColumn_ < 0) ReadY();
    ReadX();
    Preprocess();
    LeaveOutRows();
    if (classColumn_ >= 0) FormDummies();
    FormSingles();
    if (data_.rows.size() < 2) Refuse(table_, "there is only one row with X cells: a model takes two or more");
    LeaveOutColumns();
    LeaveOutConstantY();
    RequireVariance();
    FillMatrices();
    if (fit_ != nullptr) MakeGroups();
    NoteMovedCells(moved_, notes_);
    return std::move(data_);
  }

 private:
  const std::string& Name(int column) const { return table_.ColumnNames()[static_cast<std::size_t>(column)]; }

  void NameColumns() {
    yColumns_ = classColumn_ >= 0 ? std::vector<int>{classColumn_} : RequireColumns(table_, yArguments_);
    excluded_ = ColumnsToExclude(table_, recipe_.exclude);
    excluded_.insert(excluded_.end(), yColumns_.begin(), yColumns_.end());
    if (!recipe_.id.empty()) idColumn_ = RequireColumn(table_, recipe_.id);
    if (fit_ != nullptr && !fit_->groupColumn.empty()) groupColumn_ = RequireColumn(table_, fit_->groupColumn);
    for (const int column : {idColumn_, groupColumn_}) {
      if (column < 0) continue;
      if (std::find(yColumns_.begin(), yColumns_.end(), column) != yColumns_.end()) {
        Refuse(table_, "column " + Quoted(Name(column)) + " cannot be Y and name rows or groups",
               InColumn(Name(column)));
      }
      excluded_.push_back(column);
    }
    data_.rowNames = RowNames(table_, idColumn_);
  }

  void ReadY() {
    for (const int column : yColumns_) {
      const ColumnKind kind = KindOfColumn(table_, column);
      const std::string what = "the Y column " + Quoted(Name(column));
      if (kind == ColumnKind::Texts) Refuse(table_, what + " holds text, not numbers", InColumn(Name(column)));
      if (kind == ColumnKind::Empty) Refuse(table_, what + " has no value", InColumn(Name(column)));
      y_.push_back({Name(column), ReadNumbers(table_, column)});
    }
  }

  void RequireKnown(const std::vector<std::string>& labels) const {
    if (classNames_.empty()) return;
    for (std::size_t i = 0; i < labels.size(); ++i) {
      const bool isKnown = std::find(classNames_.begin(), classNames_.end(), labels[i]) != classNames_.end();
      if (isKnown || labels[i].empty()) continue;
      Refuse(table_, table_.RowPlace(data_.rows[i]) + " is of the class " + Quoted(labels[i]) + " in column " +
                         Quoted(Name(classColumn_)) + ", which is none of those that the model knows: " +
                         Listed(classNames_, kColumnsNamed),
             InCell(data_.rows[i], Name(classColumn_), labels[i]));
    }
  }

  Classes NumberClasses(const std::vector<std::string>& labels) const try {
    return ClassesOf(labels);
  } catch (const BadData& failure) {
    Refuse(table_, "the values of column " + Quoted(Name(classColumn_)) + " are no classes: " + failure.what(),
           InColumn(Name(classColumn_)));
  }

  /// Y is a dummy for each class, whose name it has.
  void FormDummies() {
    std::vector<std::string> labels;
    for (const int row : data_.rows) labels.push_back(LabelOf(table_, row, classColumn_));
    RequireKnown(labels);
    data_.classes = NumberClasses(labels);
    data_.classColumn = Name(classColumn_);
    const RealMatrix dummies = DummiesOf(*data_.classes);
    for (std::size_t c = 0; c < dummies.columns; ++c) {
      y_.push_back({data_.classes->names[c], {}});
      for (std::size_t i = 0; i < dummies.rows; ++i) y_.back().cells.push_back(dummies(i, c));
    }
  }

  void ReadX() {
    for (const int column : RequireColumnsOrAll(table_, recipe_.x)) {
      if (std::find(excluded_.begin(), excluded_.end(), column) != excluded_.end()) continue;
      const ColumnKind kind = KindOfColumn(table_, column);
      if (kind == ColumnKind::Texts) {
        data_.textColumns.push_back(Name(column));
      } else if (kind == ColumnKind::Empty && !HasSteps()) {
        data_.emptyColumns.push_back(Name(column));
      } else {
        x_.push_back({Name(column), ReadNumbers(table_, column)});
      }
    }
    if (!x_.empty()) return;
    std::string named = Named("empty columns", data_.emptyColumns);
    if (!named.empty()) Refuse(table_, "every cell of X is missing; " + named);
    named = Named("text columns", data_.textColumns);
    Refuse(table_, "no column of numbers is left for X" + (named.empty() ? "" : "; " + named));
  }

  bool HasSteps() const { return fit_ != nullptr && fit_->steps; }

  void Preprocess() {
    if (!HasSteps()) return;
    PreprocessedX made = PreprocessX(table_, idColumn_, *fit_->steps, x_, data_.textColumns, notes_, progress_);
    if (fit_->judgeComponents && !fit_->steps->chain) NoteLearntOfAllRows(made.chain, notes_);
    data_.chain = std::move(made.chain);
    data_.emptyColumns = std::move(made.emptyColumns);
    x_ = std::move(made.columns);
  }

  void LeaveOutRows() {
    for (int row = 0; row < table_.Rows(); ++row) {
      const auto r = static_cast<std::size_t>(row);
      const auto isThere = [r](const NumberColumn& column) { return !std::isnan(column.cells[r]); };
      const bool hasX = std::any_of(x_.begin(), x_.end(), isThere);
      if (hasX) {
        data_.rows.push_back(row);
      } else {
        data_.leftOutRows.push_back(data_.rowNames[r]);
      }
    }
    if (data_.leftOutRows.empty()) return;
    notes_->Add("left out, without any X cell: " + std::string(data_.leftOutRows.size() == 1 ? "row " : "rows ") +
                Listed(data_.leftOutRows, kRowsNamed));
    Keep(&data_.rowNames);
    for (NumberColumn& column : x_) Keep(&column.cells);
    for (NumberColumn& column : y_) Keep(&column.cells);
  }

  /// Keeps the cells of the rows that stay.
  template <class T>
  void Keep(std::vector<T>* cells) const {
    std::vector<T> kept;
    kept.reserve(data_.rows.size());
    for (const int row : data_.rows) kept.push_back((*cells)[static_cast<std::size_t>(row)]);
    cells->swap(kept);
  }

  /// Y is centred whatever becomes of X.
  void FormSingles() {
    const bool centresX = Centres(recipe_.scaling);
    for (const NumberColumn& column : x_) singleX_.push_back(Single(column, centresX));
    for (const NumberColumn& column : y_) singleY_.push_back(Single(column, /*isCentred=*/true));
    if (!centresX) NoteLosses();
    NoteCopiesOfY();
    x_.clear();
  }

  /// A column of X that repeats Y, left in by mistake, makes any model look good. Cost: a few rows of
  /// each pair of columns, and all of those pairs that lie on a line there.
  void NoteCopiesOfY() {
    std::vector<CopiedColumn> ys;
    for (const NumberColumn& y : y_) ys.push_back(CopiedColumnOf(y));
    for (const NumberColumn& x : x_) {
      std::vector<std::string> copied;
      for (const CopiedColumn& y : ys) {
        if (!LeavesTheLine(x.cells, y) && AreCopies(x.cells, y.column->cells)) copied.push_back(y.column->name);
      }
      if (copied.empty()) continue;
      notes_->Add("column " + Quoted(x.name) + " of X is a copy of " + YColumnsText(copied) +
                      ", but for shift and scale, so that any model of it predicts well",
                  Remedy::LeaveOutColumn);
    }
  }

  /// A class may be called by a number.
  std::string YColumnsText(const std::vector<std::string>& names) const {
    const char* kind = !data_.classes ? "" : names.size() == 1 ? "the dummy of class " : "the dummies of classes ";
    return kind + Listed(names, kColumnsNamed);
  }

  /// Constant columns are left out, and lose nothing.
  void NoteLosses() {
    std::vector<std::string> losing;
    for (std::size_t k = 0; k < x_.size(); ++k) {
      if (!IsConstant(singleX_[k].cells) && LosesDigits(x_[k].cells)) losing.push_back(x_[k].name);
    }
    NoteLostDigits(losing, notes_);
  }

  SingleColumn Single(const NumberColumn& column, bool isCentred) {
    const double shift = isCentred ? ShiftOf(column.cells) : 0.0;
    return {column.name, shift, SingleCells(column.cells, shift, &moved_)};
  }

  void LeaveOutColumns() {
    std::vector<SingleColumn> varying;
    for (SingleColumn& column : singleX_) {
      if (!IsConstant(column.cells)) {
        varying.push_back(std::move(column));
      } else {
        data_.constantColumns.push_back(column.name);
      }
    }
    singleX_ = std::move(varying);
    NoteColumns("text columns", data_.textColumns);
    NoteColumns("constant columns", data_.constantColumns);
    NoteColumns("empty columns", data_.emptyColumns);
    if (singleX_.empty()) Refuse(table_, "every X column is constant or empty; " + LeftOutText(data_));
  }

  void NoteColumns(const std::string& kind, const std::vector<std::string>& names) {
    if (!names.empty()) notes_->Add("left out of X, " + kind + ": " + Listed(names));
  }

  /// Y columns that say nothing beside others that do. Where none varies, RequireVariance names the first.
  void LeaveOutConstantY() {
    std::vector<NumberColumn> y;
    std::vector<SingleColumn> singles;
    std::vector<std::string> constant;
    for (std::size_t j = 0; j < y_.size(); ++j) {
      if (y_[j].Present() > 0 && IsConstant(singleY_[j].cells)) {
        constant.push_back(y_[j].name);
      } else {
        y.push_back(y_[j]);
        singles.push_back(singleY_[j]);
      }
    }
    if (constant.empty() || y.empty()) return;
    y_ = std::move(y);
    singleY_ = std::move(singles);
    notes_->Add("left out of Y, constant columns: " + Listed(constant));
  }

  void RequireVariance() {
    const std::string where = data_.leftOutRows.empty() ? "" : " in the rows that have X cells";
    for (std::size_t j = 0; j < y_.size(); ++j) {
      const NumberColumn& column = y_[j];
      const std::string what = "the Y column " + Quoted(column.name) + " has no ";
      if (column.Present() == 0) Refuse(table_, what + "value" + where, InColumn(column.name));
      if (IsConstant(singleY_[j].cells)) Refuse(table_, what + "variance" + where, InColumn(column.name));
    }
  }

  void FillMatrices() {
    const auto rows = static_cast<int>(data_.rows.size());
    FillMatrix(singleX_, rows, &data_.x, &data_.xNames, &data_.xShifts);
    FillMatrix(singleY_, rows, &data_.y, &data_.yNames, &data_.yShifts);
    for (NumberColumn& column : y_) data_.measuredY.push_back(std::move(column.cells));
  }

  void MakeGroups() {
    const auto rows = static_cast<int>(data_.rows.size());
    if (groupColumn_ >= 0) {
      NumberGroups();
      return;
    }
    data_.rounds = std::min(fit_->groups, rows);
    if (fit_->judgeComponents && data_.rounds < fit_->groups) {
      notes_->Add(std::to_string(fit_->groups) + " groups are cut to " + std::to_string(rows) +
                  ", the number of rows");
    }
    if (fit_->judgeComponents) NoteReplicates(data_.rowNames, notes_);
    data_.groups = GetDeafultCVGroupsVector(rows, data_.rounds);
  }

  /// Numbers the values of the group column in the order in which they appear.
  void NumberGroups() {
    std::unordered_map<std::string, int> numberOf;
    for (const int row : data_.rows) {
      const std::string group = table_.Cell(row, groupColumn_);
      if (ReadTableCell(table_, group).kind == CellKind::Missing) {
        Refuse(table_, table_.RowPlace(row) + " has no group in column " + Quoted(Name(groupColumn_)),
               InCell(row, Name(groupColumn_), group));
      }
      data_.groups.push_back(numberOf.emplace(group, static_cast<int>(numberOf.size())).first->second);
    }
    data_.rounds = static_cast<int>(numberOf.size());
    if (data_.rounds < 2) {
      Refuse(table_, "all rows have the same group in column " + Quoted(Name(groupColumn_)) +
                         ": cross-validation takes two groups or more",
             InColumn(Name(groupColumn_)));
    }
  }

  const Table& table_;
  const XRecipe& recipe_;
  const FitRecipe* fit_ = nullptr;
  const std::vector<std::string>& yArguments_;
  Notes* notes_;
  NCProgress* progress_ = nullptr;
  ModelData data_;
  std::vector<int> yColumns_;
  std::vector<int> excluded_;  ///< columns that X never takes
  int idColumn_ = -1;
  int groupColumn_ = -1;
  int classColumn_ = -1;
  std::vector<std::string> classNames_;
  std::vector<NumberColumn> x_;
  std::vector<NumberColumn> y_;
  std::vector<SingleColumn> singleX_;
  std::vector<SingleColumn> singleY_;
  int moved_ = 0;          ///< cells measured as the missing value
};

/// The column that has the classes; empty where Y is numbers.
std::string ClassColumn(const Table& table, const YRecipe& recipe) {
  if (!recipe.classes.empty()) return recipe.classes;
  const std::vector<int> columns = RequireColumns(table, recipe.y);
  for (const int column : columns) {
    if (KindOfColumn(table, column) != ColumnKind::Texts) continue;
    const std::string& name = table.ColumnNames()[static_cast<std::size_t>(column)];
    if (columns.size() == 1) return name;
    throw BadRequest("the Y column " + Quoted(name) + " holds texts: classes are modelled alone, without other columns",
                     FailurePlace{{}, name, {}, "y"});
  }
  return "";
}

}  // namespace

ModelData SelectData(const Table& table, const FitRecipe& recipe, const std::vector<std::string>& y,
                     Notes* notes, NCProgress* progress) {
  Selection selection(table, recipe, y, notes);
  selection.TakeFit(recipe, progress);
  return selection.Select();
}

ModelData SelectXAndY(const Table& table, const XRecipe& recipe, const std::vector<std::string>& y, Notes* notes) {
  return Selection(table, recipe, y, notes).Select();
}

ModelData SelectData(const Table& table, const YRecipe& recipe, Notes* notes, NCProgress* progress) {
  Selection selection(table, recipe, recipe.y, notes);
  selection.TakeFit(recipe, progress);
  const std::string classes = ClassColumn(table, recipe);
  if (!classes.empty()) {
    selection.TakeClasses(classes, recipe.classNames);
  } else if (recipe.priors != ClassPriors::Equal) {
    throw BadRequest("priors are of classes, and Y holds numbers", Remedy::NameClasses, InSetting("priors"));
  }
  return selection.Select();
}

int CountYColumns(const Table& table, const YRecipe& recipe) {
  const std::string classes = ClassColumn(table, recipe);
  if (classes.empty()) {
    const std::size_t named = RequireColumns(table, recipe.y).size();
    if (named == 1) return 1;
    Notes none;
    return static_cast<int>(SelectData(table, recipe, &none, /*progress=*/nullptr).yNames.size());
  }
  const int column = RequireColumn(table, classes);
  std::vector<std::string> labels;
  for (int row = 0; row < table.Rows(); ++row) labels.push_back(LabelOf(table, row, column));
  return static_cast<int>(ClassesOf(labels).names.size());
}

void NoteReplicates(const std::vector<std::string>& rowNames, Notes* notes) {
  std::unordered_map<std::string, int> counts;
  for (const std::string& name : rowNames) ++counts[name];
  std::vector<std::string> replicated;
  for (const std::string& name : rowNames) {
    int& count = counts[name];
    if (!name.empty() && count > 1) replicated.push_back(name);
    count = 0;  // named once
  }
  if (replicated.empty()) return;
  notes->Add("names of several rows: " + Listed(replicated, kReplicatesNamed) +
                 ". Replicates should be left out together, or a row's twin that stays in tells its value",
             Remedy::NameGroups);
}

std::string LeftOutText(const ModelData& data) {
  std::string text = Named("constant columns", data.constantColumns);
  const std::string empty = Named("empty columns", data.emptyColumns);
  if (!text.empty() && !empty.empty()) text += "; ";
  return text + empty;
}

int MostComponents(const ModelData& data, const std::optional<int>& asked, Notes* notes) {
  const int most = std::min(data.x.SizeRows() - 1, data.x.SizeColumns());
  if (!asked) return std::min(most, kMostAutomaticComponents);
  if (*asked > most) {
    notes->Add(std::to_string(*asked) + " components are cut to " + std::to_string(most) + ": there are " +
               Counted(static_cast<std::size_t>(data.x.SizeRows()), "row") + " and " +
               Counted(static_cast<std::size_t>(data.x.SizeColumns()), "X column"));
  }
  return std::min(*asked, most);
}

}  // namespace kalmia::analysis
