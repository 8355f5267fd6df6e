#pragma once

#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/Export.h"

/// The results of O2PLSCrossValidation. N observations, K variables in X, M in Y, G rounds; round g (from 0) is row g +
/// 1 of a matrix of rounds. "X side" components lie in X and are orthogonal to Y; those of the "Y side" lie in Y.
struct O2PLSCVResults {
  NCDataVector<float> Q2Cum;    ///< Q2 of all Y after 1, 2, ... predictive components
  NCDataMatrix<float> Q2Var;    ///< the same of each variable of Y: one row per number of components, M columns
  NCDataVector<float> Q2XSide;  ///< Q2 of Y after each X-side component that was tried
  NCDataVector<float> Q2YSide;  ///< Q2 of X after each Y-side component that was tried
  int PredictiveComponents = -1;  ///< chosen numbers; -1 until they are known
  int XSideComponents = -1;
  int YSideComponents = -1;

  // One entry per predictive component, G rows: scores (N columns; those of held-out observations predicted), loadings
  // and weights of the rounds' models.
  std::vector<NCDataMatrix<float>> TSet;
  std::vector<NCDataMatrix<float>> USet;
  std::vector<NCDataMatrix<float>> PSet;
  std::vector<NCDataMatrix<float>> WSet;
  std::vector<NCDataMatrix<float>> CSet;
  std::vector<NCDataMatrix<float>> QSet;
  // The same of X-side components (S, To, Po, Wo) and of Y-side components (R, Uo, Co, Qo).
  std::vector<NCDataMatrix<float>> SSet;
  std::vector<NCDataMatrix<float>> RSet;
  std::vector<NCDataMatrix<float>> ToSet;
  std::vector<NCDataMatrix<float>> PoSet;
  std::vector<NCDataMatrix<float>> WoSet;
  std::vector<NCDataMatrix<float>> UoSet;
  std::vector<NCDataMatrix<float>> CoSet;
  std::vector<NCDataMatrix<float>> QoSet;
  // One entry per round: the inner relations of its model.
  std::vector<NCDataMatrix<float>> LambdaSet;
  std::vector<NCDataMatrix<float>> XLambdaSet;

  // SignificanceE::Significance of each component that was tried.
  NCIntegralVector<int, -99> PredictiveSignificance;
  NCIntegralVector<int, -99> XSideSignificance;
  NCIntegralVector<int, -99> YSideSignificance;
  /// Row 1: the sum of squares of Y in each round's held-out rows; row a + 1: that of its prediction errors after a
  /// predictive components.
  NCDataMatrix<float> SSTable;

  /// Turns the signs of the flagged rounds in every predictive component (flag f, element f - 1, is for row f): T, P, W
  /// by xFlips, U, C, Q by yFlips. If entry i was turned, entry i of LambdaSet and XLambdaSet becomes the regression
  /// between the rounds of TSet[i] and USet[i], G x G. LambdaSet and XLambdaSet need an entry per component, not
  /// checked.
  KALMIA_EXPORT void FlipPredictiveModel(const std::vector<bool>& xFlips, const std::vector<bool>& yFlips);
};
