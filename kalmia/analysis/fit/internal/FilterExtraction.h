#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/model/ComponentRecord.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/o2pls/NCYOrthogonalPLS.h"

namespace kalmia::analysis {

/// A fitted filter with the records of its components.
struct FilterComponents {
  std::unique_ptr<NCYOrthogonalPLS> filter;
  std::vector<FilterComponentRecord> components;
  std::string endedEarly;  ///< why there are fewer components than asked for; empty if there are not
};

/// Takes components out of the scaled x that are orthogonal to the scaled y: as many as asked for, or as many as can be
/// computed. Every row of x and y must have a present cell. `progress` may be null.
/// Throws Stopped on a stop of the progress, BadData where no component can be computed.
FilterComponents ExtractFilter(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y, int components,
                               NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
