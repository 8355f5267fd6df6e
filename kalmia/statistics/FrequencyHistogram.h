#pragma once

#include <set>
#include <vector>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"

/// Sorts values into bins of a round width, and records which values fall into each, so that a bar can be linked back
/// to its points. Holes are in no bin. Throws nothing; pure.
class KALMIA_EXPORT FrequencyHistogram {
 public:
  struct HistogramInfo {
    NCDataVector<float> counts;          ///< values in each bin
    NCDataVector<float> centres;         ///< the middle of each bin, in the data's unit
    std::vector<std::set<int>> members;  ///< for each bin, the positions (from 1) of its values
  };

  /// Replaces what `info` held, whose own vectors may be `data`. The lower limit of the first bin is the floor of the
  /// smallest value; ranges below 1 are scaled up by a power of ten for this and the width. The largest value falls
  /// into the last bin.
  /// Degenerate: without a value there is one empty bin in the middle of -99 and -98, as if -99 were a value that does
  /// not count; the same where a value is infinite or a NaN, which have no place among bins.
  void CreateHistogram(const NCDataVector<float>& data, HistogramInfo& info);

  /// Width of the bins: (maximum - minimum) / sqrt(n), n the values present; at least the smallest gap between
  /// neighbouring distinct values where all of those are wider, so that discrete data leave no empty bins; then rounded
  /// down to one significant digit or one and a half (3.2 -> 3, 3.7 -> 3.5). 1 where minimum equals maximum.
  /// The gap between the second and the third distinct value takes no part, nor do NaNs. Limits the wrong way round,
  /// or no value, can make it negative or not finite. Cost: one pass; a sort only where the first gap is wider than the
  /// width.
  double binwidth(double minimum, double maximum, const NCDataVector<float>& data) const;

  /// The bin, from 0, of `value` where bins of `width` begin at `minimum`; a value within tolerance of the next bin's
  /// limit falls into that. At most `maximumIndex`, if that is not negative; if it is, a value on a limit that is a
  /// whole multiple of `width` stays in the bin below.
  int bindex(double value, double minimum, double width, int maximumIndex) const;
};
