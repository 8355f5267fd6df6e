// Power spectra and correlations of signals: time for each cell and doubling, which stays level where the time grows as
// n log n does.
#include <benchmark/benchmark.h>

#include <cmath>

#include "Tables.h"
#include "kalmia/signal/FFT.h"

namespace {

/// `seconds` over n log2(n): a rate of 1 / (n log2(n)) per iteration, turned round.
void ReportGrowth(benchmark::State& state, double n) {
  state.counters["per_n_log_n"] = {n * std::log2(n),
                                   benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert};
}

void CorrelationOfOneSignal(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const NCDataVector<float> signal = RandomCells(n, 1);
  NCDataVector<float> result;
  for (auto _ : state) {
    FFT::AutoCorrelation(&signal, FFT::DetrendMean, n, &result);
    benchmark::DoNotOptimize(result.Size());
  }
  ReportGrowth(state, 2.0 * n);
}
BENCHMARK(CorrelationOfOneSignal)->RangeMultiplier(4)->Range(256, 1 << 20);

void PowerInOnePairOfSegments(benchmark::State& state) {  // two segments of n cells each: the transform grows
  const int n = static_cast<int>(state.range(0));
  const NCDataVector<float> signal = RandomCells(2 * n, 1);
  NCDataVector<float> result;
  for (auto _ : state) {
    FFT::PowerSpectrum(&signal, n, /*overlap=*/false, FFT::DetrendMean, FFT::ScalingPlain, FFT::WindowHann, &result);
    benchmark::DoNotOptimize(result.Size());
  }
  ReportGrowth(state, n);
}
BENCHMARK(PowerInOnePairOfSegments)->RangeMultiplier(4)->Range(256, 1 << 20);

}  // namespace
