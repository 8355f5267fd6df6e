#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"

namespace kalmia {

// Steps of models that filter a table X by scores T and weights W (a component a row, as many in both), or multiply it
// from the left by few rows A, in one pass over it. F below is X after X.AddVprimV(T[a], W[a], -1) for each row a in
// turn; nobody stores it. The bits are those of the steps taken singly, which is what is done where X or a factor has
// holes, or A has so many rows that this is faster. No vector or factor may be a row of X.

/// A X = A.MatrixMultiply(X, false, false). Every row of A takes a row of X while it lies in cache.
NCDataMatrix<float> MultiplyByFewRows(const NCDataMatrix<float>& A, const NCDataMatrix<float>& X);

/// A F, as by A.MatrixMultiply.
NCDataMatrix<float> MultiplyFilteredByFew(const NCDataMatrix<float>& A, const NCDataMatrix<float>& X,
                                          const NCDataMatrix<float>& T, const NCDataMatrix<float>& W);

/// X->AddVprimV(t, p, -1), and A times what X is then.
NCDataMatrix<float> DeflateAndMultiplyByFewRows(const NCDataMatrix<float>& A, NCDataMatrix<float>* X,
                                            const NCDataVector<float>& t, const NCDataVector<float>& p);

/// t = F.SpecialNipalsRegressRowsFix(w, null, 0) and p = X.SpecialNipalsRegressColumnsFix(t): scores of the filtered
/// table, loadings of the table itself. Shape: w as long as X has columns; t and p of any size.
void CalcFilteredScoresAndLoadings(const NCDataMatrix<float>& X, const NCDataMatrix<float>& T,
                                   const NCDataMatrix<float>& W, const NCDataVector<float>& w, NCDataVector<float>* t,
                                   NCDataVector<float>* p);

/// F itself: a copy of X, filtered.
NCDataMatrix<float> Filtered(const NCDataMatrix<float>& X, const NCDataMatrix<float>& T, const NCDataMatrix<float>& W);

}  // namespace kalmia
