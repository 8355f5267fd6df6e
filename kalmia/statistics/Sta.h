#pragma once

#include "kalmia/support/Export.h"

/// Probabilities and quantiles of distributions. Pure functions; those without a word about it throw nothing. About six
/// figures are exact: arguments are float, and log gamma is rounded to float, so that with 10000 degrees of freedom the
/// third decimal of a quantile of t is the last good one.
/// Source of log gamma and the incomplete beta function: Lanczos (1964), J. SIAM Numer. Anal. B 1, 86-96; the even and
/// odd continued fraction, Abramowitz & Stegun (1964), 26.5.8.
namespace Sta {

/// Which tables of the same margins count for the exact test of a 2 x 2 table.
enum SidedNess : int {
  LeftSided = 0,   ///< the observed one and those with a smaller first cell
  RightSided = 1,  ///< the observed one and those with a larger first cell
  TwoSided = 2     ///< all that are not more probable than the observed one
};

/// The t that |T| stays below with `probability` (one-sided: that T stays below), T having Student's distribution; from
/// a bisection of 0 to 64 down to 0.0001, so never above 64. 0 where the two-sided probability is outside 0 to 1.
KALMIA_EXPORT float GetStudentsT(float probability, float degreesOfFreedom, bool oneSided);

/// Probability that an F variable with (df1, df2) degrees of freedom exceeds the ratio f1 / f2 of two variances.
/// Degenerate: -99 where f1 or f2 is negative; 0 for f2 = 0 (and a larger f1), 1 for f1 = 0.
KALMIA_EXPORT float PFTest(float f1, float df1, float f2, float df2);

/// The F that an F variable with (df1, df2) degrees of freedom exceeds with `probability`; by bisection between 1e-6
/// and 99999, down to a relative 1e-5 or an absolute 5e-5. -1 where the probability is not inside 0 to 1.
KALMIA_EXPORT float FFTest(float df1, float df2, float probability);

/// Hypergeometric probability of the table (a b / c d) among those of its margins. Counts from 0 on, not checked.
KALMIA_EXPORT long double GetTableProbability(int a, int b, int c, int d);

/// n over k = n! / (k! (n - k)!), from log gammas. 0 <= k <= n, not checked.
KALMIA_EXPORT long double BinomialCoefficient(int n, int k);

/// Fisher's exact test of the counts in `table`, row after row (rows * columns cells, not checked): the probability, if
/// the margins are given and rows and columns independent, of all tables that are not more probable than this one; for
/// 2 x 2 of those that `sidedNess` says (then nothing else plays a part, and nothing is thrown; one step per table, so
/// that its time grows with the counts). Other sizes go through a network of partial tables, which fills the longer
/// side's columns (or rows) one after the other.
/// `hybrid`: the smallest column is filled first. What is then left of a table is judged by the chi-square distribution
/// of Freeman and Halton's statistic -2 ln(gamma P) where its expected counts are all above 1, and 80 % of them 5 or
/// more; its empty rows do not count. The whole table is never judged so, unless its smallest column is empty.
/// Quicker, and no longer exact: which parts are approximated depends on the side whose columns are filled, so that a
/// square table and its transpose can differ.
/// `workspace` limits the network's memory, in units of four bytes: at most one and a half times as much is taken,
/// beside half a megabyte of logarithms. 0 or less stands for 2^29 units, 2 GiB.
/// Throws NCError, "Error in fexact.\n" in front: fewer than two rows, a negative cell, no cell above 0, margins whose
/// product is beyond int, too small a workspace.
/// Source: Mehta & Patel (1986), ACM Trans. Math. Software 12, 154-161 (and Algorithm 643); Clarkson, Fan & Joe (1993),
/// ACM Trans. Math. Software 19, 484-488.
KALMIA_EXPORT float GetFisherExactProbability(const int* table, int rows, int columns, bool hybrid, SidedNess sidedNess,
                                              int workspace);

}  // namespace Sta
