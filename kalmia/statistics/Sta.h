#pragma once

#include "kalmia/support/Export.h"

/// Probabilities and quantiles of distributions. Pure functions, which throw nothing unless they say so. About six
/// figures are right: arguments and log gamma are floats. With 10000 degrees of freedom a quantile of t is right to
/// three decimals.
/// Source of log gamma and the incomplete beta function: Lanczos (1964), J. SIAM Numer. Anal. B 1, 86-96; the even and
/// odd continued fraction, Abramowitz & Stegun (1964), 26.5.8.
namespace Sta {

/// Which tables of the same margins count for the exact test of a 2 x 2 table.
enum SidedNess : int {
  LeftSided = 0,   ///< the observed one and those with a smaller first cell
  RightSided = 1,  ///< the observed one and those with a larger first cell
  TwoSided = 2     ///< all that are not more probable than the observed one
};

/// The t with P(|T| < t) = `probability`, or P(T < t) if one-sided, for T of Student's distribution. Found by bisection
/// of 0 to 64 down to 0.0001, so never above 64. 0 if the two-sided probability is outside 0 to 1.
KALMIA_EXPORT float GetStudentsT(float probability, float degreesOfFreedom, bool oneSided);

/// Probability that an F variable with (df1, df2) degrees of freedom exceeds the ratio f1 / f2 of two variances.
/// Degenerate: -99 if f1 or f2 is negative; 0 for f2 = 0 (and a larger f1), 1 for f1 = 0.
KALMIA_EXPORT float PFTest(float f1, float df1, float f2, float df2);

/// The value that an F variable with (df1, df2) degrees of freedom exceeds with `probability`. Found by bisection
/// between 1e-6 and 99999, down to a relative 1e-5 or an absolute 5e-5. -1 if the probability is not inside 0 to 1.
KALMIA_EXPORT float FFTest(float df1, float df2, float probability);

/// Hypergeometric probability of the table (a b / c d) among those of its margins. Counts from 0 on, not checked.
KALMIA_EXPORT long double GetTableProbability(int a, int b, int c, int d);

/// n over k = n! / (k! (n - k)!), from log gammas. 0 <= k <= n, not checked.
KALMIA_EXPORT long double BinomialCoefficient(int n, int k);

/// Fisher's exact test of the counts in `table`, row after row (rows * columns cells, not checked): the probability,
/// given the margins and independence of rows and columns, of all tables that are not more probable than this one.
/// 2 x 2: `sidedNess` chooses the tables, the other arguments are ignored, and nothing is thrown; the time grows with
/// the counts, one step per table. Other sizes: a network of partial tables fills the columns (or rows) of the longer
/// side one after the other.
/// `hybrid` is quicker and no longer exact. It fills the smallest column first. The rest of a table is then judged by
/// the chi-square distribution of Freeman and Halton's statistic -2 ln(gamma P), if its expected counts (without empty
/// rows) are all above 1 and 80 % of them 5 or more. The whole table is judged so only if its smallest column is empty.
/// The approximated parts depend on the side that is filled, so a square table and its transpose can differ.
/// `workspace` limits the memory of the network, in units of four bytes: it takes at most one and a half times as much,
/// and half a megabyte of logarithms. 0 or less means 2^29 units, 2 GiB.
/// Throws NCError, starting with "Error in fexact.\n": fewer than two rows, a negative cell, no cell above 0, a product
/// of margins beyond int, too small a workspace.
/// Source: Mehta & Patel (1986), ACM Trans. Math. Software 12, 154-161 (and Algorithm 643); Clarkson, Fan & Joe (1993),
/// ACM Trans. Math. Software 19, 484-488.
KALMIA_EXPORT float GetFisherExactProbability(const int* table, int rows, int columns, bool hybrid, SidedNess sidedNess,
                                              int workspace);

}  // namespace Sta
