#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/model/ComponentRecord.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// The input of the extraction of principal components: a scaled table, and rules when to stop.
struct PCATask : FitRules {
  NCDataMatrix<float> x;              ///< scaled, rows by columns
  NCIntegralVector<int, -99> groups;  ///< cross-validation group of each row, from 0
  int rounds = 0;                     ///< number of groups, of rows as of columns
  bool centred = true;                ///< whether columns are centred: the limit of Q2 then counts one row less
};

/// A fitted model with the records of its components.
struct PCAComponents {
  std::unique_ptr<NCPCA> model;                ///< the kept components; deflated by all of them
  /// The kept ones, the one that failed if that ended the extraction, and any further ones that are only described.
  std::vector<PCAComponentRecord> components;
  int kept = 0;
  std::vector<double> columnR2;  ///< of each column, by all kept components
  std::vector<double> columnQ2;  ///< of each column, cumulated over the kept components
  /// Why there are fewer components than asked for; empty if there are not, or if one failed.
  std::string endedEarly;
  std::string notJudged;  ///< why cross-validation could not judge a component; empty if it could all of them
};

/// Extracts components one by one and cross-validates each; `progress` may be null. With `stopAtFirstFailure` it also
/// stops where less than kExhausted of X is left.
/// Throws Stopped on a stop of the progress, BadData where components were asked for and the first cannot be computed.
PCAComponents ExtractPCA(const PCATask& task, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
