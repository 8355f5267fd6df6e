#pragma once

#include <vector>

#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/StoredModel.h"

namespace kalmia::analysis {

// What is computed from a fitted OPLS model of A predictive and O orthogonal components, N rows, K columns in X.

/// Coefficients in the units of the file, of the whole prediction: predictive part and what the orthogonal components
/// take off Y. They hold of rows without missing cells.
Coefficients CoefficientsInOriginalUnits(const StoredOPLS& model);

/// Variable importance of each X column, K cells, of the predictive components: as for PLS, with
/// VIP_k = sqrt(K sum_a(S_a w_ak^2) / sum_a S_a), S_a = c_a'c_a t_a't_a; and of the orthogonal ones, by the X that they
/// describe: sqrt(K sum_o(S_o p_ok^2 / p_o'p_o) / sum_o S_o), S_o = p_o'p_o t_o't_o; 0 without any. The squares of each
/// sum to K. Source: Galindo-Prieto, Eriksson & Trygg (2014), J. Chemometrics 28, 623-632.
std::vector<double> PredictiveImportance(const StoredOPLS& model);
std::vector<double> OrthogonalImportance(const StoredOPLS& model);

/// The root of K times the share of each column in the squares of the rows of `vectors`, each weighted by its number.
std::vector<double> Importance(const NCDataMatrix<float>& vectors, const std::vector<double>& weights);
/// Of a vector of scores, weights or loadings, missing cells as 0.
double SumOfPresentSquares(const NCDataVector<float>& v);

/// Of a column with the scores of one component: covariance (divisor n - 1) and correlation over the rows present in
/// both.
struct ColumnWithScores {
  double covariance = 0.0;
  double correlation = 0.0;
};

/// Of column k (from 1) of the scaled X.
ColumnWithScores RelateColumn(const NCDataMatrix<float>& x, int k, const NCDataVector<float>& scores);

}  // namespace kalmia::analysis
