#pragma once

#include <set>
#include <vector>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"

/// Sorts values into bins of a round width, and records the values in each bin, so that a bar can be linked to its
/// points. Holes are in no bin. Throws nothing, keeps no state.
class KALMIA_EXPORT FrequencyHistogram {
 public:
  struct HistogramInfo {
    NCDataVector<float> counts;          ///< values in each bin
    NCDataVector<float> centres;         ///< the middle of each bin, in the data's unit
    std::vector<std::set<int>> members;  ///< for each bin, the positions (from 1) of its values
  };

  /// Replaces the contents of `info`, whose vectors may be `data`. The first bin begins at the floor of the smallest
  /// value; for ranges below 1, this and the width are computed after scaling by a power of ten. The largest value
  /// falls into the last bin.
  /// Degenerate: without a value, or with an infinity or NaN, there is one empty bin from -99 to -98.
  void CreateHistogram(const NCDataVector<float>& data, HistogramInfo& info);

  /// Width of the bins: (maximum - minimum) / sqrt(n) for n present values. If all gaps between neighbouring distinct
  /// values are wider, the smallest gap, so that discrete data leave no empty bins. Then rounded down to one
  /// significant digit or one and a half (3.2 -> 3, 3.7 -> 3.5). 1 if minimum equals maximum.
  /// The gap between the second and the third distinct value is ignored, and so are NaNs. Exchanged limits, or no
  /// value, can make the width negative or not finite. Cost: one pass; a sort only if the first gap is wider than the
  /// width.
  double binwidth(double minimum, double maximum, const NCDataVector<float>& data) const;

  /// The bin of `value`, from 0, for bins of `width` from `minimum` on. A value within tolerance of the next bin's
  /// limit is in the next bin. A `maximumIndex` of at least 0 is the largest result; with a negative one, a value on a
  /// limit that is a whole multiple of `width` stays in the bin below.
  int bindex(double value, double minimum, double width, int maximumIndex) const;
};
