#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/pcapls/NCScale.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// How the columns of a block are centred and scaled, as a model learnt it. A cell x of the table, a double, becomes
/// (x - shift), rounded to single precision; then (that - centre) factor.
struct ColumnScaling {
  std::unique_ptr<NCScale> scale;  ///< centres and factors
  /// Of each column what was taken off its cells, in double, before they were rounded to single precision: the mean of
  /// a column that is centred and whose mean exceeds 1000 of its standard deviations, else 0. Empty where no column is
  /// shifted.
  std::vector<double> shifts;

  double ShiftOfColumn(std::size_t column) const { return shifts.empty() ? 0.0 : shifts[column]; }  ///< from 0
};

/// Fits a scaling of one type for all columns and applies it to the matrix in place, off which `shifts` were taken.
/// A column whose mean is the missing value -99 itself gets a centre a few float steps below, and a cell that centring
/// turns into it takes part in the fit that far below: none is taken as "not centred" or as missing.
/// Throws BadData, naming the column, if a column has too few values or its variance is out of range.
KALMIA_EXPORT ColumnScaling ScaleColumns(NCScale::Scaling type, const std::vector<std::string>& names,
                                         NCDataMatrix<float>* matrix, std::vector<double> shifts = {});

/// Applies a fitted scaling in place, to cells that are shifted already. A present cell stays present: where centring
/// or multiplying gives exactly the missing value, the next float below is taken. Counts of missing cells are exact.
KALMIA_EXPORT void ApplyScale(const ColumnScaling& scaling, NCDataMatrix<float>* shifted);

/// Whether the scaling takes a mean off each column.
inline bool Centres(NCScale::Scaling scaling) { return scaling != NCScale::ScalingNone; }

/// The scaling of Y that goes with one of X: unit variance with unit variance, else centring alone.
KALMIA_EXPORT NCScale::Scaling ScalingOfY(NCScale::Scaling scalingOfX);

/// The word for a scaling, and back: uv, pareto, centre or none. Nothing for any other word.
KALMIA_EXPORT std::string ScalingWord(NCScale::Scaling scaling);
KALMIA_EXPORT std::optional<NCScale::Scaling> ScalingOfWord(const std::string& word);

/// uv, pareto, centre and none.
KALMIA_EXPORT std::vector<std::string> ScalingWords();

/// "scaled to unit variance" and the like, for a reader.
KALMIA_EXPORT std::string ScalingText(NCScale::Scaling scaling);

/// Centre and factor of a variable (from 1), in the units of the table; 0 and 1 where it is not centred or not
/// multiplied.
KALMIA_EXPORT double CentreOf(const ColumnScaling& scaling, int variable);
KALMIA_EXPORT double FactorOf(const ColumnScaling& scaling, int variable);

}  // namespace kalmia::analysis
