#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/fit/ModelData.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/validation/Folds.h"
#include "kalmia/analysis/validation/internal/ComponentSeries.h"
#include "kalmia/analysis/validation/internal/LaneRounds.h"
#include "kalmia/analysis/validation/internal/RoundFigures.h"
#include "kalmia/analysis/validation/internal/RoundX.h"
#include "kalmia/analysis/validation/internal/SourceX.h"
#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia::analysis {

/// What a validation refits, all of which outlives its rounds.
struct RefittedModel {
  const YRecipe& recipe;
  const Table& table;
  const ModelData& data;                  ///< of the rows that the model sees
  const std::vector<std::size_t>& xRows;  ///< of data.x, from 0, that these are
  const Folds& folds;
  const SeriesFamily& family;
};

/// Fits the rounds of a validation: side by side where PLSLanes can, or else each alone.
class RoundFits {
 public:
  /// Series go as far as `limits` says at most.
  RoundFits(const RefittedModel& model, const SeriesLimits& limits, NCProgress* progress, WorkProgress* work);

  /// Of a round, from 1 on; 0 are all rows, of which none is left out. Fastest where rounds are asked for one after the
  /// other. Coefficients, importances and distances are those of the models from `first`, or else the last one, on.
  /// Throws Failure as Validate does.
  RoundFigures Figures(std::size_t round, const SeriesLimits& limits, int first);

 private:
  bool IsComplete() const;
  bool ServesLanes() const;
  void FormLanes();
  LaneRound RowsOf(std::size_t round) const;
  RoundFigures FitAlone(const LaneRound& rows, int first);
  NCDataMatrix<float> SingleRows(const std::vector<std::size_t>& rows) const;
  template <class Rows>
  RoundFigures FitSplit(RoundX scaled, const std::vector<std::string>& names, const LaneRound& rows,
                        const Rows& fitted, const Rows& leftOut, int first);
  std::vector<std::size_t> PlacesOf(const std::vector<std::string>& names) const;

  RefittedModel model_;
  SeriesLimits limits_;
  NCProgress* progress_;
  WorkProgress* work_;
  std::unique_ptr<SourceX> source_;  ///< where a round is fitted alone
  std::optional<LaneRounds> lanes_;  ///< where rounds are fitted side by side
  std::unordered_map<std::string, std::size_t> placeOf_;  ///< of the X columns
};

}  // namespace kalmia::analysis
