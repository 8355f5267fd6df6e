#include "Tables.h"

#include <omp.h>

#include <cstdint>
#include <random>
#include <tuple>
#include <vector>

#include "kalmia/kernels/ThreadingControl.h"

using NCMultiThreading::ThreadingControl;

namespace {

NCDataMatrix<float> NewTable(int rows, int columns, double holes, unsigned seed) {
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

}  // namespace

NCDataMatrix<float> RandomTable(int rows, int columns, double holes, unsigned seed) {
  // The benchmarks of one table follow each other: it is made once.
  static std::tuple<int, int, double, unsigned> made;
  static NCDataMatrix<float> table;
  const auto wanted = std::make_tuple(rows, columns, holes, seed);
  if (std::int64_t{rows} * columns < 1000000) return NewTable(rows, columns, holes, seed);
  if (made != wanted) {
    table.Clear();
    table = NewTable(rows, columns, holes, seed);
    made = wanted;
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
