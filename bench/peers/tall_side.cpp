// Reads a CSV table as the command does, for tall.py: seconds of the fastest of some repeats, and the sum of all
// numbers, which shows that both sides read the same.
//
//   tall_side TABLE THREADS REPEATS
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "app/console/InputFile.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/kernels/ThreadingControl.h"

namespace {

double SumOf(const kalmia::analysis::Table& table) {
  double sum = 0.0;
  for (int column = 0; column < table.Columns(); ++column) {
    const double* const numbers = table.Column(column).numbers;
    for (int row = 0; numbers != nullptr && row < table.Rows(); ++row) {
      sum += std::isnan(numbers[row]) ? 0.0 : numbers[row];
    }
  }
  return sum;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  using NCMultiThreading::ThreadingControl;
  const int threads = std::atoi(argv[2]);
  ThreadingControl::SetNumberOfProcessors(threads);
  ThreadingControl::SetThreadingIsOn(threads > 1);
  double best = std::numeric_limits<double>::infinity();
  double sum = 0.0;
  for (int repeat = std::atoi(argv[3]); repeat > 0; --repeat) {
    const auto begin = std::chrono::steady_clock::now();
    const kalmia::analysis::Table table(kalmia::app::ReadText(argv[1]), argv[1]);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    best = std::min(best, seconds.count());
    sum = SumOf(table);
  }
  std::printf("%.6f %.17g\n", best, sum);
}
