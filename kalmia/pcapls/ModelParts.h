#pragma once

#include <initializer_list>

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

// The matrices of a model that was restored from some of them only. A part without rows is absent, and its number of
// columns means nothing.

/// A number of rows or columns that several parts have in common: the first that is taken.
class CommonSize {
 public:
  bool Takes(int size) {
    if (size_ < 0) size_ = size;
    return size_ == size;
  }

 private:
  int size_ = -1;
};

struct ModelPart {
  const NCDataMatrix<float>* matrix;
  CommonSize* rows;
  CommonSize* columns;
};

/// Whether the parts that are there agree in their sizes.
bool PartsAgree(std::initializer_list<ModelPart> parts);

/// Whether a part is absent, or its rows have this many cells.
bool HasRowsOf(const NCDataMatrix<float>& part, int cells);

/// A share of the part or, where it is absent, missing rows in its place.
NCDataMatrix<float> OrMissingRows(const NCDataMatrix<float>& part, int rows, int columns);

}  // namespace kalmia
