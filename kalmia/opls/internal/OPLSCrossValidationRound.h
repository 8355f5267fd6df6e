#pragma once

#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/opls/NCOPLS.h"
#include "kalmia/opls/OPLSCrossvalidationData.h"

namespace kalmia {

/// A round of the cross-validation, the tables divided: what the model of a group is made from, and what it predicts.
struct OPLSRound {
  int group;
  NCDataMatrix<float> trainX;
  NCDataMatrix<float> trainY;
  NCDataMatrix<float> testX;
  std::vector<int> trainIndex;  ///< observation numbers, in their order
  std::vector<int> testIndex;
};

/// `groups` has a cell for each row of X and Y.
OPLSRound DivideByGroup(const NCDataMatrix<float>& X, const NCDataMatrix<float>& Y,
                        const NCIntegralVector<int, -99>& groups, int group);

/// Stores the matrices of a round's model. Its newest components are turned along those of the first round before.
void StoreModel(NCOPLS* model, int group, OPLSCrossvalidationData* data);

}  // namespace kalmia
