#pragma once

namespace kalmia::analysis {

/// The edge behind so many bins of a row of them that begins at `low`, rounded to four digits of the width: a first
/// edge from single precision is a little off the round number that it stands for. width > 0.
double BinEdge(double low, double width, int edge);

}  // namespace kalmia::analysis
