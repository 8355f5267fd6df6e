#pragma once

#include "kalmia/opls/NCOPLS.h"
#include "pcapls/RelatedTables.h"

/// Which matrices of a model are its own: all, or those from a block on, where the ones before were stored.
struct FittedFrom {
  int block = 0;
};

/// What the matrices of a model say of each other, to the bit: one operation of the tables makes each of them from
/// others. Scores are regressions of rows on weights, loadings regressions of columns on scores, orthogonal weights the
/// first principal direction of what the filter leaves; residuals are what no component takes. Weights of blocks are
/// principal directions of Y'X; with holes in X several passes make them, so they are not compared then. Stored
/// matrices are only used. All NaNs are alike, because nothing settles their sign.
void ExpectOPLSIdentities(const NCOPLS& model, const Tables& tables, FittedFrom from = {});

/// Whether the prediction of X is what a model of these matrices on X has: scores, filtered X, and the sum over the
/// components of scores times Y weights.
void ExpectPredictionOf(const NCOPLS& rebuilt, const NCDataMatrix<float>& X);
