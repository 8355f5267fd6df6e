#pragma once

#include "kalmia/analysis/fit/FillModel.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

constexpr int kMostRounds = 50;  ///< of refitting

/// The most components that filling such a table can use: min(rows, columns) - 1. With more the model would describe
/// any value that is filled in.
int MostFillComponents(const NCDataMatrix<float>& table);

/// Fills the holes of a centred and scaled table by PCA; every row and column must have a present cell. The first
/// estimates come from a model of the table with its holes. Then the model is fitted to the filled table, around its
/// column means m, and its estimates replace the earlier ones, until none moves by more than kSettled or kMostRounds
/// have passed.
///   x_ij = m_j + sum over a of s_a t_ia p_ja,   s_a = max(0, 1 - max(N - 1, K) v / t_a't_a),
///   v = SS(residuals) / max(1, (N - 1 - A) (K - A) - number of holes)
/// for N rows and K columns: each component is shrunk by the share of it that noise of variance v makes. Without
/// shrinking, noise in filled cells looks like structure in the next round. With A = 0 the cells become 0, the mean.
/// `components` is A, cut to MostFillComponents. `progress` may be null. Throws Stopped on a
/// stop of the progress.
/// Source: Josse & Husson (2012), Journal de la Societe Francaise de Statistique 153, 79-99, except that the
/// holes are taken off the degrees of freedom here.
NCDataMatrix<float> FillScaled(const NCDataMatrix<float>& table, int components, FillModel* model,
                               NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
