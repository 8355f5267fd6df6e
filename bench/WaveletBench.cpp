// Wavelet transforms: of tables, beside the rate at which one thread reads and writes as many bytes, and how the time
// of one signal grows with its length (n for transforms, n log n for the search of a best basis).
#include <memory>

#include "MemoryBandwidth.h"
#include "Tables.h"
#include "kalmia/signal/Wavelet.h"

namespace {

/// Filters of 4, 8, 20 or 50 taps: Daubechies' orders 1, 3, 6 and 7.
class Filters {
 public:
  explicit Filters(int order)
      : decomposition(Wavelet::GetDecompositionFilter(Wavelet::FunctionDaubechies, order)),
        reconstruction(Wavelet::GetReconstructionFilter(Wavelet::FunctionDaubechies, order)) {}
  Filters(const Filters&) = delete;
  Filters& operator=(const Filters&) = delete;
  ~Filters() {
    decomposition.CleanUp();
    reconstruction.CleanUp();
  }

  Wavelet::WaveletFilters decomposition, reconstruction;
};

constexpr int kRows = 1000, kColumns = 4096;
constexpr double kBytes = 4.0 * kRows * kColumns;

void Table(benchmark::State& state, decltype(&Wavelet::ForwardTransformObswise) transform) {
  const Filters filters(static_cast<int>(state.range(0)));
  const NCDataMatrix<float> table = RandomTable(kRows, kColumns, /*holes=*/0, 1);
  NCDataMatrix<float> out;
  NCDataVector<float>*means = nullptr, *slopes = nullptr;
  RunBesideYardstick(state, kBytes, /*threads=*/1, Traffic::ReadWrite, [&] {
    transform(&table, filters.decomposition, Wavelet::DetrendNone, means, slopes, &out, /*pad=*/true);
  });
}

void Orders(benchmark::internal::Benchmark* benchmark) {
  for (const int order : {1, 3, 6, 7}) benchmark->Arg(order);
  benchmark->MinTime(0.3)->UseRealTime();
}
BENCHMARK_CAPTURE(Table, by_observation, &Wavelet::ForwardTransformObswise)->Apply(Orders);
BENCHMARK_CAPTURE(Table, by_variable, &Wavelet::ForwardTransformVarwise)->Apply(Orders);

/// Runs `pass` on signals of 2^10 to 2^20 cells and fits the growth.
template <class Pass>
void Grow(benchmark::State& state, const Pass& pass) {
  const Filters filters(3);
  const NCDataVector<float> signal = RandomCells(static_cast<int>(state.range(0)), 1);
  for (auto _ : state) pass(signal, filters);
  state.counters["per_cell"] = {static_cast<double>(state.range(0)),
                                benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert};
  state.SetComplexityN(state.range(0));
}

void Forward(benchmark::State& state) {
  NCDataVector<float> out;
  Grow(state, [&](const NCDataVector<float>& signal, const Filters& filters) {
    long double mean = 0, slope = 0;
    Wavelet::ForwardTransform(&signal, filters.decomposition, Wavelet::DetrendNone, mean, slope, &out, /*pad=*/true);
  });
}

void Backward(benchmark::State& state) {
  NCDataVector<float> out(static_cast<int>(state.range(0)));
  Grow(state, [&](const NCDataVector<float>& signal, const Filters& filters) {
    Wavelet::BackwardTransform(&signal, filters.reconstruction, Wavelet::DetrendNone, signal.Size(), 0, 0, &out);
  });
}

void BestBasis(benchmark::State& state) {
  BoolVector decisions(static_cast<int>(state.range(0)) - 1, false);
  Grow(state, [&](const NCDataVector<float>& signal, const Filters& filters) {
    Wavelet::FindBestBasis(&signal, filters.decomposition, Wavelet::DetrendNone, &decisions);
  });
}

BENCHMARK(Forward)->RangeMultiplier(4)->Range(1 << 10, 1 << 20)->MinTime(0.1)->Complexity(benchmark::oN);
BENCHMARK(Backward)->RangeMultiplier(4)->Range(1 << 10, 1 << 20)->MinTime(0.1)->Complexity(benchmark::oN);
BENCHMARK(BestBasis)->RangeMultiplier(4)->Range(1 << 10, 1 << 20)->MinTime(0.1)->Complexity(benchmark::oNLogN);

}  // namespace
