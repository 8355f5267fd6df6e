#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/CrossValidatedScores.h"
#include "kalmia/analysis/fit/StoredOPLSCv.h"
#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/model/ComponentRecord.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// What the extraction of OPLS components takes: scaled tables, and when to stop. The rules are on the orthogonal
/// components.
struct OPLSTask : FitRules {
  NCDataMatrix<float> x;                  ///< scaled, rows by X columns
  NCDataMatrix<float> y;                  ///< scaled, rows by Y columns
  NCIntegralVector<int, -99> groups;      ///< cross-validation group of each row, from 0
  int rounds = 0;
  std::optional<int> predictive;          ///< nothing: the model decides
  const StoredOPLSCv* resumed = nullptr;  ///< of these tables and groups; null: cross-validation starts anew
};

/// A fitted model with what cross-validation said of its components.
struct OPLSComponents {
  OPLSMatrices model;                           ///< the kept components
  NCDataMatrix<float> u;                        ///< Y scores of the predictive components
  std::vector<OPLSComponentRecord> components;  ///< the kept ones, and the one that failed if that ended the extraction
  NCDataMatrix<float> crossValidatedResiduals;  ///< of the kept model, in scaled units, rows by Y columns
  CrossValidatedScores crossValidated;
  OPLSCvState validation;                       ///< of all components that were judged, in `resumed` too
  std::string endedEarly;  ///< why there are fewer components than asked for; empty if there are not, or if one failed
};

/// Computes the predictive block, which is always kept, and orthogonal components one by one, and cross-validates each
/// step. What `resumed` has judged already is taken from there, with the same result. `progress` may be null.
/// Throws Stopped where the bar wants to stop, BadData where not even the block can be computed or where
/// that of `resumed` has another size, BadFile where the parts of `resumed` do not fit together.
OPLSComponents ExtractOPLS(const OPLSTask& task, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
