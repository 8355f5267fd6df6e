#pragma once

namespace kalmia {

/// When a partial table may be judged by the chi-square distribution rather than exactly: its expected counts are at
/// least `expected` in at least `percent` % of the cells, and at least `smallest` in all. Never where `expected` is not
/// above 0. Source: Cochran (1954), Biometrics 10, 417-451.
struct CochranConditions {
  double expected;
  double percent;
  double smallest;
};

/// The probability, given the margins and independence, of all tables that are not more probable than `table` (rows
/// after each other), equal ones included up to a relative 1e-7. Columns are taken out one after the other; partial
/// tables that leave the same row margins meet in a node of a network, and paths of which all completions count, or
/// none, go no further. The shorter side's margins are the nodes.
/// `workspace` limits the nodes and paths that are held, in units of four bytes; 0 or less stands for the cap of 2^28.
/// Throws NCError, see Sta::GetFisherExactProbability. Sources as there.
double ExactTestOfIndependence(const int* table, int rows, int columns, const CochranConditions& conditions,
                               int workspace);

}  // namespace kalmia
