#include "O2PLSTwin.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "kalmia/pcapls/PCACrossValidation.h"

namespace {

std::vector<TwinRound> RoundsOf(const FloatBlocks& blocks, const NCIntegralVector<int, -99>& groups) {
  const plain::Table X = plain::TableOf(blocks.X), Y = plain::TableOf(blocks.Y);
  std::vector<TwinRound> rounds(static_cast<std::size_t>(*std::max_element(groups.begin(), groups.end())) + 1);
  for (std::size_t g = 0; g < rounds.size(); ++g)
    for (std::size_t i = 0; i < X.size(); ++i) {
      const bool held = groups[static_cast<int>(i) + 1] == static_cast<int>(g);
      (held ? rounds[g].testX : rounds[g].trainX).push_back(X[i]);
      (held ? rounds[g].testY : rounds[g].trainY).push_back(Y[i]);
    }
  return rounds;
}

}  // namespace

double SquaredErrors(const plain::Table& predicted, const plain::Table& truth) {
  double sum = 0.0;
  for (std::size_t i = 0; i < truth.size(); ++i)
    for (std::size_t j = 0; j < truth[i].size(); ++j) sum += std::pow(predicted[i][j] - truth[i][j], 2);
  return sum;
}

O2PLSTwin::O2PLSTwin(const FloatBlocks& blocks, int groups)
    : rounds(RoundsOf(blocks, GetDeafultCVGroupsVector(blocks.X.SizeRows(), groups))),
      ssX(plain::SquaresOf(plain::TableOf(blocks.X))),
      ssY(plain::SquaresOf(plain::TableOf(blocks.Y))),
      xColumns(blocks.X.SizeColumns()),
      yColumns(blocks.Y.SizeColumns()) {}

double O2PLSTwin::Q2OfY(int predictive, int xOrthogonal, int yOrthogonal) const {
  double press = 0.0;
  for (const TwinRound& r : rounds) {
    const plain::O2PLS m = plain::FitO2PLS(r.trainX, r.trainY, predictive, xOrthogonal, yOrthogonal);
    press += SquaredErrors(plain::PredictY(r.testX, m, yColumns).predicted, r.testY);
  }
  return 1 - press / ssY;
}

double O2PLSTwin::Q2OfX(int predictive, int xOrthogonal, int yOrthogonal) const {
  double press = 0.0;
  for (const TwinRound& r : rounds) {
    const plain::O2PLS m = plain::FitO2PLS(r.trainX, r.trainY, predictive, xOrthogonal, yOrthogonal);
    press += SquaredErrors(plain::PredictY(r.testY, plain::Swapped(m), xColumns).predicted, r.testX);
  }
  return 1 - press / ssX;
}
