#include "kalmia/analysis/validation/PCAValidation.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <set>
#include <unordered_map>
#include <utility>

#include "kalmia/analysis/fit/internal/FitSetup.h"
#include "kalmia/analysis/fit/internal/RecipeChecks.h"
#include "kalmia/analysis/fit/internal/SelectData.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"
#include "kalmia/analysis/validation/ColumnFolds.h"
#include "kalmia/analysis/validation/internal/PCARound.h"
#include "kalmia/analysis/validation/internal/RefitRounds.h"
#include "kalmia/analysis/validation/internal/SourceX.h"

namespace kalmia::analysis {

namespace {

/// The factors of the scaling of the whole table.
std::vector<double> FactorsOf(const ModelData& data, NCScale::Scaling scaling) {
  NCDataMatrix<float> x = data.x;
  const ColumnScaling ofTable = ScaleColumns(scaling, data.xNames, &x, data.xShifts);
  std::vector<double> factors;
  for (int k = 1; k <= x.SizeColumns(); ++k) factors.push_back(FactorOf(ofTable, k));
  return factors;
}

/// Of each row the present cells outside the group of columns that leaves it the fewest.
std::vector<int> FewestCellsOutside(const NCDataMatrix<float>& x, const ColumnFolds& folds) {
  std::vector<int> fewest;
  for (int row = 1; row <= x.SizeRows(); ++row) {
    std::vector<int> present(static_cast<std::size_t>(folds.groups), 0);
    for (int k = 1; k <= x.SizeColumns(); ++k) {
      const auto group = static_cast<std::size_t>(folds.groupOfColumn[static_cast<std::size_t>(k) - 1]);
      if (x[row][k] != kMissingCell<float>) ++present[group];
    }
    const int most = *std::max_element(present.begin(), present.end());
    fewest.push_back(x.SizeColumns() - x[row].GetNumMisVal() - most);
  }
  return fewest;
}

class PCARefitting {
 public:
  PCARefitting(const PCARecipe& recipe, const Table& table, const ValidationRecipe& validation, NCProgress* progress)
      : recipe_(recipe), validation_(validation), progress_(progress), work_(progress) {
    Notes ofTheFit;
    data_ = SelectData(table, recipe, /*y=*/{}, &ofTheFit, progress);
    RequireTwoColumns(table, data_);
    result_.folds = FoldsOf(recipe, table, data_, validation.folds, &result_.notes);
    source_ = std::make_unique<SourceX>(table, recipe, data_, progress);
    for (const std::string& name : data_.xNames) placeOf_.emplace(name, placeOf_.size());
    factors_ = FactorsOf(data_, recipe.scaling);
    asked_ = MostComponents(data_, recipe.components, &ofTheFit);
  }

  PCAValidation Run() {
    LimitComponents();
    FitRounds();
    Judge();
    Choose();
    TakeChosen();
    result_.rowNames = std::move(data_.rowNames);
    result_.xNames = std::move(data_.xNames);
    return std::move(result_);
  }

 private:
  const Folds& Partition() const { return result_.folds; }
  std::size_t Models() const { return static_cast<std::size_t>(most_) + 1; }

  void LimitComponents() {
    const ColumnFolds folds = MakeColumnFolds(data_.xNames.size(), Partition().groups);
    result_.columnGroups = folds.groups;
    most_ = std::min(asked_, MostComponentsOfColumns(data_.xNames.size(), folds.groups));
    SayWhyNone("without one of the " + Counted(static_cast<std::size_t>(folds.groups), "group") + " of its " +
               Counted(data_.xNames.size(), "column") + " too few cells of a row are left to score it");
    for (int repeat = 0; repeat < Partition().Repeats(); ++repeat) {
      for (int group = 0; group < Partition().groups; ++group) {
        most_ = std::min(most_, static_cast<int>(RowsOutsideGroup(Partition(), repeat, group).size()) - 1);
      }
    }
    SayWhyNone("a round has a single row to learn from");
    rows_ = RowsToPredict(FewestCellsOutside(data_.x, folds), most_);
    most_ = rows_.mostComponents;
    SayWhyNone("too many rows have too few cells outside a group of columns");
    const auto out = static_cast<std::size_t>(std::count(rows_.takesPart.begin(), rows_.takesPart.end(), false));
    result_.errors.unpredictedRows = out;
    if (out == 0) return;
    result_.notes.Add("with too few cells outside a group of columns, and in no figure of the validation: " +
                      Counted(out, "row"));
  }

  /// The first reason counts.
  void SayWhyNone(const std::string& reason) {
    if (most_ == 0 && asked_ > 0 && result_.whyNoneJudged.empty()) result_.whyNoneJudged = reason;
  }

  void FitRounds() {
    const std::size_t rows = data_.rows.size();
    result_.errors.rowErrors = RealMatrix(rows, Models());
    columnErrors_ = RealMatrix(data_.xNames.size(), Models());
    distances_.assign(static_cast<std::size_t>(Partition().Repeats()), RealMatrix(rows, Models(), kNotANumber));
    ForEachRound(Partition(), &work_, [this](int repeat, int group) { FitRound(repeat, group); });
    NoteColumnsWithoutSpread("X", data_.xNames, withoutSpread_, &result_.notes);
  }

  void FitRound(int repeat, int group) {
    const std::vector<std::size_t> leftOut = RowsOfGroup(Partition(), repeat, group);
    const SplitX x = source_->Split(RowsOutsideGroup(Partition(), repeat, group), leftOut, work_.SilentBar());
    const PCARound round(x.names, x.fitted, recipe_.scaling, most_, Partition().groups, &work_);
    most_ = std::min(most_, round.Components());
    SayWhyNone("nothing is left of X in some round");
    withoutSpread_.insert(round.ColumnsWithoutSpread().begin(), round.ColumnsWithoutSpread().end());
    std::vector<std::size_t> places;  // of the round's columns, behind the last one where X has no such column
    for (const std::string& name : x.names) {
      const auto place = placeOf_.find(name);
      places.push_back(place != placeOf_.end() ? place->second : placeOf_.size());
    }
    round.JudgeRows(x.leftOut, &work_, [&](std::size_t i, const PCARound::LeftOutRow& row) {
      for (std::size_t a = 0; a < Models(); ++a) {
        distances_[static_cast<std::size_t>(repeat)](leftOut[i], a) = row.distances[a];
      }
      if (rows_.takesPart[leftOut[i]]) AddErrors(row.errors, places, leftOut[i]);
    });
  }

  void AddErrors(const RealMatrix& errors, const std::vector<std::size_t>& places, std::size_t row) {
    for (std::size_t k = 0; k < places.size(); ++k) {
      if (places[k] == placeOf_.size() || std::isnan(errors(k, 0))) continue;
      for (std::size_t a = 0; a < Models(); ++a) {
        const double error = errors(k, a) * factors_[places[k]];
        result_.errors.rowErrors(row, a) += error * error / Partition().Repeats();
        columnErrors_(places[k], a) += error * error;
      }
    }
  }

  /// Rounds may have found fewer components than those before them.
  void Judge() {
    RealMatrix kept(data_.rows.size(), Models(), kNotANumber);
    for (std::size_t i = 0; i < kept.rows; ++i) {
      for (std::size_t a = 0; rows_.takesPart[i] && a < Models(); ++a) kept(i, a) = result_.errors.rowErrors(i, a);
    }
    result_.errors.rowErrors = std::move(kept);
    if (result_.errors.unpredictedRows == data_.rows.size()) {
      throw BadData("no row has cells outside each group of columns, to be predicted from");
    }
    SumRowErrors(&result_.errors);
  }

  /// Components that the model of all rows has, of those that were asked for.
  int OfAllRows() {
    if (static_cast<std::size_t>(asked_) <= result_.errors.MostComponents()) return asked_;
    std::vector<std::size_t> all(data_.rows.size());
    std::iota(all.begin(), all.end(), std::size_t{0});
    const SplitX x = source_->Split(all, {}, work_.SilentBar());
    return PCARound(x.names, x.fitted, recipe_.scaling, asked_, Partition().groups, &work_).Components();
  }

  void Choose() {
    if (recipe_.components) {
      result_.components = OfAllRows();
      if (result_.IsJudged()) return;
      result_.notes.Add("the validation ends at " + Counted(result_.errors.MostComponents(), "component") +
                        ", the most that all its rounds can have: it does not judge " +
                        std::to_string(result_.components));
      return;
    }
    const std::vector<int>* groups = Partition().names.empty() ? nullptr : &Partition().groupOfRow.front();
    result_.choice = ChooseComponents(result_.errors.rowErrors, validation_.selection, groups, progress_);
    result_.components = static_cast<int>(result_.choice->chosen);
  }

  void TakeChosen() {
    if (!result_.IsJudged()) return;
    const auto a = static_cast<std::size_t>(result_.components);
    for (std::size_t k = 0; k < data_.xNames.size(); ++k) {
      const double whole = columnErrors_(k, 0);
      result_.columnQ2.push_back(whole > 0.0 ? 1.0 - columnErrors_(k, a) / whole : kNotANumber);
    }
    for (const RealMatrix& ofRepeat : distances_) {
      for (std::size_t i = 0; i < ofRepeat.rows; ++i) result_.distances.push_back(ofRepeat(i, a));
    }
  }

  const PCARecipe& recipe_;
  const ValidationRecipe& validation_;
  NCProgress* progress_;
  WorkProgress work_;
  ModelData data_;
  std::unique_ptr<SourceX> source_;
  std::unordered_map<std::string, std::size_t> placeOf_;  ///< of the columns
  std::vector<double> factors_;                           ///< of the columns, in the whole table
  int asked_ = 0;
  int most_ = 0;  ///< components that all rounds so far have
  PredictableRows rows_;
  RealMatrix columnErrors_;            ///< columns by models: sums of squares over all repeats
  std::vector<RealMatrix> distances_;  ///< by repeat: rows by models
  std::set<std::string> withoutSpread_;
  PCAValidation result_;
};

}  // namespace

PCAValidation Validate(const PCARecipe& recipe, const Table& table, const ValidationRecipe& validation,
                       NCProgress* progress) {
  CheckRecipe(recipe);
  return WithoutLibraryErrors([&] { return PCARefitting(recipe, table, validation, progress).Run(); });
}

}  // namespace kalmia::analysis
