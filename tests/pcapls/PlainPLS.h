#pragma once

#include <vector>

#include "kalmia/containers/NCDataMatrix.h"

/// PLS by NIPALS once more, as plainly as it can be written and all in double: the witness of the tests. Vectors and
/// tables count from 0; a hole is a NaN.
namespace plain {

using Vector = std::vector<double>;
using Table = std::vector<Vector>;  ///< rows of cells

Vector VectorOf(const NCDataVector<float>& vector);
Table TableOf(const NCDataMatrix<float>& matrix);

double Dot(const Vector& a, const Vector& b);    ///< over pairs
double SquaresOf(const Vector& v);               ///< over present cells
double SquaresOf(const Table& table);
Table Product(const Table& a, const Table& b);   ///< of tables without holes
Table Transposed(const Table& table);
Table Inverse(Table square);                     ///< Gauss-Jordan with row pivots; of a regular table without holes

/// Each column, or row, of the table regressed on v; the denominator is at least a third of v's full sum of squares.
Vector RegressColumns(const Table& table, const Vector& v);
Vector RegressRows(const Table& table, const Vector& v);

/// The first column of largest sum of squares, its holes filled with small numbers of alternating sign; the only column
/// as it is.
Vector StartColumn(const Table& table);

struct Component {
  Vector w, t, p, c, u;
};

/// One component in exactly `rounds` rounds, from the weights `start` or, if null, the usual column of Y.
Component Fit(const Table& X, const Table& Y, const Vector* start, int rounds);

/// table -= t v'
void Deflate(Table* table, const Vector& t, const Vector& v);

/// |a - b| / |b| over all cells; infinite if the holes differ. For scores, weights and the like.
double RelativeGap(const Vector& a, const Vector& b);

}  // namespace plain
