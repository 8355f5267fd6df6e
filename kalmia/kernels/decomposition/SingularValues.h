#pragma once

namespace kalmia {

/// Decomposes A = U diag(w) V' by Householder reduction to bidiagonal form and implicit QR sweeps. All arrays from 1:
/// a[r][c] for r <= rows, c <= columns turns into U; w has `columns` cells, v is columns by columns; neither has to be
/// set. False if the iteration does not converge within 32000 rounds for one singular value, or as soon as a number of
/// the bidiagonal form is not finite: no round would ever mend it. `a` is overwritten either way. w comes unsorted, not
/// negative.
/// Scalars and sums are held in at least double, cells are rounded to T. A column's sum adds in the order of the rows
/// and a rotation changes each row on its own, so that all loops can walk the rows as they lie in memory.
/// Cost: about 4 r c^2 + 8 c^3 multiplications. Single-threaded.
/// Source: Golub & Reinsch (1970), Singular value decomposition and least squares solutions, Numer. Math. 14, 403-420.
template <class T>
bool DecomposeSingularValues(T** a, int rows, int columns, T* w, T** v);

}  // namespace kalmia
