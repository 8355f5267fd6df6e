#include "kalmia/analysis/text/NestedRanges.h"

#include <algorithm>

namespace kalmia::analysis {

double NestedRanges::Level::ShareAt(double value) const {
  return from == to ? begin : begin + (end - begin) * (value - from) / (to - from);
}

void NestedRanges::FillUpTo(double share) { share_ = std::max(share_, share); }

void NestedRanges::SetRange(double from, double to) {
  levels_.back().from = from;
  levels_.back().to = to;
}

void NestedRanges::MoveTo(double value) { FillUpTo(levels_.back().ShareAt(value)); }

void NestedRanges::Push(double from, double to) {
  const Level& outer = levels_.back();
  const double begin = outer.ShareAt(from);
  levels_.push_back({0.0, 1.0, begin, outer.ShareAt(to)});
  FillUpTo(begin);
}

void NestedRanges::Pop() {
  if (!IsOutermost()) levels_.pop_back();
}

}  // namespace kalmia::analysis
