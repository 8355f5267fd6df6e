// Kalmia's side of the comparison in compare_pca.py: reads a table of raw 4-byte floats, row by row, NaN where a cell
// is missing, and times principal components.
//
//     kalmia_pca_side FILE ROWS COLUMNS COMPONENTS SECONDS
//
// Repeats for SECONDS, twice at least. Prints the seconds of each repeat on one line, the rounds of each component on
// the next, then t't of each component.
#include <omp.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "kalmia/kalmia.h"

namespace {

NCDataMatrix<float> ReadRows(std::ifstream& file, int rows, int columns) {
  NCDataMatrix<float> matrix(0, columns);
  std::vector<float> cells(static_cast<std::size_t>(columns));
  for (int r = 1; r <= rows; ++r) {
    file.read(reinterpret_cast<char*>(cells.data()), static_cast<std::streamsize>(cells.size() * sizeof(float)));
    for (float& cell : cells)
      if (std::isnan(cell)) cell = kalmia::kMissingCell<float>;
    NCDataVector<float> row;
    row.CopyZeroBasedVector(cells.data(), columns);
    matrix.push_back(row);
  }
  return matrix;
}

struct Result {
  double seconds = 0.0;
  std::vector<int> rounds;
  std::vector<double> variances;  ///< t't of each component
};

Result RunOnce(const NCDataMatrix<float>& table, int components) {
  Result result;
  const auto begin = std::chrono::steady_clock::now();
  NCDataMatrix<float> x = table;
  NCScale scale(x.SizeColumns());
  for (int j = 1; j <= x.SizeColumns(); ++j) scale.SetType(j, NCScale::ScalingCentre);
  scale.ScaleMatrix(&x, /*newModel=*/true);
  NCPCA model(&x, /*maxIterations=*/500);
  x.Clear();  // the model alone holds the cells now, and deflates them where they are
  for (int a = 1; a <= components; ++a) {
    model.NextComponent(nullptr, nullptr, 0, nullptr);
    result.rounds.push_back(model.GetIterations());
    if (a < components) model.CalculateResiduals();
  }
  result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  for (const NCDataVector<float>& t : *model.GetTprim()) result.variances.push_back(static_cast<double>(t.GetSS()));
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 6) {
    std::fprintf(stderr, "usage: kalmia_pca_side FILE ROWS COLUMNS COMPONENTS SECONDS\n");
    return 2;
  }
  std::ifstream file(argv[1], std::ios::binary);
  const NCDataMatrix<float> table = ReadRows(file, std::atoi(argv[2]), std::atoi(argv[3]));
  if (!file) {
    std::fprintf(stderr, "kalmia_pca_side: %s is too short\n", argv[1]);
    return 3;
  }
  omp_set_dynamic(0);  // else a machine that was busy a minute ago would give one thread
  Result result;
  double total = 0.0;
  for (int i = 0; i < 2 || total < std::atof(argv[5]); ++i) {
    result = RunOnce(table, std::atoi(argv[4]));
    total += result.seconds;
    std::printf("%.9f ", result.seconds);
  }
  std::printf("\n");
  for (const int rounds : result.rounds) std::printf("%d ", rounds);
  std::printf("\n");
  for (const double variance : result.variances) std::printf("%.9g ", variance);
  std::printf("\n");
  return 0;
}
