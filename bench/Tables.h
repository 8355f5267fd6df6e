#pragma once

#include "kalmia/containers/NCDataMatrix.h"

/// A seeded table with holes at the given share of its cells.
NCDataMatrix<float> RandomTable(int rows, int columns, double holes, unsigned seed);
NCDataVector<float> RandomCells(int n, unsigned seed);

/// Gives the library so many threads for the rest of the scope.
class ThreadsOfTheLibrary {
 public:
  explicit ThreadsOfTheLibrary(int threads);
  ~ThreadsOfTheLibrary();
};
