#pragma once

#include <vector>

#include "kalmia/containers/NCDataMatrix.h"

/// Algebra for the witnesses of the tests, as plainly as it can be written and all in double. Vectors and tables count
/// from 0; a hole is a NaN and leaves every sum.
namespace plain {

using Vector = std::vector<double>;
using Table = std::vector<Vector>;  ///< rows of cells

Vector VectorOf(const NCDataVector<float>& vector);
Table TableOf(const NCDataMatrix<float>& matrix);
NCDataMatrix<float> ToFloat(const Table& table);  ///< of a table without holes

double Dot(const Vector& a, const Vector& b);
double SquaresOf(const Vector& v);
double SquaresOf(const Table& table);
Table Transposed(const Table& table);
Table Product(const Table& a, const Table& b);
Vector Product(const Table& a, const Vector& v);
Vector TransposedProduct(const Table& a, const Vector& v);  ///< a'v
Table Inverse(Table square);  ///< Gauss-Jordan with row pivots; of a regular table without holes

void Scale(Vector* v, double factor);
double Normalise(Vector* v);  ///< returns its length before
/// table += factor rows columns'
void AddOuter(Table* table, const Vector& rows, const Vector& columns, double factor);

/// |a - b| / |b| over all cells; infinite if the holes differ. For scores, weights and the like.
double RelativeGap(const Vector& a, const Vector& b);
/// The sine of the angle between two vectors without holes, whatever their lengths and signs.
double SineOfAngle(const Vector& a, const Vector& b);

}  // namespace plain
