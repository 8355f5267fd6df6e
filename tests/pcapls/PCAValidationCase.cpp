#include "PCAValidationCase.h"

#include <cmath>
#include <sstream>

#include "testing/RandomTables.h"

NCDataMatrix<float> TableOfThreeDirections(int rows, int columns, double holes, unsigned seed) {
  NCDataMatrix<float> scores = RandomMatrix<float>(3, rows, 0, seed);
  for (int a = 2; a <= 3; ++a) scores.MultiplyRow(a, std::pow(0.6F, static_cast<float>(a - 1)));
  NCDataMatrix<float> table = scores.MatrixMultiply(RandomMatrix<float>(3, columns, 0, seed + 1), true, false);
  return table += RandomMatrix<float>(rows, columns, holes, seed + 2) * 0.125L;  // a sum with a hole is one
}

PCAValidationCase::PCAValidationCase(int rows, int columns, double holes)
    : PCAValidationCase(TableOfThreeDirections(rows, columns, holes)) {}

PCAValidationCase::PCAValidationCase(const NCDataMatrix<float>& x) : X(x) { Restart(); }

void PCAValidationCase::Restart() {
  model = std::make_unique<NCPCA>(&X, /*maxIterations=*/200);
  ss.SetSize(X.SizeColumns());
  for (int j = 1; j <= ss.Size(); ++j) ss(j, static_cast<float>(X.GetColumnSS(j, 0.0L)));
}

void PCAValidationCase::AddComponent() { model->NextComponent(nullptr, nullptr, 0, nullptr); }

void PCAValidationCase::Validate(PCACrossValidation* validation, NCProgress* progress) const {
  validation->NextComponent(ss, progress);
}

std::string Judgement(const PCACrossValidation& validation) {
  std::ostringstream all;
  all << *validation.GetXPredResiduals() << *validation.GetQ2XVar() << *validation.GetQ2XVarCum();
  all << validation.GetQ2Tot() << ' ' << validation.GetQ2TotCum();
  return all.str();
}

std::string Everything(const PCACrossValidation& validation) {
  std::ostringstream sets;
  sets << *validation.GetPSet() << *validation.GetTSet();
  return sets.str() + Judgement(validation);
}
