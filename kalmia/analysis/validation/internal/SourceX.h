#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/fit/ModelData.h"
#include "kalmia/analysis/steps/StepChain.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Columns of cells in the units of the table; a hole is NaN.
using RealColumns = std::vector<std::vector<double>>;

/// The cells of some rows, from 0, of each column. `progress` may be null.
RealColumns RowsOfColumns(const RealColumns& columns, const std::vector<std::size_t>& rows,
                          NCProgress* progress = nullptr);

/// Whether models of other rows would take other steps.
bool LearnsAnew(const FitRecipe& recipe);

/// X of the rows that a model is fitted to, and of those that it is to predict.
struct SplitX {
  std::vector<std::string> names;
  RealColumns fitted;
  RealColumns leftOut;
};

/// X of the rows of a ModelData, before anything was learnt from all of them.
class SourceX {
 public:
  /// `data` is what SelectData made of the same table and recipe; it has to outlive this object, as the table has.
  /// `progress` may be null, here and below.
  SourceX(const Table& table, const FitRecipe& recipe, const ModelData& data, NCProgress* progress);

  /// Steps that learn from rows learn from `fitted` alone. Rows are those of the ModelData, from 0.
  SplitX Split(const std::vector<std::size_t>& fitted, const std::vector<std::size_t>& leftOut,
               NCProgress* progress) const;

 private:
  Signals SignalsOf(const std::vector<std::size_t>& rows) const;

  const Table& table_;
  std::vector<int> rows_;                ///< of the table, from 0, that the ModelData has
  std::vector<Step> steps_;              ///< those that each model learns anew; otherwise none
  std::vector<std::string> names_;       ///< of the columns: what the steps take, or X itself
  std::vector<std::string> rowPlaces_;
  RealColumns columns_;
};

}  // namespace kalmia::analysis
