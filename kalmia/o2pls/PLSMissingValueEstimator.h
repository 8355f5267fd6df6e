#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

/// Fills the holes of X with what a cross-validated PLS model of X and Y makes of them, for models that take complete
/// tables only: x_ij = sum over a <= A of t_ia p_ja, in place. Cells that held values are not touched. With `both` the
/// holes of Y are filled afterwards, in the same way from the completed X; without it Y is only read. An X without
/// holes is left alone.
///
/// A, the number of components, is found by going on until a component fails one of two rules: it has to beat the limit
/// of its cross-validation in seven rounds (PLSCrossValidation, default groups), and it has to explain at least 1 % of
/// all of Y or more than 3 % of one of its columns (of what these held at the start, where a column without any cell is
/// -99 in the sum of all). The component that fails does not count. Where the model cannot go on, all components so far
/// count. With A = 0 the cells become 0, the mean of scaled data; so does a cell whose row has no score or whose column
/// has no loading.
///
/// Shape: X N x K, Y N x M, scaled already; N is checked, the scaling is not. N is at least 2 to fit anything.
/// Progress: each component and each cross-validation reports to `progress`; where it is null, each opens a bar of its
/// own (NCProgress::SetSinkFactory).
/// Throws: NCError where the numbers of rows differ, whatever is to be filled; of level 1 if not even a first component
/// can be computed, of level 0 or 2 on the user's stop; std::bad_alloc. The table whose holes were to be filled is then
/// as it was; a failure in filling Y leaves X complete.
/// Cost: A + 1 components and as many cross-validations, for each of the tables that has holes.
/// Source: the filling is PCA's and PLS' reconstruction, Nelson, Taylor & MacGregor (1996), Chemom. Intell. Lab. Syst.
/// 35, 45-65; the rules of the search are our own.
KALMIA_EXPORT void PLSMissingValueEstimator(NCDataMatrix<float>& X, NCDataMatrix<float>& Y, bool both,
                                            NCProgress* progress = nullptr);
