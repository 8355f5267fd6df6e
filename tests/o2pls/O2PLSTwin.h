#pragma once

#include <vector>

#include "O2PLSCase.h"
#include "PlainO2PLS.h"

/// The iterations inside end at a change of 1e-5; Q2 is of the order of 1, and passes a few such errors on.
constexpr double kConvergence = 2e-4;

/// The rows that a model is fitted to, and those that it predicts.
struct TwinRound {
  plain::Table trainX, trainY, testX, testY;
};

double SquaredErrors(const plain::Table& predicted, const plain::Table& truth);

/// The cross-validation of O2PLS models of given numbers of components, by plain::FitO2PLS.
struct O2PLSTwin {
  O2PLSTwin(const FloatBlocks& blocks, int groups);  ///< the default groups

  double Q2OfY(int predictive, int xOrthogonal, int yOrthogonal) const;
  double Q2OfX(int predictive, int xOrthogonal, int yOrthogonal) const;

  std::vector<TwinRound> rounds;
  double ssX, ssY;
  int xColumns, yColumns;
};
