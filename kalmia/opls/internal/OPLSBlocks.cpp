#include "kalmia/opls/internal/OPLSBlocks.h"

#include <cstddef>

#include "kalmia/pcapls/internal/ModelParts.h"
#include "kalmia/support/NCError.h"

namespace kalmia {

namespace {

/// Whether the loadings have a row for each of the weights, and all are as wide as their tables.
bool Match(const NCDataMatrix<float>& W, const NCDataMatrix<float>& P, const NCDataMatrix<float>& C, int xColumns,
           int yColumns) {
  return P.SizeRows() >= W.SizeRows() && C.SizeRows() >= W.SizeRows() && HasRowsOf(W, xColumns) &&
         HasRowsOf(P, xColumns) && HasRowsOf(C, yColumns);
}

}  // namespace

void RequireWholeBlocks(const OPLSBlocks& blocks, int xColumns, int yColumns) {
  const std::size_t count = blocks.W->size(), orthogonal = static_cast<std::size_t>(blocks.WO->SizeRows());
  const bool isNew = count == 0 && orthogonal == 0;
  if ((!isNew && count < orthogonal + 1) || blocks.P->size() < count || blocks.C->size() < count)
    throw NCError("OPLS: the model has not a block after each of its orthogonal components.");
  bool match = Match(*blocks.WO, *blocks.PO, *blocks.CO, xColumns, yColumns);
  for (std::size_t o = 0; o < count; ++o)
    match = match && Match((*blocks.W)[o], (*blocks.P)[o], (*blocks.C)[o], xColumns, yColumns);
  if (!match) throw NCError("OPLS: weights, loadings and tables of the model do not belong together.");
}

}  // namespace kalmia
