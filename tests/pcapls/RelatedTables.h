#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/pcapls/NCPLS.h"

/// Two tables of the same observations.
struct Tables {
  NCDataMatrix<float> X;
  NCDataMatrix<float> Y;
};

/// Random tables in which X explains Y in part: each Y variable is twice an X variable and noise. A cell is a hole with
/// the probability `holes`.
Tables RelatedTables(int rows, int xVariables, int yVariables, double holes, unsigned seed);

/// One component, strict, and out of the tables with it.
void AddComponent(NCPLS* model);
