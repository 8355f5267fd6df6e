#pragma once

#include <vector>

#include "kalmia/opls/OPLSCrossValidation.h"

/// The tables divided: what the model of a group is made from, and what it predicts.
struct OPLSCrossValidation::Round {
  int group;
  NCDataMatrix<float> trainX;
  NCDataMatrix<float> trainY;
  NCDataMatrix<float> testX;
  std::vector<int> trainIndex;  ///< observation numbers, in their order
  std::vector<int> testIndex;
};
