// Whole PLS fits of tables so small that every call's fixed cost shows.
#include <benchmark/benchmark.h>

#include "Tables.h"
#include "kalmia/pcapls/NCPLS.h"

namespace {

void Fit(benchmark::State& state, int rows, int columns, int components, double holes) {
  const NCDataMatrix<float> x = RandomTable(rows, columns, holes, 1), y = RandomTable(rows, 1, 0, 2);
  for (auto _ : state) {
    NCPLS model(&x, &y, /*maxIterations=*/500);
    for (int a = 0; a < components; ++a) {
      model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/false);
      model.CalculateResiduals();
    }
    benchmark::DoNotOptimize(model.GetTprim());
  }
}

BENCHMARK_CAPTURE(Fit, 5_components_of_100x50, 100, 50, 5, 0.0);
BENCHMARK_CAPTURE(Fit, 5_components_of_100x50_with_5_percent_holes, 100, 50, 5, 0.05);
BENCHMARK_CAPTURE(Fit, 2_components_of_20x10, 20, 10, 2, 0.0);

}  // namespace
