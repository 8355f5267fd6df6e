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

/// How much each column of X adds to T2 and to the residual of one row. A negative part makes T2 smaller.
struct RowContributions {
  std::string row;       ///< its name
  double t2 = kNotANumber;
  /// K parts of T2. That of column k is x_k sum over a of (t_a - mean_a) / var_a w*_ka, where x is the scaled row and
  /// score a is the sum of w*_ka x_k; OPLS counts predictive and orthogonal components. NaN for a missing cell.
  std::vector<double> t2Parts;
  /// K residuals e_k in scaled units; NaN for a missing cell. Their sum of squares, divided by the number of cells less
  /// that of components, is the square of the row's absolute distance.
  std::vector<double> residuals;
};

// Contributions of rows, which count from 0. The parts sum to T2 where the row has no holes and the training scores
// have mean 0. With holes, scores are no plain sums over the cells; and the mean is not 0 without centring, or where
// training rows have holes. A note names each row whose parts and T2 differ by more than rounding. All parts are NaN
// for a row that the model cannot describe. A model from a file before version 5 has no moments of its scores; then all
// parts of T2 are NaN, with a note.
// Throws BadData for a model without components: it has no T2, and its residuals are the rows themselves.
// Sources: J. A. Westerhuis, S. P. Gurden, A. K. Smilde, Chemom. Intell. Lab. Syst. 51 (2000) 95-114; P. Miller,
// R. E. Swanson, C. E. Heckler, Appl. Math. Comput. Sci. 8 (1998) 775-792.

/// For training rows, from the scores of the fit. `x` holds all training rows, as for PredictRows and ScoreRows. The
/// model must be as the fit made it.
KALMIA_EXPORT std::vector<RowContributions> ContributionsOfTrainingRows(const StoredPLS& model,
                                                                        const NCDataMatrix<float>& x,
                                                                        const std::vector<int>& rows, Notes* notes);
KALMIA_EXPORT std::vector<RowContributions> ContributionsOfTrainingRows(const StoredPCA& model,
                                                                        const NCDataMatrix<float>& x,
                                                                        const std::vector<int>& rows, Notes* notes);
KALMIA_EXPORT std::vector<RowContributions> ContributionsOfTrainingRows(const StoredOPLS& model,
                                                                        const NCDataMatrix<float>& x,
                                                                        const std::vector<int>& rows, Notes* notes);

/// For new rows, from the scores that the model predicts.
KALMIA_EXPORT std::vector<RowContributions> ContributionsOfNewRows(const StoredPLS& model, const NewRows& newRows,
                                                                   const std::vector<int>& rows, Notes* notes);
KALMIA_EXPORT std::vector<RowContributions> ContributionsOfNewRows(const StoredPCA& model, const NewRows& newRows,
                                                                   const std::vector<int>& rows, Notes* notes);
KALMIA_EXPORT std::vector<RowContributions> ContributionsOfNewRows(const StoredOPLS& model, const NewRows& newRows,
                                                                   const std::vector<int>& rows, Notes* notes);

}  // namespace kalmia::analysis
