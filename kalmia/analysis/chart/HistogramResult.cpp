#include "kalmia/analysis/chart/HistogramResult.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kalmia/analysis/chart/internal/BinEdge.h"
#include "kalmia/analysis/table/internal/MeasuredColumn.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/WorkProgress.h"

namespace kalmia::analysis {

namespace {

/// The width as it was rounded by the histogram: the centres, single precision, are that far apart. A single bin is
/// one unit wide, or ends with the largest value.
double WidthOf(const NCDataVector<float>& data, const NCDataVector<float>& centres) {
  float smallest = 0.0F, largest = 0.0F;
  data.GetMinMax(smallest, largest);
  const int bins = centres.Size();
  double width = 1.0;
  if (bins > 1) {
    width = (static_cast<double>(centres[bins]) - centres[1]) / (bins - 1);
  } else if (smallest < largest) {
    width = 2.0 * (static_cast<double>(largest) - centres[1]);
  }
  return Rounded(width, 4);
}

/// Whether the bins have edges that differ, in single precision.
bool HasEdges(const HistogramResult& histogram) {
  if (!(histogram.width > 0.0) || !std::isfinite(histogram.width)) return false;
  const double first = histogram.From(1), last = histogram.To(histogram.Bins());
  return first < histogram.To(1) && std::isfinite(static_cast<float>(first)) && std::isfinite(static_cast<float>(last));
}

}  // namespace

double HistogramResult::From(int bin) const { return BinEdge(First(), width, bin - 1); }

double HistogramResult::To(int bin) const { return BinEdge(First(), width, bin); }

int HistogramResult::LargestCount() const {
  int largest = 0;
  for (int bin = 1; bin <= Bins(); ++bin) largest = std::max(largest, Count(bin));
  return largest;
}

std::string HistogramResult::Title() const { return OneLine(column) + " of " + OneLine(table); }

HistogramResult ComputeHistogram(const HistogramRecipe& recipe, const Table& table, NCProgress* progress) {
  WorkProgress(progress).Begin("computing the histogram");
  Notes notes;
  const NCDataVector<float> data = ReadMeasurements(table, recipe.column, &notes);
  HistogramResult histogram = {
      table.Name(), recipe.column, data.Size() - data.GetNumMisVal(), data.GetNumMisVal(), 0.0, {}, std::move(notes)};
  FrequencyHistogram().CreateHistogram(data, histogram.bins);
  histogram.width = WidthOf(data, histogram.bins.centres);
  if (!HasEdges(histogram)) {
    throw BadData(table.Name() + ": the column " + Quoted(recipe.column) + " has values too large for a histogram");
  }
  return histogram;
}

}  // namespace kalmia::analysis
