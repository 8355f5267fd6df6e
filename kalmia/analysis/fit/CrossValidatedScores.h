#pragma once

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia::analysis {

/// Scores of the rows, each predicted while the row was left out; components in rows. Of the kept components.
struct CrossValidatedScores {
  NCDataMatrix<float> t;   ///< predictive, of the model with all kept orthogonal components
  NCDataMatrix<float> to;  ///< orthogonal, each when it was the newest
};

}  // namespace kalmia::analysis
