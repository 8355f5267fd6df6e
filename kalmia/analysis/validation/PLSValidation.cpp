#include "kalmia/analysis/validation/PLSValidation.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <numeric>
#include <set>
#include <unordered_map>
#include <utility>

#include "kalmia/analysis/fit/ModelData.h"
#include "kalmia/analysis/fit/internal/RecipeChecks.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"
#include "kalmia/analysis/validation/internal/RoundModel.h"
#include "kalmia/analysis/validation/internal/SourceX.h"

namespace kalmia::analysis {

namespace {

constexpr double kShare = 0.95;  ///< of the jack-knife's intervals
constexpr double kNoLeast = -std::numeric_limits<double>::infinity();
constexpr int kFewDegrees = 2;  ///< of the jack-knife: with so many its intervals mean little

Folds FoldsOf(const PLSRecipe& recipe, const Table& table, const ModelData& data, const FoldRecipe& folds,
              Notes* notes) {
  if (!recipe.groupColumn.empty()) {
    const int column = RequireColumn(table, recipe.groupColumn);
    std::vector<std::string> labels;
    for (const int row : data.rows) labels.push_back(table.Cell(row, column));
    return FoldsOfLabels(labels);
  }
  Folds made = MakeFolds(data.rows.size(), folds);
  if (folds.scheme != FoldScheme::LeaveOneOut && made.groups < folds.groups) {
    notes->Add(std::to_string(folds.groups) + " groups are cut to " + std::to_string(made.groups) +
               ", the number of rows");
  }
  return made;
}

class Validation {
 public:
  Validation(const PLSRecipe& recipe, const Table& table, const ValidationRecipe& validation, NCProgress* progress)
      : recipe_(recipe), validation_(validation), progress_(progress), work_(progress) {
    Notes ofTheFit;
    data_ = SelectData(table, recipe, recipe.y, &ofTheFit, progress);
    asked_ = MostComponents(data_, recipe.components, &ofTheFit);
    result_.folds = FoldsOf(recipe, table, data_, validation.folds, &result_.notes);
    source_ = std::make_unique<SourceX>(table, recipe, data_, progress);
    for (const std::string& name : data_.xNames) placeOf_.emplace(name, placeOf_.size());
  }

  PLSValidation Run() {
    FitAllRows();
    FitRounds();
    Judge();
    Choose();
    TakeChosen();
    result_.rowNames = std::move(data_.rowNames);
    result_.xNames = std::move(data_.xNames);
    result_.yNames = std::move(data_.yNames);
    return std::move(result_);
  }

 private:
  const Folds& Partition() const { return result_.folds; }

  /// The model that the jack-knife takes its rounds' coefficients about.
  void FitAllRows() {
    work_.Begin("validation: all rows");
    std::vector<std::size_t> all(data_.rows.size());
    std::iota(all.begin(), all.end(), std::size_t{0});
    const SplitX x = source_->Split(all, {}, work_.SilentBar());
    const RoundModel model(x.names, x.fitted, data_.yNames, data_.measuredY, recipe_.scaling, asked_, &work_);
    most_ = ofAllRows_ = model.Components();
    for (std::vector<std::vector<double>>& ofNumber : Coefficients(model, x.names)) {
      jackKnives_.emplace_back();
      for (std::vector<double>& ofY : ofNumber) jackKnives_.back().emplace_back(std::move(ofY), Partition().groups);
    }
  }

  /// With slopes in the order of X, of which the model may have other columns where steps were learnt anew.
  std::vector<std::vector<std::vector<double>>> Coefficients(const RoundModel& model,
                                                             const std::vector<std::string>& names) const {
    std::vector<std::size_t> places;
    for (const std::string& name : names) {
      const auto place = placeOf_.find(name);
      places.push_back(place != placeOf_.end() ? place->second : RoundModel::kNowhere);
    }
    return model.Coefficients(places, placeOf_.size());
  }

  void FitRounds() {
    const RealMatrix none(data_.rows.size(), data_.yNames.size(), kNotANumber);
    work_.Begin("validation");
    int round = 0;
    for (int repeat = 0; repeat < Partition().Repeats(); ++repeat) {
      predictions_.emplace_back(static_cast<std::size_t>(most_) + 1, none);
      distances_.emplace_back(data_.rows.size(), static_cast<std::size_t>(most_) + 1, kNotANumber);
      for (int group = 0; group < Partition().groups; ++group) {
        work_.MoveToPart(++round, Partition().Rounds());
        FitRound(repeat, group);
      }
    }
    for (std::vector<RealMatrix>& ofRepeat : predictions_) ofRepeat.resize(static_cast<std::size_t>(most_) + 1);
    NoteColumnsWithoutSpread();
  }

  void FitRound(int repeat, int group) try {
    const std::vector<std::size_t> fitted = RowsOutsideGroup(Partition(), repeat, group);
    const std::vector<std::size_t> leftOut = RowsOfGroup(Partition(), repeat, group);
    const SplitX x = source_->Split(fitted, leftOut, work_.SilentBar());
    const RoundModel model(x.names, x.fitted, data_.yNames, RowsOfColumns(data_.measuredY, fitted), recipe_.scaling,
                           most_, &work_);
    most_ = std::min(most_, model.Components());
    withoutSpread_.insert(model.ColumnsWithoutSpread().begin(), model.ColumnsWithoutSpread().end());
    TakePredictions(model.Predict(x.leftOut, &work_), leftOut);
    const std::vector<std::vector<std::vector<double>>> coefficients = Coefficients(model, x.names);
    for (std::size_t a = 0; a <= static_cast<std::size_t>(most_); ++a) {
      for (std::size_t j = 0; j < coefficients[a].size(); ++j) jackKnives_[a][j].AddRound(coefficients[a][j]);
    }
  } catch (const BadData& failure) {
    throw BadData("while " + GroupText(repeat, group) + " is left out: " + failure.what(), failure.WhatHelps(),
                  failure.Place());
  }

  std::string GroupText(int repeat, int group) const {
    const std::vector<std::string>& names = Partition().names;
    const std::string text =
        names.empty() ? std::to_string(group + 1) : Quoted(names[static_cast<std::size_t>(group)]);
    return "group " + text + (Partition().Repeats() > 1 ? " of repeat " + std::to_string(repeat + 1) : "");
  }

  void TakePredictions(const LeftOutRows& rows, const std::vector<std::size_t>& places) {
    for (std::size_t a = 0; a <= static_cast<std::size_t>(most_); ++a) {
      for (std::size_t i = 0; i < places.size(); ++i) {
        distances_.back()(places[i], a) = rows.distances(i, a);
        for (std::size_t j = 0; j < data_.yNames.size(); ++j) {
          predictions_.back()[a](places[i], j) = rows.predicted[a](i, j);
        }
      }
    }
  }

  void NoteColumnsWithoutSpread() {
    std::vector<std::string> names;  // in the order of X, of which alone some columns have spread
    for (const std::string& name : data_.xNames) {
      if (withoutSpread_.count(name) > 0) names.push_back(name);
    }
    if (names.empty()) return;
    result_.notes.Add("without two different cells in some round of the validation, where they have no say: " +
                      Counted(names.size(), "X column") + " (" + Listed(names, kColumnsNamed) + ")");
  }

  RealMatrix MeasuredY() const {
    RealMatrix y(data_.rows.size(), data_.yNames.size());
    for (std::size_t j = 0; j < y.columns; ++j) {
      for (std::size_t i = 0; i < y.rows; ++i) y(i, j) = data_.measuredY[j][i];
    }
    return y;
  }

  void Judge() {
    result_.errors = JudgeLeftOutRows(MeasuredY(), predictions_, progress_);
    if (result_.errors.unpredictedRows == 0) return;
    result_.notes.Add("not predicted while left out, for want of cells, and in no figure of the validation: " +
                      Counted(result_.errors.unpredictedRows, "row"));
  }

  void Choose() {
    if (recipe_.components) {
      result_.components = ofAllRows_;
      if (!result_.IsJudged()) {
        result_.notes.Add("the validation ends at " + Counted(result_.errors.MostComponents(), "component") +
                          ", the most that all its rounds can have: it does not judge " +
                          std::to_string(result_.components));
      }
      return;
    }
    const std::vector<int>* groups = Partition().names.empty() ? nullptr : &Partition().groupOfRow.front();
    result_.choice = ChooseComponents(result_.errors.rowErrors, validation_.selection, groups, progress_);
    result_.components = static_cast<int>(result_.choice->chosen);
  }

  void TakeChosen() {
    if (!result_.IsJudged()) return;
    const auto a = static_cast<std::size_t>(result_.components);
    result_.predicted = result_.errors.predicted[a];
    for (std::size_t j = 0; j < data_.yNames.size(); ++j) {
      std::vector<double> squares;
      for (std::size_t i = 0; i < data_.rows.size(); ++i) squares.push_back(result_.errors.squaredErrors[a](i, j));
      result_.cvAnova.push_back(ComputeCvAnova(data_.measuredY[j], squares, result_.components));
      result_.coefficients.push_back(jackKnives_[a][j].Result(kShare, kNoLeast, progress_));
    }
    for (const RealMatrix& ofRepeat : distances_) {
      for (std::size_t i = 0; i < ofRepeat.rows; ++i) result_.distances.push_back(ofRepeat(i, a));
    }
    const int degrees = result_.coefficients.front().degrees;
    if (degrees > kFewDegrees) return;
    result_.notes.Add("the jack-knife has " + Counted(static_cast<std::size_t>(degrees), "degree") +
                      " of freedom: its intervals are wide and mean little");
  }

  const PLSRecipe& recipe_;
  const ValidationRecipe& validation_;
  NCProgress* progress_;
  WorkProgress work_;
  ModelData data_;
  std::unique_ptr<SourceX> source_;
  std::unordered_map<std::string, std::size_t> placeOf_;  ///< of the X columns
  int asked_ = 0;      ///< components at most
  int ofAllRows_ = 0;  ///< that the model of all rows has
  int most_ = 0;       ///< that all rounds so far have
  std::vector<std::vector<RealMatrix>> predictions_;  ///< by repeat and number of components
  std::vector<RealMatrix> distances_;                 ///< by repeat: rows by numbers of components
  std::vector<std::vector<JackKnife>> jackKnives_;    ///< by number of components and Y column
  std::set<std::string> withoutSpread_;               ///< X columns, in some round
  PLSValidation result_;
};

}  // namespace

PLSValidation Validate(const PLSRecipe& recipe, const Table& table, const ValidationRecipe& validation,
                       NCProgress* progress) {
  CheckRecipe(recipe);
  return WithoutLibraryErrors([&] { return Validation(recipe, table, validation, progress).Run(); });
}

}  // namespace kalmia::analysis
