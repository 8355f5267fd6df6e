#pragma once

#include "kalmia/analysis/fit/FillModel.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

constexpr int kMostRounds = 50;

/// Components that filling such a table can use: min(rows, columns) - 1. As many as rows or columns would describe
/// whatever is filled in.
int MostFillComponents(const NCDataMatrix<float>& table);

/// Fills the holes of a centred and scaled table, every row and column of which has a present cell, by PCA: the first
/// estimates are those of a model of the table with its holes; then the model is fitted anew to the filled table,
/// around its column means m, and its estimates replace the former ones, until none moves by more than kSettled or
/// kMostRounds have passed.
///   x_ij = m_j + sum over a of s_a t_ia p_ja,   s_a = max(0, 1 - max(N - 1, K) v / t_a't_a),
///   v = SS(residuals) / max(1, (N - 1 - A) (K - A) - number of holes)
/// for N rows and K columns: a component is shrunk by what noise of variance v contributes to it. Unshrunk, the filled
/// cells make the noise that they have taken up look like structure in the next round. With A = 0 the cells become 0,
/// the mean. `components` is A, cut to MostFillComponents. `progress` may be null. Throws Stopped where
/// the bar wants to stop.
/// Source: Josse & Husson (2012), Journal de la Societe Francaise de Statistique 153, 79-99, but for the degrees of
/// freedom, from which the holes are taken here.
NCDataMatrix<float> FillScaled(const NCDataMatrix<float>& table, int components, FillModel* model,
                               NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
