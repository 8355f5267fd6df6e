#pragma once

/// The innermost step of a matrix product. No pointer is read where depth is 0; any alignment; the arrays do not
/// overlap. |error| of a cell <= depth * u * sum |a b|, u = 2^-53 (Higham 2002, Accuracy and Stability, 3.1).
namespace kalmia::simd {

constexpr int kTileRows = 4;      ///< rows of a tile of a product
constexpr int kTileColumns = 16;  ///< its columns

/// One tile of a matrix product, row by row in `tile`:
///   tile[i][j] += sum over k < depth, ascending, of a[k][i] * b[k][j]
/// with `a` packed four to a step and `b` sixteen to a step. Every cell adds its products one after the other, in the
/// order of k, to one double: the same bits on every machine, and the same in one call as in several for parts of k.
/// `productsAreExact` says that a product of two factors is exact in double, as it is for factors that came from
/// floats: then it may be fused with its addition.
void AddProductTile(const double* a, const double* b, int depth, bool productsAreExact, double* tile);

/// The twin.
namespace scalar {
void AddProductTile(const double* a, const double* b, int depth, double* tile);
}  // namespace scalar

}  // namespace kalmia::simd
