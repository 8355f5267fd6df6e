#pragma once

#include "testing/PlainAlgebra.h"

// O2PLS on complete tables, all in double and in the plainest way, as a witness of the library's.
namespace plain {

/// The first right singular vector, by so many squarings of the table that only equal singular values are left mixed.
Vector FirstLoading(const Table& a);

struct O2PLS {
  Table T, U, P, W, C, Q, To, Wo, Po, Uo, Co, Qo, R, S, Lambda, XLambda;  ///< one component per row
};

O2PLS FitO2PLS(const Table& X, const Table& Y, int predictive, int xOrthogonal, int yOrthogonal);

/// The prediction of Y from X. Of X from Y, with the model's sides swapped.
struct Prediction {
  Table scores, orthogonalScores, predicted;
};
Prediction PredictY(const Table& X, const O2PLS& model, int yColumns);
O2PLS Swapped(const O2PLS& model);

/// Two blocks with scores of their own and in common, all of them at right angles to each other; the first score in
/// common is `2^(common - 1)` times as long as the last. Each cell has a random error of the order of `noise`.
struct Blocks {
  Table X, Y;
};
struct BlocksShape {
  int rows, xVariables, yVariables, common, xUnique, yUnique;
};
Blocks MakeBlocks(const BlocksShape& shape, double noise, unsigned seed);

}  // namespace plain
