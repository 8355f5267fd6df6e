#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/model/ComponentRecord.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// The input of the extraction of PLS components: scaled tables, and rules when to stop.
struct PLSTask : FitRules {
  NCDataMatrix<float> x;              ///< scaled, rows by X columns
  NCDataMatrix<float> y;              ///< scaled, rows by Y columns
  NCIntegralVector<int, -99> groups;  ///< cross-validation group of each row, from 0
  int rounds = 0;
};

/// A fitted model with the records of its components.
struct PLSComponents {
  std::unique_ptr<NCPLS> model;             ///< the kept components; deflated by all of them
  /// The kept ones, the one that failed if that ended the extraction, and those that were asked to be described.
  std::vector<ComponentRecord> components;
  int kept = 0;
  /// y - predicted y of each row while it was left out, by the kept components; in scaled units, rows by Y columns.
  /// Empty where components are not judged or none is kept.
  NCDataMatrix<float> crossValidatedResiduals;
  /// Why there are fewer components than asked for; empty if there are not, or if one failed.
  std::string endedEarly;
};

/// Extracts components one by one and cross-validates each, if they are to be judged. `progress` may be null.
/// R2 is 1 - SS(residuals) / SS(table), both over the cells that the model describes.
/// Throws Stopped on a stop of the progress, BadData where components were asked for and the first cannot be computed.
PLSComponents ExtractPLS(const PLSTask& task, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
