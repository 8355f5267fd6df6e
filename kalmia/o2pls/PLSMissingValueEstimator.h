#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

/// Fills the holes of X in place by a cross-validated PLS model of X and Y, for models that need complete tables:
/// x_ij = sum over a <= A of t_ia p_ja. Present cells do not change. With `both`, the holes of Y are filled afterwards,
/// in the same way from the completed X; otherwise Y is only read. An X without holes does not change.
///
/// A is the number of components before the first that fails one of two rules: it must beat the limit of its
/// cross-validation in seven rounds (PLSCrossValidation, default groups), and it must explain at least 1 % of all of Y
/// or more than 3 % of one of its columns (of their sums of squares at the start; a column without cells counts as -99
/// in the sum of all). If the model cannot continue, all components so far count. With A = 0 the cells become 0, the
/// mean of scaled data; so does a cell whose row has no score or whose column has no loading.
///
/// Shape: X N x K, Y N x M, scaled; N is checked, the scaling is not. A fit needs N of at least 2.
/// Progress: each component and each cross-validation reports to `progress`; if null, each opens its own bar
/// (NCProgress::SetSinkFactory).
/// Throws: NCError if the numbers of rows differ, even if there is nothing to fill; of level 1 if not even a first
/// component can be computed, of level 0 or 2 on a stop request; std::bad_alloc. The table to be filled is then
/// unchanged; a failure in filling Y leaves X complete.
/// Cost: A + 1 components and as many cross-validations, for each of the tables that has holes.
/// Source: the filling is PCA's and PLS' reconstruction, Nelson, Taylor & MacGregor (1996), Chemom. Intell. Lab. Syst.
/// 35, 45-65; the rules of the search are our own.
KALMIA_EXPORT void PLSMissingValueEstimator(NCDataMatrix<float>& X, NCDataMatrix<float>& Y, bool both,
                                            NCProgress* progress = nullptr);
