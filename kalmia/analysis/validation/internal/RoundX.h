#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/validation/internal/SourceX.h"
#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia::analysis {

/// Columns of a block as a model of some rows has them: shifts, centres and factors are learnt from these rows alone.
/// A column without two different cells in them has no say, and is none of the columns below.
class RoundX {
 public:
  /// Throws BadData where a column cannot be scaled, Stopped.
  RoundX(const std::vector<std::string>& names, const RealColumns& fitted, NCScale::Scaling scaling,
         WorkProgress* progress);
  /// The same of rows that ArePlain, which takes fewer passes over them.
  RoundX(const std::vector<std::string>& names, NCDataMatrix<float> plain, NCScale::Scaling scaling);

  bool Empty() const { return places_.empty(); }
  int Columns() const { return static_cast<int>(places_.size()); }
  const std::vector<std::size_t>& Places() const { return places_; }  ///< of the columns, from 0, among all
  const std::vector<std::string>& ColumnsWithoutSpread() const { return withoutSpread_; }  ///< their names
  const ColumnScaling& Scaling() const { return scaling_; }

  /// The cells of the rows that it learnt from, scaled; without rows where there are no columns.
  const NCDataMatrix<float>& Fitted() const { return fitted_; }
  /// Gives them away.
  NCDataMatrix<float> TakeFitted() { return std::move(fitted_); }
  ColumnScaling TakeScaling() { return std::move(scaling_); }
  /// The cells of rows, of all columns, less the shifts.
  NCDataMatrix<float> Shifted(const RealColumns& rows) const;
  /// The same, scaled.
  NCDataMatrix<float> Scaled(const RealColumns& rows) const;
  /// Cells less the shifts, scaled.
  NCDataMatrix<float> Scaled(NCDataMatrix<float> shifted) const;

 private:
  std::vector<std::size_t> places_;
  std::vector<std::string> withoutSpread_;
  std::vector<double> shifts_;
  ColumnScaling scaling_;
  NCDataMatrix<float> fitted_;
};

/// Whether the model of these cells, measured ones in single precision, has them as they are: each column has two
/// different cells and none needs a shift. Some rows that do may be taken for rows that do not.
bool ArePlain(const NCDataMatrix<float>& rows, NCScale::Scaling scaling);

/// The mean of the cells that are there; not a number where none is.
double MeanOf(const std::vector<double>& cells);

/// Of columns of one length.
int RowCount(const RealColumns& columns);

}  // namespace kalmia::analysis
