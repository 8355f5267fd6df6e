#include "kalmia/analysis/validation/O2PLSValidation.h"

#include <cmath>
#include <set>
#include <utility>

#include "kalmia/analysis/fit/O2PLSResult.h"
#include "kalmia/analysis/fit/internal/RecipeChecks.h"
#include "kalmia/analysis/fit/internal/SelectBlocks.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"
#include "kalmia/analysis/validation/internal/O2PLSRefits.h"
#include "kalmia/analysis/validation/internal/O2PLSRound.h"
#include "kalmia/analysis/validation/internal/RefitRounds.h"

namespace kalmia::analysis {

namespace {

RealMatrix MatrixOfColumns(const RealColumns& columns) {
  RealMatrix matrix(columns.front().size(), columns.size());
  for (std::size_t k = 0; k < matrix.columns; ++k) {
    for (std::size_t i = 0; i < matrix.rows; ++i) matrix(i, k) = columns[k][i];
  }
  return matrix;
}

/// One block over all rounds.
class BlockErrors {
 public:
  explicit BlockErrors(const Block& block, int repeats) : measured_(MatrixOfColumns(block.measured)) {
    const RealMatrix none(measured_.rows, measured_.columns, kNotANumber);
    predictions_.assign(static_cast<std::size_t>(repeats), {none, none});
    distances_.assign(static_cast<std::size_t>(repeats), std::vector<double>(measured_.rows, kNotANumber));
  }

  void Take(const LeftOutBlock& block, const std::vector<std::size_t>& rows, int repeat) {
    std::vector<RealMatrix>& predictions = predictions_[static_cast<std::size_t>(repeat)];
    for (std::size_t i = 0; i < rows.size(); ++i) {
      for (std::size_t k = 0; k < measured_.columns; ++k) {
        // Nothing predicts a column without a cell: its cells count for no model.
        const bool isEmpty = std::isnan(block.means[k]);
        if (isEmpty) measured_(rows[i], k) = kNotANumber;
        predictions[0](rows[i], k) = isEmpty ? 0.0 : block.means[k];
        if (block.predicted.empty() || block.predicted[i].empty()) continue;
        predictions[1](rows[i], k) = isEmpty ? 0.0 : block.predicted[i][k];
      }
      if (!block.distances.empty()) distances_[static_cast<std::size_t>(repeat)][rows[i]] = block.distances[i];
    }
  }

  /// The mean alone without a model in each round.
  LeftOutErrors Judge(bool hasModel, NCProgress* progress) {
    for (std::vector<RealMatrix>& ofRepeat : predictions_) ofRepeat.resize(hasModel ? 2 : 1);
    return JudgeLeftOutRows(measured_, predictions_, progress);
  }

  std::vector<double> Distances() const {
    std::vector<double> all;
    for (const std::vector<double>& ofRepeat : distances_) all.insert(all.end(), ofRepeat.begin(), ofRepeat.end());
    return all;
  }

 private:
  RealMatrix measured_;
  std::vector<std::vector<RealMatrix>> predictions_;  ///< by repeat and model
  std::vector<std::vector<double>> distances_;        ///< by repeat
};

void RequireValues(const LeftOutBlock& y, const std::vector<std::string>& names) {
  for (std::size_t j = 0; j < names.size(); ++j) {
    if (std::isnan(y.means[j])) throw BadData("the Y column " + Quoted(names[j]) + " has no value");
  }
}

Folds FoldsOfBlocks(const BlockPair& data, const O2PLSRecipe& recipe, const ValidationRecipe& validation,
                    Notes* notes) {
  if (!data.groupLabels.empty()) return FoldsOfLabels(data.groupLabels);
  return DealRows(data.rowNames.size(), recipe.groups, validation.folds, notes);
}

O2PLSNumbers NumbersOf(const O2PLSRecipe& recipe, const Table& xTable, const Table& yTable, NCProgress* progress) {
  if (recipe.numbers) return *recipe.numbers;
  const O2PLSResult fit = Fit(recipe, xTable, yTable, progress);
  return {fit.model.Joint(), fit.model.XUnique(), fit.model.YUnique()};
}

void NoteUnpredicted(const char* of, const LeftOutErrors& errors, Notes* notes) {
  if (errors.unpredictedRows == 0) return;
  notes->Add(std::string("not predicted from ") + of +
             " while left out, for want of cells, and in none of its figures: " +
             Counted(errors.unpredictedRows, "row"));
}

O2PLSValidation Refit(const O2PLSRecipe& recipe, const O2PLSNumbers& numbers, const Table& xTable, const Table& yTable,
                      const ValidationRecipe& validation, NCProgress* progress) {
  O2PLSValidation result;
  result.numbers = numbers;
  Notes ofTheFit;
  BlockPair data = SelectBlocks(xTable, yTable, recipe, &ofTheFit);
  result.folds = FoldsOfBlocks(data, recipe, validation, &result.notes);
  BlockErrors x(data.x, result.folds.Repeats()), y(data.y, result.folds.Repeats());
  std::set<std::string> xWithoutSpread, yWithoutSpread;
  bool hasModel = true;
  WorkProgress work(progress);
  ForEachRound(result.folds, &work, [&](int repeat, int group) {
    const std::vector<std::size_t> fitted = RowsOutsideGroup(result.folds, repeat, group);
    const std::vector<std::size_t> leftOut = RowsOfGroup(result.folds, repeat, group);
    const auto split = [&](const Block& block) {
      return RoundBlock{block.names, RowsOfColumns(block.measured, fitted), RowsOfColumns(block.measured, leftOut)};
    };
    const LeftOutBlocks blocks = JudgeO2PLSRound(recipe, result.numbers, split(data.x), split(data.y), &work);
    RequireValues(blocks.y, data.y.names);
    hasModel = hasModel && blocks.hasModel;
    xWithoutSpread.insert(blocks.x.withoutSpread.begin(), blocks.x.withoutSpread.end());
    yWithoutSpread.insert(blocks.y.withoutSpread.begin(), blocks.y.withoutSpread.end());
    x.Take(blocks.x, leftOut, repeat);
    y.Take(blocks.y, leftOut, repeat);
  });
  NoteColumnsWithoutSpread("X", data.x.names, xWithoutSpread, &result.notes);
  NoteColumnsWithoutSpread("Y", data.y.names, yWithoutSpread, &result.notes);
  if (!hasModel && result.numbers.joint > 0) {
    result.notes.Add("the model is not judged: a round of the validation cannot have so many components");
  }
  result.y = y.Judge(hasModel, progress);
  result.x = x.Judge(hasModel, progress);
  NoteUnpredicted("X", result.y, &result.notes);
  NoteUnpredicted("Y", result.x, &result.notes);
  if (hasModel) {
    result.xDistances = y.Distances();  // of what Y is predicted from
    result.yDistances = x.Distances();
  }
  result.rowNames = std::move(data.rowNames);
  result.xNames = std::move(data.x.names);
  result.yNames = std::move(data.y.names);
  return result;
}

}  // namespace

O2PLSValidation RefitO2PLS(const O2PLSRecipe& recipe, const O2PLSNumbers& numbers, const Table& xTable,
                           const Table& yTable, const ValidationRecipe& validation, NCProgress* progress) {
  return WithoutLibraryErrors([&] { return Refit(recipe, numbers, xTable, yTable, validation, progress); });
}

O2PLSValidation Validate(const O2PLSRecipe& recipe, const Table& xTable, const Table& yTable,
                         const ValidationRecipe& validation, NCProgress* progress) {
  CheckRecipe(recipe);
  return RefitO2PLS(recipe, NumbersOf(recipe, xTable, yTable, progress), xTable, yTable, validation, progress);
}

}  // namespace kalmia::analysis
