#pragma once

#include <optional>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/o2pls/NCO2PLS.h"
#include "kalmia/o2pls/NCO2PLSPred.h"
#include "kalmia/o2pls/O2PLSCVResults.h"

namespace kalmia {

/// One round of a cross-validation of O2PLS: the model of the training rows, the rows that were held out, and what the
/// model as it stands makes of them; no predictions after a change of the model.
struct O2PLSRound {
  NCO2PLS model;
  NCDataMatrix<float> heldOutX;
  NCDataMatrix<float> heldOutY;
  std::optional<NCO2PLSYPred> ofY;
  std::optional<NCO2PLSXPred> ofX;
};

/// Prediction errors of the held-out rows by the model as it stands.
NCDataMatrix<float> ErrorsOfY(const O2PLSRound& round);
NCDataMatrix<float> ErrorsOfX(const O2PLSRound& round);

/// Turns the components of all models so that the loadings P, C, Po and Co point the way of round 0's, and predicts
/// the held-out rows of both blocks where a model was turned or has no prediction.
void AlignRounds(std::vector<O2PLSRound>* rounds);

/// Appends scores, loadings, weights and inner relations of all rounds to the results' sets. Every round has its
/// predictions.
void SaveRounds(const std::vector<O2PLSRound>& rounds, const NCIntegralVector<int, -99>& groups,
                O2PLSCVResults* results);

}  // namespace kalmia
