#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"

namespace kalmia {

// Steps of a component that follow each other, in one pass over the table: a table that fits no cache is fetched once
// instead of twice. The bits are those of the steps taken singly.

/// t = X.SpecialNipalsRegressRowsFix(w, null, 0) and p = X.SpecialNipalsRegressColumnsFix(t): some rows at a time are
/// scored and then, still in cache, added to the sums of the loadings. Where a score cannot be estimated the steps are
/// taken singly. Shape: w as long as X has columns, not checked; t and p of any size.
void CalcScoresAndLoadings(const NCDataMatrix<float>& X, const NCDataVector<float>& w, NCDataVector<float>* t,
                           NCDataVector<float>* p);

/// t = X.SpecialNipalsRegressRowsFix(w, groups, group) and p = X.SpecialNipalsRegressColumnsFix(t, groups, group), in
/// the same way. An iteration that alternates the two reads its table once a round, not twice.
void CalcScoresAndLoadings(const NCDataMatrix<float>& X, const NCDataVector<float>& w,
                           const NCIntegralVector<int, -99>* groups, int group, NCDataVector<float>* t,
                           NCDataVector<float>* p);

/// The GetSS() that Y would have after Y.AddVprimV(t, c, -1); Y stays as it is, and no table is written.
long double SumSquaresWithout(const NCDataMatrix<float>& Y, const NCDataVector<float>& t,
                              const NCDataVector<float>& c);

}  // namespace kalmia
