// Validation by full refits beside that by component, and permutations: whole calls, from a table in memory on.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "Tables.h"
#include "kalmia/analysis/fit/PLSResult.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/PLSValidation.h"
#include "kalmia/analysis/validation/YPermutations.h"
#include "kalmia/containers/Missing.h"

namespace {

using namespace kalmia::analysis;

struct Shape {
  int rows, columns, yColumns;
  double holes;  ///< share of the cells of X
};

/// Random columns y1.. and x1.., of which a share of each y is the sum of the first three.
Table RandomTableOf(const Shape& shape) {
  const NCDataMatrix<float> x = RandomTable(shape.rows, shape.columns, shape.holes, 1);
  const NCDataMatrix<float> y = RandomTable(shape.rows, shape.yColumns, 0, 2);
  std::ostringstream text;
  for (int j = 1; j <= shape.yColumns; ++j) text << (j > 1 ? "," : "") << 'y' << j;
  for (int k = 1; k <= shape.columns; ++k) text << ",x" << k;
  text << '\n';
  for (int i = 1; i <= shape.rows; ++i) {
    for (int j = 1; j <= shape.yColumns; ++j) {
      double sum = y[i][j];
      for (int k = 1; k <= 3; ++k) sum += x[i][k] == kalmia::kMissing ? 0.0 : 2.0 * x[i][k];
      text << (j > 1 ? "," : "") << sum;
    }
    for (int k = 1; k <= shape.columns; ++k) {
      text << ',';
      if (x[i][k] != kalmia::kMissing) text << x[i][k];
    }
    text << '\n';
  }
  return {text.str(), "random.csv"};
}

PLSRecipe RecipeOf(const Shape& shape, int components) {
  PLSRecipe recipe;
  recipe.components = components;
  for (int j = 1; j <= shape.yColumns; ++j) recipe.y.push_back("y" + std::to_string(j));
  return recipe;
}

constexpr int kComponents = 10;

double Seconds(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Times refits; `of_component` is the shortest of them over the shortest validation by component, run in turn.
void Refits(benchmark::State& state, const Shape& shape) {
  const Table table = RandomTableOf(shape);
  const PLSRecipe recipe = RecipeOf(shape, kComponents);
  double refits = std::numeric_limits<double>::infinity(), byComponent = refits;
  for (auto _ : state) {
    const double once = Seconds([&] { benchmark::DoNotOptimize(Validate(recipe, table).errors.press); });
    byComponent = std::min(byComponent, Seconds([&] { benchmark::DoNotOptimize(Fit(recipe, table).model.quality); }));
    refits = std::min(refits, once);
    state.SetIterationTime(once);
  }
  state.counters["of_component"] = refits / byComponent;
}

void Permutations999(benchmark::State& state, const Shape& shape, int components) {
  const Table table = RandomTableOf(shape);
  const PLSRecipe recipe = RecipeOf(shape, components);
  const Folds folds = MakeFolds(static_cast<std::size_t>(shape.rows), {});
  for (auto _ : state) {
    benchmark::DoNotOptimize(PermuteY(recipe, table, folds, components, {999, 1}).judgement.pQ2);
  }
}

constexpr Shape kSpectra{60, 401, 1, 0.0}, kSpectraOfSix{60, 401, 6, 0.0}, kSpectraWithHoles{60, 401, 1, 0.05};
constexpr Shape kWide{1000, 5000, 1, 0.0}, kWideOfSix{1000, 5000, 6, 0.0}, kWideWithHoles{1000, 5000, 1, 0.05};

#define REFITS(name, shape) BENCHMARK_CAPTURE(Refits, name, shape)->UseManualTime()->Unit(benchmark::kMillisecond)

REFITS(60x401, kSpectra);
REFITS(60x401_six_y, kSpectraOfSix);
REFITS(60x401_5_percent_holes, kSpectraWithHoles);
REFITS(1000x5000, kWide);
REFITS(1000x5000_six_y, kWideOfSix);
REFITS(1000x5000_5_percent_holes, kWideWithHoles);

BENCHMARK_CAPTURE(Permutations999, 4_components_of_60x401, kSpectra, 4)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Permutations999, 5_components_of_200x500, Shape{200, 500, 1, 0.0}, 5)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Permutations999, 5_components_of_5000x50, Shape{5000, 50, 1, 0.0}, 5)->Unit(benchmark::kMillisecond);

}  // namespace
