#pragma once

#include <string>

#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/statistics/FrequencyHistogram.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// A histogram of one column of a table.
struct HistogramRecipe {
  std::string column;
};

/// The values of a column, counted in bins of one width. Bins count from 1.
struct KALMIA_EXPORT HistogramResult {
  std::string table, column;
  int values;   ///< that are there
  int missing;  ///< cells of the column
  double width;
  FrequencyHistogram::HistogramInfo bins;
  Notes notes;  ///< what was moved off -99

  int Bins() const { return bins.counts.Size(); }
  double First() const { return bins.centres[1] - width / 2; }  ///< where the first bin begins
  double From(int bin) const;
  double To(int bin) const;
  int Count(int bin) const { return static_cast<int>(bins.members[static_cast<std::size_t>(bin) - 1].size()); }
  int LargestCount() const;
  /// "alcohol of wine.csv"
  std::string Title() const;
};

/// The histogram that the recipe asks for. `progress` may be null.
/// Throws BadData as ReadMeasurements, and for values so large that edges of bins fall together or overflow in single
/// precision; Stopped where the bar wants to stop.
KALMIA_EXPORT HistogramResult ComputeHistogram(const HistogramRecipe& recipe, const Table& table,
                                               NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
