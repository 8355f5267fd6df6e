#pragma once

#include "kalmia/support/Export.h"

namespace kalmia {

// Sums over the cells of a table of floats for eight models side by side, which share each cell that is fetched: eight
// vectors lie in memory as their first cells, then their second cells, and so on.
// Products and sums run in double and are never fused; each sum takes its terms in ascending order. The same bits on
// every processor, and however rows and columns are shared out among calls, which may run at the same time.
// Not checked: `rows` points at the cells of `count` rows; at least `n` cells each; nothing overlaps what is written.
// Missing cells are not known here: a table must have none. Throws nothing.

/// Vectors side by side.
constexpr int kSideBySide = 8;

/// dots[i][l] = sum over k < n of rows[i][k] vectors[k][l], for i < count and l < 8.
KALMIA_EXPORT void DotsSideBySide(const float* const* rows, int count, const double* vectors, int n, double* dots);

/// sums[k][l] += sum over i < count of rows[i][k] factors[i][l], for k < n and l < 8.
KALMIA_EXPORT void AddProductsSideBySide(const float* const* rows, int count, const double* factors, int n,
                                         double* sums);

/// sums[k][l] += sum over i < count of weights[i][l] (rows[i][k] - centres[k][l])^2, for k < n and l < 8.
KALMIA_EXPORT void AddSquaresSideBySide(const float* const* rows, int count, const double* weights,
                                        const double* centres, int n, double* sums);

}  // namespace kalmia
