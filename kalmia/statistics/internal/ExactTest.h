#pragma once

#include "kalmia/statistics/internal/CochranApproximation.h"

namespace kalmia {

/// The probability, given the margins and independence, of all tables that are not more probable than `table` (rows
/// after each other), equal ones included up to a relative 1e-7. The shorter side's margins are those of the network's
/// nodes, the other side's are its stages; a square table's stages are its columns.
/// Empty rows and columns take no part, but for `conditions` that allow an approximation: then they make a side longer,
/// and an empty column is the smallest one, with which the network begins.
/// `workspace` limits the network, in units of four bytes; 0 or less stands for 2^29.
/// Throws NCError, see Sta::GetFisherExactProbability. Sources as there.
double ExactTestOfIndependence(const int* table, int rows, int columns, const CochranConditions& conditions,
                               int workspace);

}  // namespace kalmia
