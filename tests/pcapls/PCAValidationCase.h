#pragma once

#include <memory>
#include <string>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/pcapls/PCACrossValidation.h"
#include "kalmia/support/NCProgress.h"
#include "testing/MessageOf.h"

/// A random table of three directions, each 0.6 times as strong as the one before, and some noise. A cell is a hole
/// with the probability `holes`.
NCDataMatrix<float> TableOfThreeDirections(int rows, int columns, double holes, unsigned seed = 1);

/// A PCA model and what its cross-validation needs. After a change of X: Restart.
struct PCAValidationCase {
  PCAValidationCase(int rows, int columns, double holes);  ///< TableOfThreeDirections
  explicit PCAValidationCase(const NCDataMatrix<float>& x);

  void Restart();                      ///< a new model of the table
  void AddComponent();                 ///< left in the table
  /// The cross-validation of the newest component.
  void Validate(PCACrossValidation* validation, NCProgress* progress = nullptr) const;

  NCDataMatrix<float> X;
  NCDataVector<float> ss;              ///< of the columns
  std::unique_ptr<NCPCA> model;
};

/// What a validation judges and accumulates, for comparisons to the bit.
std::string Judgement(const PCACrossValidation& validation);
std::string Everything(const PCACrossValidation& validation);  ///< the sets of its rounds, too
