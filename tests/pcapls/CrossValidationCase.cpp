#include "CrossValidationCase.h"

#include <sstream>

#include "RelatedTables.h"

CrossValidationCase::CrossValidationCase(int rows, int xVariables, int yVariables, double holes) {
  const Tables tables = RelatedTables(rows, xVariables, yVariables, holes, /*seed=*/1);
  X = tables.X;
  Y = tables.Y;
  Restart();
}

CrossValidationCase::CrossValidationCase(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y) : X(x), Y(y) {
  Restart();
}

void CrossValidationCase::Restart() {
  model = std::make_unique<NCPLS>(&X, &Y, maxIterations);
  ssY.SetSize(Y.SizeColumns());
  for (int j = 1; j <= ssY.Size(); ++j) ssY(j, static_cast<float>(Y.GetColumnSS(j, 0.0L)));
}

void CrossValidationCase::AddComponent() {
  model->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/false);
}

void CrossValidationCase::Validate(PLSCrossValidation* validation, NCProgress* progress, bool quiet) const {
  validation->NextComponent(&Weights(), maxIterations, ssY, progress, quiet);
}

std::string Everything(const PLSCrossValidation& validation) {
  std::ostringstream all;
  all << *validation.GetWSet() << *validation.GetCSet() << *validation.GetPSet() << *validation.GetTSet()
      << *validation.GetTPred() << *validation.GetYPredResiduals() << *validation.GetQ2YVar()
      << *validation.GetQ2YVarCum() << *validation.GetSSY() << *validation.GetSSYOriginal();
  all << validation.GetQ2Tot() << ' ' << validation.GetQ2TotCum();
  return all.str();
}
