// Kalmia's side of the comparison in fisher.py: reads tables of counts, one a line (rows, columns, counts row after
// row), and prints seconds and probability of each.
//
//     fisher_side FILE
#include <chrono>
#include <cstdio>
#include <fstream>
#include <vector>

#include "kalmia/kalmia.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: fisher_side FILE\n");
    return 2;
  }
  std::ifstream file(argv[1]);
  for (int rows, columns; file >> rows >> columns;) {
    std::vector<int> counts(static_cast<std::size_t>(rows * columns));
    for (int& count : counts) file >> count;
    const auto begin = std::chrono::steady_clock::now();
    const float probability =
        Sta::GetFisherExactProbability(counts.data(), rows, columns, /*hybrid=*/false, Sta::TwoSided, /*workspace=*/0);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    std::printf("%.9g %.9g\n", seconds.count(), static_cast<double>(probability));
  }
  return 0;
}
