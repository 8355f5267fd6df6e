#pragma once

#include <cstddef>
#include <limits>
#include <vector>

#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// What the present cells of a column are like; not a number where there are too few cells for it.
struct KALMIA_EXPORT ColumnMoments {
  int n = 0;  ///< present cells
  double min = std::numeric_limits<double>::quiet_NaN();
  double max = std::numeric_limits<double>::quiet_NaN();
  double mean = std::numeric_limits<double>::quiet_NaN();  ///< sum(x) / n; n >= 1
  /// s = sqrt(sum((x - mean)^2) / (n - 1)); n >= 2
  double standardDeviation = std::numeric_limits<double>::quiet_NaN();
  /// n / ((n - 1)(n - 2)) sum((x - mean)^3) / s^3; n >= 3, s > 0
  double skewness = std::numeric_limits<double>::quiet_NaN();
};

/// The moments of `count` cells, of which missing ones are NaN. Sums run in double, in the order of the cells: the same
/// bits on every machine.
KALMIA_EXPORT ColumnMoments MomentsOf(const double* cells, std::size_t count);
inline ColumnMoments MomentsOf(const std::vector<double>& cells) { return MomentsOf(cells.data(), cells.size()); }

}  // namespace kalmia::analysis
