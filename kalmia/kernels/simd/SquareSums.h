#pragma once

#include "kalmia/containers/internal/LaneSum.h"

/// Sums of squared differences of rows of float cells with others, which lie side by side in a tile: cell l of the
/// tile's column c is tile[c * kTileRows + l]. Each difference is formed and squared in double, halved where told,
/// rounded to float, and added to a sum in double; the columns come in their order. The same bits on every machine.
namespace kalmia::simd {

constexpr int kTileRows = kLanes;   ///< rows of a tile
constexpr int kRowsBesideTile = 4;  ///< rows that are held against a tile at once, at most

enum class Square { Whole, Half };

/// sums[r * kTileRows + l] = the sum of rows[r] and row l of the tile, for r < count <= kRowsBesideTile, over `columns`
/// columns, columns >= 0. No cell is looked at. Any alignment; no overlap with `sums`.
void SquareSums(Square square, const float* const* rows, int count, const float* tile, int columns, double* sums);
/// The same over the columns that both have (a hole, -99, takes no part), and in `common`, laid out as `sums`, how many
/// they are.
void SquareSumsMasked(Square square, const float* const* rows, int count, const float* tile, int columns, double* sums,
                      double* common);

/// The twins.
namespace scalar {
void SquareSums(Square square, const float* const* rows, int count, const float* tile, int columns, double* sums);
void SquareSumsMasked(Square square, const float* const* rows, int count, const float* tile, int columns, double* sums,
                      double* common);
}  // namespace scalar

}  // namespace kalmia::simd
