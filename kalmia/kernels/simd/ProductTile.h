#pragma once

namespace kalmia {
namespace simd {

constexpr int kTileRows = 4;      ///< rows of a tile of a matrix product
constexpr int kTileColumns = 16;  ///< its columns

/// One tile of a matrix product, four rows by sixteen columns, row by row in `tile`:
///   tile[i][j] += sum over k < depth, ascending, of a[k][i] * b[k][j]
/// with `a` packed four to a step and `b` sixteen to a step. Every cell adds its products one after the other, in the
/// order of k, to one double: the same bits on every machine, and the same in one call as in several for parts of k.
/// `productsAreExact` says that a product of two factors is exact in double, as it is for factors that came from floats:
/// then it may be fused with its addition. No alignment is needed. The four arrays do not overlap.
/// |error| of a cell <= depth * u * sum |a b|, u = 2^-53 (Higham 2002, Accuracy and Stability, 3.1).
void AddProductTile(const double* a, const double* b, int depth, bool productsAreExact, double* tile);

namespace scalar {
void AddProductTile(const double* a, const double* b, int depth, bool productsAreExact, double* tile);  ///< the twin
}  // namespace scalar

}  // namespace simd
}  // namespace kalmia
