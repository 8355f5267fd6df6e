#include "RelatedTables.h"

#include "testing/RandomTables.h"

Tables RelatedTables(int rows, int xVariables, int yVariables, double holes, unsigned seed) {
  Tables tables{RandomMatrix<float>(rows, xVariables, holes, seed),
                RandomMatrix<float>(rows, yVariables, holes, seed + 100)};
  for (int i = 1; i <= rows; ++i)
    for (int j = 1; j <= yVariables; ++j) {
      const float x = tables.X[i][1 + (j - 1) % xVariables];
      const float y = tables.Y[i][j];
      if (x != kHole<float> && y != kHole<float>) tables.Y(i, j, 2.0F * x + 0.5F * y);
    }
  return tables;
}

void AddComponent(NCPLS* model) {
  model->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
  model->CalculateResiduals();
}
