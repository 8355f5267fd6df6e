// Control charts and histograms of ten million values, as a share of the rate at which one thread reads them.
#include "MemoryBandwidth.h"
#include "Tables.h"
#include "kalmia/statistics/ControlChart.h"
#include "kalmia/statistics/FrequencyHistogram.h"

namespace {

constexpr int kValues = 10000000;
constexpr double kBytes = 4.0 * kValues;

void Chart(benchmark::State& state, ControlChart::ControlType type) {
  const NCDataVector<float> values = RandomCells(kValues, 1);
  RunBesideYardstick(state, kBytes, /*threads=*/1, Traffic::Read, [&] {
    const ControlChart chart(type, values, /*subgroupSize=*/5);
    if (type == ControlChart::CuSum) benchmark::DoNotOptimize(chart.GetHighCuSum());
    benchmark::DoNotOptimize(chart.GetTarget());
  });
}

BENCHMARK_CAPTURE(Chart, means_and_ranges, ControlChart::MeanRange)->Iterations(5)->UseRealTime();
BENCHMARK_CAPTURE(Chart, means_and_standard_deviations, ControlChart::MeanStdDev)->Iterations(5)->UseRealTime();
BENCHMARK_CAPTURE(Chart, CuSum, ControlChart::CuSum)->Iterations(5)->UseRealTime();

void Histogram(benchmark::State& state) {
  const NCDataVector<float> values = RandomCells(kValues, 1);
  RunBesideYardstick(state, kBytes, /*threads=*/1, Traffic::Read, [&] {
    FrequencyHistogram::HistogramInfo info;
    FrequencyHistogram().CreateHistogram(values, info);
    benchmark::DoNotOptimize(info.counts.Size());
  });
}

BENCHMARK(Histogram)->Iterations(2)->UseRealTime();

}  // namespace
