#pragma once

#include <vector>

#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/StoredModel.h"

namespace kalmia::analysis {

// Diagnostics of an OPLS model of A predictive and O orthogonal components, N rows and K columns of X.

/// Coefficients of the whole prediction in the units of the file: the predictive part less the share of the orthogonal
/// components. They hold for rows without missing cells.
Coefficients CoefficientsInOriginalUnits(const StoredOPLS& model);

/// Variable importance of each X column, K cells, of the predictive components: as for PLS, with
/// VIP_k = sqrt(K sum_a(S_a w_ak^2) / sum_a S_a), S_a = c_a'c_a t_a't_a; and of the orthogonal ones, by the X that they
/// describe: sqrt(K sum_o(S_o p_ok^2 / p_o'p_o) / sum_o S_o), S_o = p_o'p_o t_o't_o; 0 without any. The squares of each
/// sum to K. Source: Galindo-Prieto, Eriksson & Trygg (2014), J. Chemometrics 28, 623-632.
std::vector<double> PredictiveImportance(const StoredOPLS& model);
std::vector<double> OrthogonalImportance(const StoredOPLS& model);

/// For each column sqrt(K share), its share in the squares of the rows of `vectors`, each row with its weight.
std::vector<double> Importance(const NCDataMatrix<float>& vectors, const std::vector<double>& weights);

/// How a column goes with the scores of one component, over the rows present in both; the covariance has divisor n - 1.
struct ColumnWithScores {
  double covariance = 0.0;
  double correlation = 0.0;
};

/// The same for column k (from 1) of the scaled X.
ColumnWithScores RelateColumn(const NCDataMatrix<float>& x, int k, const NCDataVector<float>& scores);

}  // namespace kalmia::analysis
