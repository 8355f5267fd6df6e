#include "kalmia/analysis/validation/internal/YRefits.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <set>
#include <utility>

#include "kalmia/analysis/fit/internal/SelectData.h"
#include "kalmia/analysis/model/DiscriminantRule.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/validation/internal/RefitRounds.h"
#include "kalmia/analysis/validation/internal/RoundFits.h"
#include "kalmia/analysis/validation/internal/SourceX.h"

namespace kalmia::analysis {

namespace {

constexpr double kShare = 0.95;  ///< of the jack-knife's intervals
constexpr double kNoLeast = -std::numeric_limits<double>::infinity();
constexpr std::size_t kShareThatMayBeLost = 10;  ///< of the rows, one in so many
constexpr int kFewDegrees = 2;  ///< of the jack-knife: with so many its intervals mean little

/// Chooses the model by some rows alone, from 0 among those that the model sees.
using ChoiceByRows = std::function<std::size_t(const std::vector<std::size_t>& rows, NCProgress* progress)>;

class Refitting {
 public:
  /// `chooseBy` may be empty: then nothing is nested. `rows`, from 0 among those that the model sees, are all of them
  /// where it is null.
  Refitting(const YRefits& refits, ChoiceByRows chooseBy, const Table& table, const ValidationRecipe& validation,
            NCProgress* progress, const std::vector<std::size_t>* rows)
      : refits_(refits),
        family_(refits.makeFamily()),
        chooseBy_(std::move(chooseBy)),
        validation_(validation),
        progress_(progress),
        work_(progress) {
    Notes ofTheFit;
    data_ = SelectData(table, refits_.recipe, &ofTheFit, progress);
    xRows_ = AllRows();
    if (rows != nullptr) KeepRows(*rows);
    result_.folds = FoldsOf(refits_.recipe, table, data_, validation.folds, &result_.notes);
    if (chooseBy_) RequireRowsToNest(result_.folds, refits_.recipe.groupColumn);
    limits_ = Limits();
    fits_ = std::make_unique<RoundFits>(
        RefittedModel{refits_.recipe, table, data_, xRows_, result_.folds, *family_}, limits_, progress, &work_);
  }

  RefitValidation Run() {
    FitAllRows();
    FitRounds();
    Judge();
    Choose();
    TakeChosen();
    Nest();
    result_.rowNames = std::move(data_.rowNames);
    result_.xNames = std::move(data_.xNames);
    result_.yNames = std::move(data_.yNames);
    return std::move(result_);
  }

 private:
  /// Of the model, from 0.
  std::vector<std::size_t> AllRows() const {
    std::vector<std::size_t> all(data_.rows.size());
    std::iota(all.begin(), all.end(), std::size_t{0});
    return all;
  }

  void KeepRows(const std::vector<std::size_t>& rows) {
    xRows_ = rows;
    data_.measuredY = RowsOfColumns(data_.measuredY, rows);
    data_.rows = Kept(data_.rows, rows);
    data_.rowNames = Kept(data_.rowNames, rows);
    if (data_.classes) data_.classes->classOfRow = Kept(data_.classes->classOfRow, rows);
  }

  template <class T>
  static std::vector<T> Kept(const std::vector<T>& all, const std::vector<std::size_t>& rows) {
    std::vector<T> kept;
    for (const std::size_t row : rows) kept.push_back(all[row]);
    return kept;
  }

  const Folds& Partition() const { return result_.folds; }

  /// Of a given number of models the rows and columns alone limit the components.
  SeriesLimits Limits() const {
    constexpr int kAny = std::numeric_limits<int>::max();
    if (refits_.models) return {*refits_.models, kAny};
    Notes none;
    return {kAny, MostComponents(data_, std::nullopt, &none)};
  }

  /// A model whose number is given is the only one whose coefficients and distances are asked for.
  int FirstOfCoefficients() const { return refits_.models ? limits_.models : 0; }

  /// The model that the jack-knife takes its rounds' coefficients about.
  void FitAllRows() {
    work_.Begin("validation: all rows");
    RoundFigures figures = fits_->Figures(0, limits_, FirstOfCoefficients());
    family_->LearnBlock(figures.block);
    result_.block = figures.block;
    result_.r2x = figures.r2x;
    result_.r2y = figures.r2y;
    limits_ = Limits();
    limits_.models = ofAllRows_ = figures.lastModel;
    vipJackKnives_ = AboutNumbers(std::move(figures.importances));
    jackKnives_ = AboutNumbers(std::move(figures.coefficients));
  }

  using JackKnives = std::vector<std::vector<JackKnife>>;

  JackKnives AboutNumbers(std::vector<std::vector<std::vector<double>>> numbers) const {
    JackKnives jackKnives;
    for (std::vector<std::vector<double>>& ofModel : numbers) {
      jackKnives.emplace_back();
      for (std::vector<double>& vector : ofModel) jackKnives.back().emplace_back(std::move(vector), Partition().groups);
    }
    return jackKnives;
  }

  /// To the models from `first` on that all rounds so far can have.
  void AddRound(const std::vector<std::vector<std::vector<double>>>& numbers, std::size_t first,
                JackKnives* jackKnives) const {
    for (std::size_t a = first; a < std::min(Models(), jackKnives->size()); ++a) {
      for (std::size_t j = 0; j < (*jackKnives)[a].size(); ++j) (*jackKnives)[a][j].AddRound(numbers[a][j]);
    }
  }

  std::size_t Models() const { return static_cast<std::size_t>(limits_.models) + 1; }

  void FitRounds() {
    const RealMatrix none(data_.rows.size(), data_.yNames.size(), kNotANumber);
    for (int repeat = 0; repeat < Partition().Repeats(); ++repeat) {
      predictions_.emplace_back(Models(), none);
      distances_.emplace_back(data_.rows.size(), Models(), kNotANumber);
    }
    if (data_.classes) {
      classValues_.assign(static_cast<std::size_t>(Partition().Repeats()), std::vector<RealMatrix>(Models(), none));
      NoteClasses();
    }
    ForEachRound(Partition(), &work_, [this](int repeat, int group) { FitRound(repeat, group); });
    if (!refits_.models) LeaveOutModelsThatLoseRows();
    for (std::vector<RealMatrix>& ofRepeat : predictions_) ofRepeat.resize(Models());
    for (std::vector<double>* shares : {&result_.r2x, &result_.r2y}) shares->resize(Models());
    NoteColumnsWithoutSpread("X", data_.xNames, withoutSpread_, &result_.notes);
  }

  /// A row with holes that the largest model cannot predict counts for no number of components. So the choice goes as
  /// far as no more than a tenth of the rows is lost that way, beside those that no model can predict.
  void LeaveOutModelsThatLoseRows() {
    if (limits_.models < 2) return;
    const std::size_t most = UnpredictedRows(1) + data_.rows.size() / kShareThatMayBeLost;
    const int all = limits_.models;
    while (UnpredictedRows(Models() - 1) > most) --limits_.models;
    if (limits_.models == all) return;
    const int components = ComponentsOfModel(limits_.models, result_.block);
    result_.notes.Add("the validation ends at " + Counted(static_cast<std::size_t>(components), "component") +
                      ": with more, more than a tenth of the rows could not be predicted while left out, for want of "
                      "cells");
  }

  std::size_t UnpredictedRows(std::size_t model) const {
    std::size_t count = 0;
    for (std::size_t i = 0; i < data_.rows.size(); ++i) {
      const bool isLost = std::any_of(predictions_.begin(), predictions_.end(), [&](const auto& ofRepeat) {
        return std::isnan(ofRepeat[model](i, 0));
      });
      count += isLost ? 1 : 0;
    }
    return count;
  }

  void FitRound(int repeat, int group) {
    const std::vector<std::size_t> fitted = RowsOutsideGroup(Partition(), repeat, group);
    const std::vector<std::size_t> leftOut = RowsOfGroup(Partition(), repeat, group);
    const int round = 1 + repeat * Partition().groups + group;
    const RoundFigures figures = fits_->Figures(static_cast<std::size_t>(round), limits_, FirstOfCoefficients());
    limits_.models = std::min(limits_.models, figures.lastModel);
    withoutSpread_.insert(figures.columnsWithoutSpread.begin(), figures.columnsWithoutSpread.end());
    TakePredictions(figures.leftOut, leftOut, static_cast<std::size_t>(repeat));
    if (data_.classes) {
      TakeClassValues(figures.fitted, fitted, figures.leftOut, leftOut, static_cast<std::size_t>(repeat));
    }
    const auto first = static_cast<std::size_t>(FirstOfCoefficients());
    AddRound(figures.importances, first, &vipJackKnives_);
    AddRound(figures.coefficients, first, &jackKnives_);
  }

  void TakePredictions(const LeftOutRows& rows, const std::vector<std::size_t>& places, std::size_t repeat) {
    for (std::size_t a = 0; a < Models(); ++a) {
      for (std::size_t i = 0; i < places.size(); ++i) {
        distances_[repeat](places[i], a) = rows.distances(i, a);
        for (std::size_t j = 0; j < data_.yNames.size(); ++j) {
          predictions_[repeat][a](places[i], j) = rows.predicted[a](i, j);
        }
      }
    }
  }

  /// Each model's rule is learnt from the rows that it was fitted to.
  void TakeClassValues(const LeftOutRows& ofFitted, const std::vector<std::size_t>& fitted,
                       const LeftOutRows& ofLeftOut, const std::vector<std::size_t>& leftOut, std::size_t repeat) {
    std::vector<int> classes;
    for (const std::size_t row : fitted) classes.push_back(data_.classes->classOfRow[row]);
    for (std::size_t a = 0; a < Models(); ++a) {
      const DiscriminantRule rule = LearnDiscriminantRule(ofFitted.predicted[a], classes, refits_.recipe.priors);
      const RealMatrix values = DiscriminantValues(rule, ofLeftOut.predicted[a]);
      for (std::size_t i = 0; i < leftOut.size(); ++i) {
        for (std::size_t c = 0; c < values.columns; ++c) classValues_[repeat][a](leftOut[i], c) = values(i, c);
      }
    }
  }

  /// Whether the rows stand class by class, each in one run.
  bool AreSortedByClass() const {
    std::vector<int> runs;
    for (const int classNumber : data_.classes->classOfRow) {
      if (classNumber >= 0 && (runs.empty() || runs.back() != classNumber)) runs.push_back(classNumber);
    }
    return runs.size() == data_.classes->names.size();
  }

  void NoteClasses() {
    if (validation_.folds.scheme == FoldScheme::Blocks && Partition().names.empty() && AreSortedByClass()) {
      result_.notes.Add("the rows stand class by class, so that blocks of them leave out much of one class at a time");
    }
    std::set<std::string> absent;
    for (const AbsentClass& none : ClassesAbsentInRounds(Partition(), data_.classes->classOfRow)) {
      absent.insert(data_.classes->names[static_cast<std::size_t>(none.classNumber)]);
    }
    if (absent.empty()) return;
    result_.notes.Add("left out as a whole in some round of the validation, so that none of its rows can be found "
                      "there: " +
                      std::string(absent.size() == 1 ? "class " : "classes ") + Listed({absent.begin(), absent.end()}));
  }

  RealMatrix MeasuredY() const {
    RealMatrix y(data_.rows.size(), data_.yNames.size());
    for (std::size_t j = 0; j < y.columns; ++j) {
      for (std::size_t i = 0; i < y.rows; ++i) y(i, j) = data_.measuredY[j][i];
    }
    return y;
  }

  /// The mean over the repeats of what the discriminant rules of models say of the rows.
  RealMatrix MeanOverRepeats(const std::vector<const RealMatrix*>& values) const {
    RealMatrix mean(data_.rows.size(), data_.yNames.size());
    for (const RealMatrix* ofRepeat : values) {
      for (std::size_t i = 0; i < mean.cells.size(); ++i) {
        mean.cells[i] += ofRepeat->cells[i] / static_cast<double>(values.size());
      }
    }
    return mean;
  }

  RealMatrix ClassValues(std::size_t model) const {
    std::vector<const RealMatrix*> values;
    for (const std::vector<RealMatrix>& ofRepeat : classValues_) values.push_back(&ofRepeat[model]);
    return MeanOverRepeats(values);
  }

  /// Over the rows that all models predict, as PRESS is.
  ClassFigures FiguresOf(RealMatrix values) const {
    for (std::size_t i = 0; i < values.rows; ++i) {
      if (IsCounted(i)) continue;
      for (std::size_t c = 0; c < values.columns; ++c) values(i, c) = kNotANumber;
    }
    return JudgeClasses(data_.classes->classOfRow, values);
  }

  /// Whether the row has a measured Y and is predicted by all models.
  bool IsCounted(std::size_t row) const { return !std::isnan(result_.errors.rowErrors(row, 0)); }

  /// Of each model. Without components the values are the priors of the rounds, which order no rows.
  void JudgeClassesByModel() {
    for (std::size_t a = 0; a < Models(); ++a) result_.classFigures.push_back(FiguresOf(ClassValues(a)));
    WithoutAuc(&result_.classFigures.front());
  }

  void Judge() {
    result_.errors = JudgeLeftOutRows(MeasuredY(), predictions_, progress_);
    if (data_.classes) JudgeClassesByModel();
    if (result_.errors.unpredictedRows == 0) return;
    const int most = result_.ComponentsOf(result_.errors.MostComponents());
    result_.notes.Add("not predicted while left out by " + Counted(static_cast<std::size_t>(most), "component") +
                      ", for want of cells, and so in no PRESS, Q2" +
                      (data_.classes ? ", RMSECV and accuracy: " : " and RMSECV: ") +
                      Counted(result_.errors.unpredictedRows, "row"));
  }

  void Choose() {
    if (refits_.models) {
      result_.model = static_cast<std::size_t>(ofAllRows_);
      result_.components = result_.ComponentsOf(result_.model);
      if (result_.IsJudged()) return;
      const int most = result_.ComponentsOf(result_.errors.MostComponents());
      result_.notes.Add("the validation ends at " + Counted(static_cast<std::size_t>(most), "component") +
                        ", the most that all its rounds can have: it does not judge " +
                        std::to_string(result_.components));
      return;
    }
    const std::vector<int>* groups = Partition().names.empty() ? nullptr : &Partition().groupOfRow.front();
    result_.choice = ChooseComponents(result_.errors.rowErrors, validation_.selection, groups, progress_);
    result_.model = result_.choice->chosen;
    result_.components = result_.ComponentsOf(result_.model);
    if (data_.classes && result_.model == 0 && Models() > 1) {
      result_.notes.Add("the rule keeps no component, so that all rows go to one class. It goes by the errors of the "
                        "dummies; the accuracies by number of components tell how many left-out rows are found",
                        validation_.selection.rule == SelectionRule::OneSE ? Remedy::ChooseOtherwise : Remedy::None);
    }
  }

  /// The errors of what each round's own choice predicts, beside those of the mean: of the rows that count for all
  /// models.
  void Nest() {
    if (!chooseBy_) return;
    NestedValidation nested;
    std::vector<std::vector<RealMatrix>> predictions;
    for (const std::vector<RealMatrix>& ofRepeat : predictions_) predictions.push_back({ofRepeat[0], ofRepeat[0]});
    std::vector<RealMatrix> values;  // of classes, by repeat
    for (const std::vector<RealMatrix>& ofRepeat : classValues_) values.push_back(ofRepeat[0]);
    ForEachRound(Partition(), &work_, [&](int repeat, int group) {
      const auto r = static_cast<std::size_t>(repeat);
      const std::size_t own = chooseBy_(RowsOutsideGroup(Partition(), repeat, group), work_.SilentBar());
      nested.models.push_back(std::min(own, Models() - 1));
      for (const std::size_t row : RowsOfGroup(Partition(), repeat, group)) {
        for (std::size_t j = 0; j < data_.yNames.size(); ++j) {
          predictions[r][1](row, j) = IsCounted(row) ? predictions_[r][nested.models.back()](row, j) : kNotANumber;
          if (data_.classes) values[r](row, j) = classValues_[r][nested.models.back()](row, j);
        }
      }
    });
    const LeftOutErrors errors = JudgeLeftOutRows(MeasuredY(), predictions, progress_);
    nested.q2 = errors.q2[1];
    for (std::size_t j = 0; j < data_.yNames.size(); ++j) {
      nested.rmsecv.push_back(errors.rmsecv(1, j));
      nested.q2PerY.push_back(errors.q2PerY(1, j));
    }
    if (data_.classes) {
      std::vector<const RealMatrix*> ofRepeats;
      for (const RealMatrix& ofRepeat : values) ofRepeats.push_back(&ofRepeat);
      nested.classes = FiguresOf(MeanOverRepeats(ofRepeats));
    }
    result_.nested = std::move(nested);
  }

  void TakeChosen() {
    if (!result_.IsJudged()) return;
    const std::size_t a = result_.model;
    result_.predicted = result_.errors.predicted[a];
    for (std::size_t j = 0; j < data_.yNames.size(); ++j) {
      std::vector<double> squares;
      for (std::size_t i = 0; i < data_.rows.size(); ++i) squares.push_back(result_.errors.squaredErrors[a](i, j));
      const bool isNumber = !data_.classes;
      result_.cvAnova.push_back(isNumber ? ComputeCvAnova(data_.measuredY[j], squares, result_.components)
                                         : std::nullopt);
      result_.coefficients.push_back(jackKnives_[a][j].Result(kShare, kNoLeast, progress_));
    }
    if (data_.classes) {
      result_.classes = {*data_.classes, ClassValues(a), result_.classFigures[a]};
    }
    if (a > 0 && a < vipJackKnives_.size()) {
      for (const JackKnife& vip : vipJackKnives_[a]) result_.importances.push_back(vip.Result(kShare, 0.0, progress_));
    }
    for (const RealMatrix& ofRepeat : distances_) {
      for (std::size_t i = 0; i < ofRepeat.rows; ++i) result_.distances.push_back(ofRepeat(i, a));
    }
    const int degrees = result_.coefficients.front().degrees;
    if (a == 0 || degrees > kFewDegrees) return;
    result_.jackKnifeNotes.Add("the jack-knife has " + Counted(static_cast<std::size_t>(degrees), "degree") +
                               " of freedom: its intervals are wide and mean little");
  }

  const YRefits& refits_;
  std::unique_ptr<SeriesFamily> family_;
  ChoiceByRows chooseBy_;
  const ValidationRecipe& validation_;
  NCProgress* progress_;
  WorkProgress work_;
  ModelData data_;
  std::vector<std::size_t> xRows_;     ///< of data_.x, from 0, that the model sees
  std::unique_ptr<RoundFits> fits_;
  SeriesLimits limits_;  ///< what all rounds so far can have
  int ofAllRows_ = 0;    ///< last model that all rows have
  std::vector<std::vector<RealMatrix>> predictions_;  ///< by repeat and model
  std::vector<RealMatrix> distances_;                 ///< by repeat: rows by models
  JackKnives jackKnives_;     ///< by model and Y column
  JackKnives vipJackKnives_;  ///< by model and kind
  std::vector<std::vector<RealMatrix>> classValues_;  ///< of left-out rows, by repeat and model; none of numbers
  std::set<std::string> withoutSpread_;               ///< X columns, in some round
  RefitValidation result_;
};

}  // namespace

RefitValidation RunYRefits(const YRefits& refits, const Table& table, const ValidationRecipe& validation,
                           NCProgress* progress) {
  ChoiceByRows chooseBy;
  if (validation.nested && !refits.models) {
    chooseBy = [&](const std::vector<std::size_t>& rows, NCProgress* ofRound) {
      return Refitting(refits, nullptr, table, validation, ofRound, &rows).Run().model;
    };
  }
  return Refitting(refits, std::move(chooseBy), table, validation, progress, nullptr).Run();
}

}  // namespace kalmia::analysis
