#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/validation/LeftOutErrors.h"

/// Octane of 60 gasoline samples, and what PLS models of 0 to 6 components predict for each while it is left out:
/// tests/analysis/data/left_out_gasoline.csv, whose script says how it came about.
struct LeftOutGasoline {
  std::vector<double> octane;
  std::vector<double> t2;  ///< Hotelling's, in the model of all samples with 3 components, to unit variance
  kalmia::analysis::LeftOutErrors errors;
};

/// The models' scaling is "uv" or "centre".
LeftOutGasoline ReadLeftOutGasoline(const std::string& scaling);

/// A matrix of one column.
kalmia::analysis::RealMatrix ColumnOf(const std::vector<double>& cells);
