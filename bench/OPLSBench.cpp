// OPLS beside the library's own PLS: a whole fit, and a cross-validation beside the fits that it cannot do without.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>

#include "Tables.h"
#include "kalmia/opls/NCOPLS.h"
#include "kalmia/opls/OPLSCrossValidation.h"
#include "kalmia/pcapls/NCPLS.h"

namespace {

constexpr int kThreads = 2;
constexpr int kRounds = 7;

double SecondsOf(const std::function<void()>& task) {
  const auto begin = std::chrono::steady_clock::now();
  task();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void FitPLS(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y, int components) {
  NCPLS model(&x, &y, /*maxIterations=*/500);
  for (int a = 0; a < components; ++a) {
    if (a > 0) model.CalculateResiduals();  // nobody reads those of the last component
    model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/false);
  }
  benchmark::DoNotOptimize(model.GetTprim());
}

void FitOPLS(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y, int orthogonal) {
  NCOPLS model(&x, &y, /*predictiveComponents=*/1, /*maxIterations=*/200);
  for (int o = 0; o <= orthogonal; ++o) model.NextComponent(nullptr);
  benchmark::DoNotOptimize(model.GetTprim());
}

void Validate(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y, int orthogonal) {
  OPLSCrossValidation validation(&x, &y, /*predictiveComponents=*/1, kRounds, nullptr, nullptr);
  for (int o = 0; o < orthogonal; ++o) validation.NextComponent(nullptr);
  benchmark::DoNotOptimize(validation.GetYPred());
}

/// The fits of all rounds, and the replay of the earlier orthogonal components that each further one asks for.
void FitRounds(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y, int orthogonal) {
  for (int round = 0; round < kRounds; ++round) {
    auto model = std::make_unique<NCOPLS>(&x, &y, 1, 200);
    model->NextComponent(nullptr);
    for (int o = 0; o < orthogonal; ++o) {
      model = std::make_unique<NCOPLS>(&x, &y, model->GetWMatrices(), model->GetPMatrices(), model->GetCMatrices(),
                                       model->GetWOprim(), model->GetPOprim(), model->GetCOprim(), 1, 200);
      model->NextComponent(nullptr);
    }
  }
}

/// "ratio" is the time of `task` over that of `yardstick`, the best of all pairs that ran in turn.
void Compare(benchmark::State& state, const std::function<void()>& task, const std::function<void()>& yardstick) {
  const ThreadsOfTheLibrary threads(kThreads);
  double best = 1e30, bestYardstick = 1e30;
  for (auto _ : state) {
    bestYardstick = std::min(bestYardstick, SecondsOf(yardstick));
    best = std::min(best, SecondsOf(task));
  }
  state.counters["ms"] = best * 1e3;
  state.counters["ratio"] = best / bestYardstick;
}

void OPLSFitBesidePLS(benchmark::State& state) {
  const NCDataMatrix<float> x = RandomTable(2000, 5000, 0, 1), y = RandomTable(2000, 1, 0, 2);
  Compare(state, [&] { FitOPLS(x, y, 3); }, [&] { FitPLS(x, y, 4); });
}
BENCHMARK(OPLSFitBesidePLS)->Unit(benchmark::kMillisecond)->Iterations(5);

/// The rounds leave out a seventh of the rows each: their yardstick is fitted to six sevenths.
void OPLSValidationBesideItsFits(benchmark::State& state) {
  const NCDataMatrix<float> x = RandomTable(700, 2000, 0, 1), y = RandomTable(700, 1, 0, 2);
  const NCDataMatrix<float> kept = x.GetRowSubMatrix(1, 600), keptY = y.GetRowSubMatrix(1, 600);
  Compare(state, [&] { Validate(x, y, 2); }, [&] { FitRounds(kept, keptY, 2); });
}
BENCHMARK(OPLSValidationBesideItsFits)->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace
