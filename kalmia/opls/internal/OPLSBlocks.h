#pragma once

#include <vector>

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

/// The matrices of an OPLS model, see NCOPLS, as a caller hands them over.
struct OPLSBlocks {
  const std::vector<NCDataMatrix<float>>* W;
  const std::vector<NCDataMatrix<float>>* P;
  const std::vector<NCDataMatrix<float>>* C;
  const NCDataMatrix<float>* WO;
  const NCDataMatrix<float>* PO;
  const NCDataMatrix<float>* CO;
};

/// Throws NCError where something is lacking that the filter reads: a block after each orthogonal component, a row of
/// P and of C for each one of W, and of PO and CO for each one of WO; where a matrix that has rows is not as wide as X
/// or Y. There may be more. A model without any block or component passes.
void RequireWholeBlocks(const OPLSBlocks& blocks, int xColumns, int yColumns);

}  // namespace kalmia
