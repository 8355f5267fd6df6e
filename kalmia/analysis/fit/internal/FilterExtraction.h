#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/model/ComponentRecord.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/o2pls/NCYOrthogonalPLS.h"

namespace kalmia::analysis {

/// A fitted filter with what is told of its components.
struct FilterComponents {
  std::unique_ptr<NCYOrthogonalPLS> filter;
  std::vector<FilterComponentRecord> components;
  std::string endedEarly;  ///< why there are fewer components than asked for; empty if there are not
};

/// Takes components out of the scaled x that have nothing to do with the scaled y, as many as asked for if so many can
/// be computed. No row of either is without a cell. `progress` may be null.
/// Throws Stopped where the bar wants to stop, BadData where not even one can be computed.
FilterComponents ExtractFilter(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y, int components,
                    NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
