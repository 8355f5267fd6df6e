// Kalmia's side of the comparison in compare.py: reads a table of raw 4-byte floats, X rows first and then Y rows,
// times one task for SECONDS, twice at least, and prints the seconds of each run, one a line.
//
//     kalmia_side FILE ROWS COLUMNS YCOLUMNS fit|crossvalidate COMPONENTS SECONDS
#include <omp.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <vector>

#include "kalmia/kalmia.h"

namespace {

NCDataMatrix<float> ReadRows(std::ifstream& file, int rows, int columns) {
  NCDataMatrix<float> matrix(rows, columns, 0.0f);
  std::vector<float> cells(static_cast<std::size_t>(columns));
  for (int r = 1; r <= rows; ++r) {
    file.read(reinterpret_cast<char*>(cells.data()), static_cast<std::streamsize>(cells.size() * sizeof(float)));
    matrix(r).CopyZeroBasedVector(cells.data(), columns);
  }
  return matrix;
}

void Centre(NCDataMatrix<float>* matrix) {
  NCScale scale(matrix->SizeColumns());
  for (int j = 1; j <= matrix->SizeColumns(); ++j) scale.SetType(j, NCScale::ScalingCentre);
  scale.ScaleMatrix(matrix, /*newModel=*/true);
}

// What every package does for its user: centre, extract the components, form the coefficients; with cross-validation,
// judge each component by seven groups as well.
double RunOnce(const NCDataMatrix<float>& rawX, const NCDataMatrix<float>& rawY, int components, bool validate) {
  const auto begin = std::chrono::steady_clock::now();
  NCDataMatrix<float> x = rawX, y = rawY;
  Centre(&x);
  Centre(&y);
  NCPLS model(&x, &y, /*maxIterations=*/500);
  x.Clear();  // the model alone holds the cells now, and deflates them where they are
  NCDataVector<float> ssY(y.SizeColumns());
  for (int j = 1; j <= y.SizeColumns(); ++j) ssY(j, static_cast<float>(y.GetColumnSS(j, 0)));
  PLSCrossValidation validation(&model, /*rounds=*/7, nullptr);
  for (int a = 1; a <= components; ++a) {
    model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
    if (validate) validation.NextComponent(&(*model.GetWprim())[a], 500, ssY, nullptr, /*quiet=*/true);
    model.CalculateResiduals();
  }
  const NCDataMatrix<float> coefficients = model.GetRegressionCoefficients(-1);
  const auto end = std::chrono::steady_clock::now();
  if (coefficients.GetNumMisVal() != 0) std::fprintf(stderr, "kalmia_side: the table gives no model\n");
  return std::chrono::duration<double>(end - begin).count();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 8) {
    std::fprintf(stderr, "usage: kalmia_side FILE ROWS COLUMNS YCOLUMNS fit|crossvalidate COMPONENTS SECONDS\n");
    return 2;
  }
  std::ifstream file(argv[1], std::ios::binary);
  const int rows = std::atoi(argv[2]);
  const NCDataMatrix<float> x = ReadRows(file, rows, std::atoi(argv[3])), y = ReadRows(file, rows, std::atoi(argv[4]));
  if (!file) {
    std::fprintf(stderr, "kalmia_side: %s is too short\n", argv[1]);
    return 3;
  }
  omp_set_dynamic(0);  // else a machine that was busy a minute ago would give one thread
  const bool validate = std::strcmp(argv[5], "crossvalidate") == 0;
  double total = 0.0;
  for (int i = 0; i < 2 || total < std::atof(argv[7]); ++i) {
    const double seconds = RunOnce(x, y, std::atoi(argv[6]), validate);
    total += seconds;
    std::printf("%.9f\n", seconds);
  }
  return 0;
}
