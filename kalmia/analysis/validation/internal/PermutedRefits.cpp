#include "kalmia/analysis/validation/internal/PermutedRefits.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>

#include "kalmia/analysis/fit/internal/SelectData.h"
#include "kalmia/analysis/model/DiscriminantRule.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/SharedWork.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/validation/LeftOutErrors.h"
#include "kalmia/analysis/validation/RandomDraws.h"
#include "kalmia/analysis/validation/internal/RoundModel.h"
#include "kalmia/analysis/validation/internal/RowSpaceRefit.h"
#include "kalmia/analysis/validation/internal/SourceX.h"

namespace kalmia::analysis {

namespace {

constexpr double kMostBytesOfX = 512e6;  ///< of the cells of all rounds of a table with holes
/// Cells of Y that a task has: so many lie in a core's own cache, and are done before anybody waits for the end.
constexpr std::size_t kCellsOfATask = 32768;
constexpr std::size_t kFewestRunsOfATask = 4;
constexpr std::size_t kMostRunsOfATask = 64;
/// Where groups can stand in fewer orders than this for each run, the true one comes up in more than one test of 20.
constexpr double kOrdersOfARun = 20.0;

/// What a run adds up over its rounds: squared errors over s_j^2.
struct RunSums {
  double press = 0.0;
  double pressOfMeans = 0.0;
  double sse = 0.0;
  double found = 0.0;  ///< rows whose class is found, of all repeats
  int fewest = std::numeric_limits<int>::max();  ///< components that a round has
  int most = 0;

  bool MixesModels() const { return fewest < most; }
};

/// The rows of a fit, with none left out, or those of a round.
struct Round {
  std::vector<std::size_t> fitted;
  std::vector<std::size_t> leftOut;
};

RealMatrix MatrixOfColumns(const RealColumns& columns) {
  RealMatrix matrix(columns.front().size(), columns.size());
  for (std::size_t j = 0; j < matrix.columns; ++j) {
    for (std::size_t i = 0; i < matrix.rows; ++i) matrix(i, j) = columns[j][i];
  }
  return matrix;
}

bool HasHole(const std::vector<double>& cells) {
  return std::any_of(cells.begin(), cells.end(), [](double cell) { return std::isnan(cell); });
}

bool HasHole(const RealColumns& columns) {
  return std::any_of(columns.begin(), columns.end(), [](const auto& column) { return HasHole(column); });
}

class Permutations {
 public:
  Permutations(PermutedRefits refits, const Table& table, const Folds& folds, const PermutationRecipe& permutations,
               NCProgress* progress)
      : refits_(std::move(refits)), folds_(folds), runs_(permutations.runs), work_(progress) {
    Notes ofTheFit;
    data_ = SelectData(table, refits_.recipe, &ofTheFit, progress);
    if (data_.rows.size() != folds.Rows()) throw BadRequest("the folds are of another table");
    source_.emplace(table, refits_.recipe, data_, progress);
    y_ = MatrixOfColumns(data_.measuredY);
    deviations_ = ColumnDeviations(y_);
    byGroups_ = !folds.names.empty() && AreGroupsOfOneSize(folds.groupOfRow.front());
    if (!folds.names.empty()) NoteGroups();
    runsOfATask_ = std::clamp(kCellsOfATask / y_.rows, kFewestRunsOfATask, kMostRunsOfATask);
    RandomDraws draws(permutations.seed, RandomUse::Permutations);
    for (std::size_t run = 0; run < RunCount(); ++run) {
      work_.Ask();
      if (run % runsOfATask_ == 0) starts_.push_back(draws);
      if (run > 0) correlations_.push_back(CorrelationWithPermuted(y_, NextOrder(&draws)));
    }
  }

  PermutationTest Run() {
    work_.Begin("permutations");
    if (IsLikePLS() && IsComplete()) {
      RunSideBySide();
    } else {
      RunInTurn();
    }
    result_.original = runFigures_.front();
    result_.runs.assign(runFigures_.begin() + 1, runFigures_.end());
    result_.judgement = JudgePermutations(result_.original, result_.runs);
    return std::move(result_);
  }

 private:
  void NoteGroups() {
    if (!byGroups_) {
      result_.notes.Add("the groups differ in size, so that the permutations take rows out of their groups: where rows of "
                        "a group repeat each other, p is far too small");
      return;
    }
    const double orders = OrdersOfGroups(folds_.groupOfRow.front(), y_);
    if (orders >= kOrdersOfARun * runs_) return;
    // Each run is the original with the probability 1 / orders, and then counts as good.
    const double least = (1.0 + runs_ / orders) / (1.0 + runs_);
    result_.notes.Add("the " + std::to_string(folds_.groups) + " groups have only " + Fixed(orders, 0) +
                      " orders that differ in Y, of which the true one is one: p of the permutations is about " +
                      Significant(least, 2) + " at the least");
  }

  std::size_t RunCount() const { return static_cast<std::size_t>(runs_) + 1; }  ///< the first one is the original

  std::vector<std::size_t> NextOrder(RandomDraws* draws) const {
    return byGroups_ ? PermutedGroups(folds_.groupOfRow.front(), draws) : draws->Order(y_.rows);
  }

  /// Whether the models predict what PLS of as many components does.
  bool IsLikePLS() const { return refits_.isPLS || y_.columns == 1; }

  bool IsComplete() const {
    return !HasHole(data_.measuredY) && data_.x.GetNumMisVal() == 0;
  }

  std::vector<std::size_t> AllRows() const {
    std::vector<std::size_t> all(y_.rows);
    std::iota(all.begin(), all.end(), std::size_t{0});
    return all;
  }

  /// The rows of each round, and at last all of them, of which none is left out.
  std::vector<Round> Rounds() const {
    std::vector<Round> rounds;
    for (int repeat = 0; repeat < folds_.Repeats(); ++repeat) {
      for (int group = 0; group < folds_.groups; ++group) {
        rounds.push_back({RowsOutsideGroup(folds_, repeat, group), RowsOfGroup(folds_, repeat, group)});
      }
    }
    rounds.push_back({AllRows(), {}});
    return rounds;
  }

  // Complete tables: one round after the other, in each many runs side by side.

  void RunSideBySide() {
    std::vector<RunSums> sums(RunCount());
    const std::vector<Round> rounds = Rounds();
    for (std::size_t g = 0; g < rounds.size(); ++g) {
      const double from = static_cast<double>(g) / static_cast<double>(rounds.size());
      const double share = 1.0 / static_cast<double>(rounds.size());
      const auto quiet = [&](double) { work_.MoveTo(from); };
      const auto proceed = [&](double done) { work_.MoveTo(from + share * done); };
      const SplitX x = source_->Split(rounds[g].fitted, rounds[g].leftOut, work_.SilentBar());
      const RowSpaceRefit refit(x, refits_.recipe.scaling, quiet);
      ShareWork(starts_.size(), proceed, [&](std::size_t task) { AddRuns(rounds[g], refit, task, &sums); });
    }
    const bool areMixed = std::any_of(sums.begin(), sums.end(), [](const RunSums& of) { return of.MixesModels(); });
    if (areMixed) LearnBlock(rounds);
    for (std::size_t run = 0; run < RunCount(); ++run) {
      if (sums[run].MixesModels()) {
        JudgeRun(rounds, run, OrderOf(run));
      } else {
        TakeFigures(run, sums[run]);
      }
    }
  }

  void AddRuns(const Round& round, const RowSpaceRefit& refit, std::size_t task, std::vector<RunSums>* sums) const {
    const std::size_t begin = task * runsOfATask_;
    const std::size_t runs = std::min(runsOfATask_, RunCount() - begin);
    const RealMatrix y = RowsOfRuns(task, runs);
    const RealMatrix fitted = RowsOf(y, round.fitted), leftOut = RowsOf(y, round.leftOut);
    const RowSpaceRefit::Predictions said = refit.Fit(fitted, runs, ScalingOfY(refits_.recipe.scaling), refits_.model);
    for (std::size_t r = 0; r < runs; ++r) {
      RunSums& sum = (*sums)[begin + r];
      sum.fewest = std::min(sum.fewest, said.components[r]);
      sum.most = std::max(sum.most, said.components[r]);
      if (data_.classes && leftOut.rows > 0) {
        const std::vector<int> assigned = AssignedRows(OfRun(fitted, r, runs), OfRun(said.fitted, r, runs),
                                                       OfRun(said.leftOut, r, runs));
        const std::vector<int> classes = ClassesOfDummies(OfRun(leftOut, r, runs));
        for (std::size_t i = 0; i < classes.size(); ++i) sum.found += assigned[i] == classes[i] ? 1.0 : 0.0;
      }
      for (std::size_t j = 0; j < y_.columns; ++j) {
        const std::size_t p = j * runs + r;
        for (std::size_t i = 0; i < leftOut.rows; ++i) {
          sum.press += SquareOf((leftOut(i, p) - said.leftOut(i, p)) / deviations_[j]);
          sum.pressOfMeans += SquareOf((leftOut(i, p) - said.means[p]) / deviations_[j]);
        }
        if (leftOut.rows > 0) continue;
        for (std::size_t i = 0; i < fitted.rows; ++i) {
          sum.sse += SquareOf((fitted(i, p) - said.fitted(i, p)) / deviations_[j]);
        }
      }
    }
  }

  /// The columns of one run.
  RealMatrix OfRun(const RealMatrix& ofRuns, std::size_t r, std::size_t runs) const {
    RealMatrix cells(ofRuns.rows, y_.columns);
    for (std::size_t i = 0; i < cells.rows; ++i) {
      for (std::size_t j = 0; j < cells.columns; ++j) cells(i, j) = ofRuns(i, j * runs + r);
    }
    return cells;
  }

  /// Classes that left-out rows are assigned to, -1 for none, by the rule that the fitted rows teach: from their
  /// dummies and what a model says of them.
  std::vector<int> AssignedRows(const RealMatrix& fittedY, const RealMatrix& fitted, const RealMatrix& leftOut) const {
    const DiscriminantRule rule = LearnDiscriminantRule(fitted, ClassesOfDummies(fittedY), refits_.recipe.priors);
    return AssignedClasses(DiscriminantValues(rule, leftOut));
  }

  static std::vector<int> ClassesOfDummies(const RealMatrix& dummies) {
    std::vector<int> classes(dummies.rows, -1);
    for (std::size_t i = 0; i < dummies.rows; ++i) {
      for (std::size_t c = 0; c < dummies.columns; ++c) {
        if (dummies(i, c) == 1.0) classes[i] = static_cast<int>(c);
      }
    }
    return classes;
  }

  static double SquareOf(double number) { return number * number; }

  /// Where each row of a run has its Y from.
  std::vector<std::size_t> OrderOf(std::size_t run) const {
    if (run == 0) return AllRows();
    const std::size_t task = run / runsOfATask_;
    RandomDraws draws = starts_[task];
    std::vector<std::size_t> order;
    for (std::size_t r = std::max<std::size_t>(1, task * runsOfATask_); r <= run; ++r) order = NextOrder(&draws);
    return order;
  }

  /// Y of the runs of a task, of all rows: column j * runs + r.
  RealMatrix RowsOfRuns(std::size_t task, std::size_t runs) const {
    RealMatrix y(y_.rows, y_.columns * runs);
    RandomDraws draws = starts_[task];
    for (std::size_t r = 0; r < runs; ++r) {
      const std::vector<std::size_t> sources = task + r == 0 ? AllRows() : NextOrder(&draws);
      for (std::size_t i = 0; i < y.rows; ++i) {
        for (std::size_t j = 0; j < y_.columns; ++j) y(i, j * runs + r) = y_(sources[i], j);
      }
    }
    return y;
  }

  static RealMatrix RowsOf(const RealMatrix& matrix, const std::vector<std::size_t>& rows) {
    RealMatrix taken(rows.size(), matrix.columns);
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const double* cells = &matrix.cells[rows[i] * matrix.columns];
      std::copy(cells, cells + matrix.columns, &taken.cells[i * matrix.columns]);
    }
    return taken;
  }

  void TakeFigures(std::size_t run, const RunSums& sums) {
    const double degrees = static_cast<double>(y_.rows - 1) * static_cast<double>(y_.columns);  // sum of SS_j / s_j^2
    runFigures_.push_back({CorrelationOf(run), 1.0 - sums.sse / degrees, 1.0 - sums.press / sums.pressOfMeans,
                           data_.classes ? AccuracyOf(sums.found, y_.rows) : kNotANumber});
  }

  /// From the rows that are found in all repeats, of so many that have a class and are predicted.
  double AccuracyOf(double found, std::size_t rows) const {
    return found / folds_.Repeats() / static_cast<double>(rows);
  }

  /// By the classes that the rows are assigned to in each repeat. `rowErrors` are numbers of the rows that count.
  double AccuracyOf(const RealMatrix& measured, const std::vector<std::vector<int>>& assigned,
                    const RealMatrix& rowErrors) const {
    const std::vector<int> classes = ClassesOfDummies(measured);
    double found = 0.0;
    std::size_t rows = 0;
    for (std::size_t i = 0; i < classes.size(); ++i) {
      if (std::isnan(rowErrors(i, 0))) continue;
      ++rows;
      for (const std::vector<int>& ofRepeat : assigned) found += ofRepeat[i] == classes[i] ? 1.0 : 0.0;
    }
    return AccuracyOf(found, rows);
  }

  double CorrelationOf(std::size_t run) const { return run == 0 ? 1.0 : correlations_[run - 1]; }

  // Tables with holes, and runs whose rounds end early: one run after the other, each with all its rounds.

  void RunInTurn() {
    const std::vector<Round> rounds = Rounds();
    LearnBlock(rounds);
    RandomDraws draws = starts_.front();
    for (std::size_t run = 0; run < RunCount(); ++run) {
      work_.MoveToPart(static_cast<int>(run) + 1, runs_ + 1);
      JudgeRun(rounds, run, run == 0 ? AllRows() : NextOrder(&draws));
    }
  }

  /// The rounds take the block that the series of all rows has.
  void LearnBlock(const std::vector<Round>& rounds) {
    const double cells = static_cast<double>(data_.xNames.size()) * static_cast<double>(y_.rows);
    keepsX_ = static_cast<double>(rounds.size() * sizeof(double)) * cells <= kMostBytesOfX;
    xOfRounds_.resize(keepsX_ ? rounds.size() : 1);
    const RoundModel whole = ModelOf(rounds.back(), XOf(rounds, rounds.size() - 1), data_.measuredY);
    if (whole.Series() != nullptr) refits_.family->LearnBlock(whole.Series()->Block());
  }

  /// X of a round: kept from run to run where there is room for that of all rounds, or else formed anew.
  const SplitX& XOf(const std::vector<Round>& rounds, std::size_t g) {
    std::optional<SplitX>& x = xOfRounds_[keepsX_ ? g : 0];
    if (!keepsX_) x.reset();
    if (!x) x = source_->Split(rounds[g].fitted, rounds[g].leftOut, work_.SilentBar());
    return *x;
  }

  void JudgeRun(const std::vector<Round>& rounds, std::size_t run, const std::vector<std::size_t>& sources) {
    runFigures_.push_back({CorrelationOf(run)});
    try {
      JudgeRounds(rounds, RowsOfColumns(data_.measuredY, sources), &runFigures_.back());
    } catch (const BadData&) {
      if (run == 0) throw;  // otherwise a round of this order has no value of some column
    }
  }

  /// What the models of a round, all of them, say of its rows; of the fitted ones where they are asked for.
  struct Said {
    std::vector<RealMatrix> ofLeftOut, ofFitted;
  };

  Said FitRound(const Round& round, const SplitX& x, const RealColumns& y) {
    const RoundModel model = ModelOf(round, x, y);
    Said said;
    said.ofLeftOut = model.Predict(x.leftOut, &work_, refits_.model).predicted;
    const bool isOfAllRows = round.leftOut.empty();
    if (isOfAllRows || data_.classes) said.ofFitted = model.Predict(x.fitted, &work_, refits_.model).predicted;
    return said;
  }

  /// All rounds of a run have the model that each of them can have.
  void JudgeRounds(const std::vector<Round>& rounds, const RealColumns& y, PermutationRun* figures) {
    std::vector<Said> said;
    std::size_t models = std::numeric_limits<std::size_t>::max();
    for (std::size_t g = 0; g < rounds.size(); ++g) {
      said.push_back(FitRound(rounds[g], XOf(rounds, g), y));
      models = std::min(models, said.back().ofLeftOut.size());
    }
    const RealMatrix measured = MatrixOfColumns(y), none(y_.rows, y_.columns, kNotANumber);
    const std::size_t ofRepeat = static_cast<std::size_t>(folds_.groups);
    const auto repeats = static_cast<std::size_t>(folds_.Repeats());
    std::vector<std::vector<RealMatrix>> predictions(repeats, {none, none});
    std::vector<std::vector<int>> assigned(repeats, std::vector<int>(y_.rows, -1));
    for (std::size_t g = 0; g + 1 < rounds.size(); ++g) {
      const std::vector<RealMatrix>& ofLeftOut = said[g].ofLeftOut;
      TakeEnds(ofLeftOut, models, rounds[g].leftOut, &predictions[g / ofRepeat]);
      if (!data_.classes) continue;
      const std::vector<int> classes = AssignedRows(RowsOf(measured, rounds[g].fitted), said[g].ofFitted[models - 1],
                                                    ofLeftOut[models - 1]);
      for (std::size_t i = 0; i < classes.size(); ++i) assigned[g / ofRepeat][rounds[g].leftOut[i]] = classes[i];
    }
    const LeftOutErrors errors = JudgeLeftOutRows(measured, predictions);
    figures->q2 = errors.q2.back();
    if (data_.classes) figures->accuracy = AccuracyOf(measured, assigned, errors.rowErrors);
    std::vector<RealMatrix> fitted(2, none);
    TakeEnds(said.back().ofFitted, models, rounds.back().fitted, &fitted);
    figures->r2 = JudgeLeftOutRows(measured, {fitted}).q2.back();
  }

  RoundModel ModelOf(const Round& round, const SplitX& x, const RealColumns& y) {
    return RoundModel(*refits_.family, x.names, x.fitted, data_.yNames, RowsOfColumns(y, round.fitted),
                      refits_.recipe.scaling, {refits_.model, std::numeric_limits<int>::max()}, &work_);
  }

  /// Predictions of the first and of the last one of so many models.
  static void TakeEnds(const std::vector<RealMatrix>& predicted, std::size_t models,
                       const std::vector<std::size_t>& places, std::vector<RealMatrix>* predictions) {
    for (std::size_t i = 0; i < places.size(); ++i) {
      for (std::size_t j = 0; j < predictions->front().columns; ++j) {
        predictions->front()(places[i], j) = predicted.front()(i, j);
        predictions->back()(places[i], j) = predicted[models - 1](i, j);
      }
    }
  }

  PermutedRefits refits_;
  const Folds& folds_;
  int runs_;
  mutable WorkProgress work_;
  ModelData data_;
  std::optional<SourceX> source_;
  /// Where rounds are fitted one by one; of the newest one alone if there is no room for all.
  std::vector<std::optional<SplitX>> xOfRounds_;
  bool keepsX_ = true;
  RealMatrix y_;
  std::vector<double> deviations_;  ///< s_j
  bool byGroups_ = false;
  std::size_t runsOfATask_ = 1;
  std::vector<RandomDraws> starts_;     ///< of each task: the draws of its first run
  std::vector<double> correlations_;    ///< of the runs behind the original
  std::vector<PermutationRun> runFigures_;
  PermutationTest result_;
};

}  // namespace

PermutationTest RunPermutations(PermutedRefits refits, const Table& table, const Folds& folds,
                                const PermutationRecipe& permutations, NCProgress* progress) {
  if (refits.model < 1) throw BadRequest("a model without components has nothing to permute");
  if (permutations.runs < 1 || permutations.runs > kMostPermutations) {
    throw BadRequest("the number of permutations is not between 1 and " + std::to_string(kMostPermutations));
  }
  return Permutations(std::move(refits), table, folds, permutations, progress).Run();
}

}  // namespace kalmia::analysis
