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

/// The input of the extraction of OPLS components: scaled tables, and rules for the orthogonal components.
struct OPLSTask : FitRules {
  NCDataMatrix<float> x;                  ///< scaled, rows by X columns
  NCDataMatrix<float> y;                  ///< scaled, rows by Y columns
  NCIntegralVector<int, -99> groups;      ///< cross-validation group of each row, from 0
  int rounds = 0;
  std::optional<int> predictive;          ///< nothing: the model decides
  const StoredOPLSCv* resumed = nullptr;  ///< of these tables and groups; null: cross-validation starts anew
};

/// A fitted model with the records of its components.
struct OPLSComponents {
  OPLSMatrices model;                           ///< the kept components
  NCDataMatrix<float> u;                        ///< Y scores of the predictive components
  std::vector<OPLSComponentRecord> components;  ///< the kept ones, and the one that failed if that ended the extraction
  NCDataMatrix<float> crossValidatedResiduals;  ///< of the kept model, in scaled units, rows by Y columns
  CrossValidatedScores crossValidated;
  OPLSCvState validation;                       ///< of all components that were judged, in `resumed` too
  std::string endedEarly;  ///< why there are fewer components than asked for; empty if there are not, or if one failed
};

/// Computes the predictive block, which is always kept, then orthogonal components one by one, and cross-validates each
/// step. Steps that `resumed` holds are not judged again; the result is the same. `progress` may be null.
/// Throws Stopped on a stop of the progress, BadData where the predictive block cannot be computed or that of `resumed`
/// has another size, BadFile where the parts of `resumed` do not fit together.
OPLSComponents ExtractOPLS(const OPLSTask& task, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
