#pragma once

#include "testing/PlainAlgebra.h"

/// PLS by NIPALS once more, as plainly as it can be written and all in double: the witness of the tests.
namespace plain {

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

}  // namespace plain
