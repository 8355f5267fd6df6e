#pragma once

#include <memory>
#include <string>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/pcapls/PLSCrossValidation.h"
#include "kalmia/support/NCProgress.h"

/// A model and what its cross-validation needs. After a change of X, Y or maxIterations: Restart.
struct CrossValidationCase {
  /// RelatedTables.
  CrossValidationCase(int rows, int xVariables, int yVariables, double holes);
  CrossValidationCase(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y);

  void Restart();       ///< a new model of the tables
  void AddComponent();  ///< not strict, and left in the tables
  const NCDataVector<float>& Weights() const { return (*model->GetWprim())[model->GetComponents()]; }
  /// The cross-validation of the newest component.
  void Validate(PLSCrossValidation* validation, NCProgress* progress = nullptr, bool quiet = true) const;

  NCDataMatrix<float> X;
  NCDataMatrix<float> Y;
  int maxIterations = 100;
  NCDataVector<float> ssY;  ///< of the columns of Y
  std::unique_ptr<NCPLS> model;
};

/// All results of a validation, for comparisons to the bit.
std::string Everything(const PLSCrossValidation& validation);
