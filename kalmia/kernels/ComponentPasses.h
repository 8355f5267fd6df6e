#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"

namespace kalmia {

// Steps of a component that follow each other, in one pass over the table: a table that fits no cache is fetched once
// instead of twice. The bits are those of the steps taken singly.

/// t = X.SpecialNipalsRegressRowsFix(w) and p = X.SpecialNipalsRegressColumnsFix(t): some rows at a time are scored and
/// then, still in cache, added to the sums of the loadings.
/// Only for tables and weights without holes whose scores and loadings can all be estimated. Otherwise false, and t and
/// p are what they were. Shape: w as long as X has columns, not checked.
bool CalcScoresAndLoadings(const NCDataMatrix<float>& X, const NCDataVector<float>& w, NCDataVector<float>* t,
                           NCDataVector<float>* p);

/// The GetSS() that Y would have after Y.AddVprimV(t, c, -1); Y stays as it is, and no table is written.
long double SumSquaresWithout(const NCDataMatrix<float>& Y, const NCDataVector<float>& t,
                              const NCDataVector<float>& c);

}  // namespace kalmia
