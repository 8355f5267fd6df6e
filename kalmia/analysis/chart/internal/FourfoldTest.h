#pragma once

#include "kalmia/statistics/Sta.h"

namespace kalmia::analysis {

/// Fisher's exact test of a 2 x 2 table of counts a b / c d: the share of the tables with the same sums of rows and
/// columns that `side` counts,
///   p = sum over the counted x of C(r, x) C(n - r, s - x) / C(n, s),   r = a + b, s = a + c, n = a + b + c + d,
/// x being their first cell: at most a (LeftSided), at least a (RightSided), or those x that are not more probable than
/// a (TwoSided; the same but for 1e-7 counts as equal). Counts >= 0, not checked, at most 2^31 - 1 in all.
///
/// Probabilities are products of their ratios to that of the most probable table, summed in double and divided by the
/// sum of all: twelve figures are good, and p is at most 1. Tables less probable than 1e-280 of the most probable one
/// count as 0. Cost: a step for each table that adds to the sums, some 40 standard deviations of x at most, and the
/// steps to the observed one. Source: R. A. Fisher, J. R. Stat. Soc. 98 (1935) 39-82; for "not more probable" J. O.
/// Irwin, Metron 12 (1935) 83-94.
double FourfoldProbability(int a, int b, int c, int d, Sta::SidedNess side);

}  // namespace kalmia::analysis
