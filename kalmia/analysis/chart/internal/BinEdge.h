#pragma once

namespace kalmia::analysis {

/// Edge number `edge`, from 0, of bins of one width that begin at `low`, rounded to four digits of the width: single
/// precision leaves the first edge a little off the round number it stands for. width > 0.
double BinEdge(double low, double width, int edge);

}  // namespace kalmia::analysis
