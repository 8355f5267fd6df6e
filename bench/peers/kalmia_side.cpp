// Kalmia's side of the comparison in compare.py: reads a table of raw 4-byte floats, X rows first and then Y rows,
// times one task for SECONDS, twice at least, and prints the seconds of each run, one a line.
//
//     kalmia_side FILE ROWS COLUMNS YCOLUMNS fit|crossvalidate|refit COMPONENTS SECONDS
#include <omp.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/PLSValidation.h"
#include "kalmia/kalmia.h"

namespace {

using kalmia::analysis::NamedColumn;
using kalmia::analysis::PLSRecipe;
using kalmia::analysis::Table;

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

/// Calls a task for so many seconds, twice at least, and prints the seconds of each call.
void PrintSeconds(double limit, const std::function<void()>& task) {
  double total = 0.0;
  for (int i = 0; i < 2 || total < limit; ++i) {
    const auto begin = std::chrono::steady_clock::now();
    task();
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    total += seconds.count();
    std::printf("%.9f\n", seconds.count());
  }
}

// What every package does for its user: centre, extract the components, form the coefficients; with cross-validation,
// judge each component by seven groups as well.
void FitOnce(const NCDataMatrix<float>& rawX, const NCDataMatrix<float>& rawY, int components, bool validate) {
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
  if (coefficients.GetNumMisVal() != 0) std::fprintf(stderr, "kalmia_side: the table gives no model\n");
}

void AddColumns(const NCDataMatrix<float>& matrix, const std::string& letter, std::vector<NamedColumn>* columns) {
  for (int j = 1; j <= matrix.SizeColumns(); ++j) {
    std::vector<double> cells;
    for (int i = 1; i <= matrix.SizeRows(); ++i) cells.push_back(matrix[i][j]);
    columns->push_back({letter + std::to_string(j), std::move(cells)});
  }
}

/// What the command does by default: seven interleaved groups, each left out by a model that learns centres, factors
/// and components from the other rows, for each number of components; jack-knife and CV-ANOVA of the last one.
void PrintSecondsOfRefits(double limit, const NCDataMatrix<float>& x, const NCDataMatrix<float>& y, int components) {
  std::vector<NamedColumn> columns;
  AddColumns(y, "y", &columns);
  AddColumns(x, "x", &columns);
  const Table table(std::move(columns), "random");
  PLSRecipe recipe;
  recipe.components = components;
  for (int j = 1; j <= y.SizeColumns(); ++j) recipe.y.push_back("y" + std::to_string(j));
  PrintSeconds(limit, [&] {
    const auto validation = Validate(recipe, table);
    if (!validation.IsJudged()) std::fprintf(stderr, "kalmia_side: the table has not so many components\n");
  });
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 8) {
    std::fprintf(stderr,
                 "usage: kalmia_side FILE ROWS COLUMNS YCOLUMNS fit|crossvalidate|refit COMPONENTS SECONDS\n");
    return 2;
  }
  std::ifstream file(argv[1], std::ios::binary);
  const int rows = std::atoi(argv[2]), components = std::atoi(argv[6]);
  const NCDataMatrix<float> x = ReadRows(file, rows, std::atoi(argv[3])), y = ReadRows(file, rows, std::atoi(argv[4]));
  if (!file) {
    std::fprintf(stderr, "kalmia_side: %s is too short\n", argv[1]);
    return 3;
  }
  omp_set_dynamic(0);  // else a machine that was busy a minute ago would give one thread
  const double limit = std::atof(argv[7]);
  if (std::strcmp(argv[5], "refit") == 0) {
    PrintSecondsOfRefits(limit, x, y, components);
    return 0;
  }
  const bool validate = std::strcmp(argv[5], "crossvalidate") == 0;
  PrintSeconds(limit, [&] { FitOnce(x, y, components, validate); });
  return 0;
}
