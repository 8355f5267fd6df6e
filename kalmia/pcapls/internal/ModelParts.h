#pragma once

#include <initializer_list>

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

// The matrices of a model that was restored from some of them, or from some of their rows. A part without rows is
// absent, and its number of columns means nothing.

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
  CommonSize* columns;
  CommonSize* rows = nullptr;  ///< null for a part of a row for each component, of which it may lack some
};

/// Whether the parts that are there agree in their sizes.
bool PartsAgree(std::initializer_list<ModelPart> parts);

/// Whether a part is absent, or its rows have this many cells.
bool HasRowsOf(const NCDataMatrix<float>& part, int cells);

/// Whether any of the parts has rows.
bool HasAnyOf(std::initializer_list<const NCDataMatrix<float>*> parts);

/// A share of the part or, where it has fewer rows than these, its rows and missing ones after them.
NCDataMatrix<float> FilledUpTo(int rows, int columns, const NCDataMatrix<float>& part);

}  // namespace kalmia
