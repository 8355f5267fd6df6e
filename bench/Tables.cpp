#include "Tables.h"

#include <omp.h>

#include <random>
#include <vector>

#include "kalmia/kernels/ThreadingControl.h"

using NCMultiThreading::ThreadingControl;

NCDataMatrix<float> RandomTable(int rows, int columns, double holes, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<float> normal;
  std::bernoulli_distribution isHole(holes);
  NCDataMatrix<float> table(rows, columns, 0.0f);
  std::vector<float> cells(static_cast<std::size_t>(columns));
  for (int r = 1; r <= rows; ++r) {
    for (float& cell : cells) cell = isHole(random) ? static_cast<float>(kalmia::kMissing) : normal(random);
    NCDataVector<float> row;
    row.CopyZeroBasedVector(cells.data(), columns);
    table.SetRow(r, row);
  }
  return table;
}

NCDataVector<float> RandomCells(int n, unsigned seed) { return RandomTable(1, n, 0, seed)[1]; }

ThreadsOfTheLibrary::ThreadsOfTheLibrary(int threads) {
  omp_set_dynamic(0);
  ThreadingControl::SetNumberOfProcessors(threads);
  ThreadingControl::SetThreadingIsOn(threads > 1);
}

ThreadsOfTheLibrary::~ThreadsOfTheLibrary() { ThreadingControl::Reset(); }
