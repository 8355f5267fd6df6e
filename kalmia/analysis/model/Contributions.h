#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/NewRows.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// What each column of X has to do with where one row lies. Signs are kept: a column may also hold a row back.
struct RowContributions {
  std::string row;       ///< its name
  double t2 = kNotANumber;
  /// K parts of T2, of column k: x_k sum over a of (t_a - mean_a) / var_a w*_ka, x the scaled row, w*_a the factors
  /// that make score a of it: for OPLS of predictive and orthogonal components alike. Not a number for a missing cell.
  std::vector<double> t2Parts;
  /// K residuals e_k, in scaled units; not a number for a missing cell. The sum of their squares over the number of
  /// cells less that of components is the square of the row's absolute distance.
  std::vector<double> residuals;
};

// Contributions of rows from 0. The parts of T2 sum to it in a row without holes by a model whose training scores have
// the mean 0. They do not where the row has missing cells, since its scores are then no plain sum over its cells, nor
// where the mean of the scores is not 0: without centring, and with holes in the training rows. A note says so of each
// row where the two differ by more than rounding. Of a row of which the model says nothing all parts are not numbers;
// of a model without moments of its scores, from a file before version 5, all parts of T2 are, which notes say.
// Throws BadData for a model without components: it has no T2, and its residuals are the rows themselves.
// Sources: J. A. Westerhuis, S. P. Gurden, A. K. Smilde, Chemom. Intell. Lab. Syst. 51 (2000) 95-114; P. Miller,
// R. E. Swanson, C. E. Heckler, Appl. Math. Comput. Sci. 8 (1998) 775-792.

/// Of rows that the model was fitted to, by the scores that the fit gave them. `x` are all of them as PredictRows and
/// ScoreRows take them. The model is as the fit has made it.
KALMIA_EXPORT std::vector<RowContributions> ContributionsOfTrainingRows(const StoredPLS& model,
                                                                        const NCDataMatrix<float>& x,
                                                                        const std::vector<int>& rows, Notes* notes);
KALMIA_EXPORT std::vector<RowContributions> ContributionsOfTrainingRows(const StoredPCA& model,
                                                                        const NCDataMatrix<float>& x,
                                                                        const std::vector<int>& rows, Notes* notes);
KALMIA_EXPORT std::vector<RowContributions> ContributionsOfTrainingRows(const StoredOPLS& model,
                                                                        const NCDataMatrix<float>& x,
                                                                        const std::vector<int>& rows, Notes* notes);

/// Of new rows, by the scores that the model gives them.
KALMIA_EXPORT std::vector<RowContributions> ContributionsOfNewRows(const StoredPLS& model, const NewRows& newRows,
                                                                   const std::vector<int>& rows, Notes* notes);
KALMIA_EXPORT std::vector<RowContributions> ContributionsOfNewRows(const StoredPCA& model, const NewRows& newRows,
                                                                   const std::vector<int>& rows, Notes* notes);
KALMIA_EXPORT std::vector<RowContributions> ContributionsOfNewRows(const StoredOPLS& model, const NewRows& newRows,
                                                                   const std::vector<int>& rows, Notes* notes);

}  // namespace kalmia::analysis
