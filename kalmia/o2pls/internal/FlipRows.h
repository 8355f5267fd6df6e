#pragma once

#include <initializer_list>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

/// Turns the sign of the flagged rows that these matrices have: flag i (from 1; element i - 1) is for row i. Whether
/// there was any.
inline bool FlipRows(const std::vector<bool>& flips, std::initializer_list<NCDataMatrix<float>*> matrices) {
  bool any = false;
  int row = 0;
  for (const bool flip : flips) {
    ++row;
    if (!flip) continue;
    for (NCDataMatrix<float>* matrix : matrices) {
      if (row > matrix->SizeRows()) continue;
      matrix->MultiplyRow(row, -1.0F);
      any = true;
    }
  }
  return any;
}

}  // namespace kalmia
