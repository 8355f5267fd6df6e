// Smoothing and derivatives of 1000 signals of 4096 cells, one thread: as a share of the rate at which the machine
// moves that many cells, with wider windows, with holes, and held to the scalar twins.
#include "MemoryBandwidth.h"
#include "Tables.h"
#include "kalmia/kernels/simd/Lanes.h"
#include "kalmia/signal/Derivate.h"

namespace {

constexpr int kSignals = 1000, kCells = 4096;

struct Case {
  Derivate<float>::PolynomialOrder polynomial;
  int window;
  int derivative;  ///< 0: smoothing
  double holes;
  bool twins;
};

void Filter(benchmark::State& state, Case c) {
  const NCDataMatrix<float> signals = RandomTable(kSignals, kCells, c.holes, 1);
  const Derivate<float> filter(c.polynomial, c.window);
  NCDataVector<float> result;
  kalmia::simd::UseScalarTwins(c.twins);
  RunBesideYardstick(state, 4.0 * kSignals * kCells, /*threads=*/1, Traffic::ReadWrite, [&] {
    for (const NCDataVector<float>& signal : signals) {
      if (c.derivative == 0)
        filter.Smooth(signal, result);
      else
        filter.DoDerivate(signal, result, c.derivative, /*spacing=*/2);
      benchmark::DoNotOptimize(result.GetVector());
    }
  });
  kalmia::simd::UseScalarTwins(false);
}

constexpr auto kQuadratic = Derivate<float>::Quadratic, kCubic = Derivate<float>::Cubic;

#define BENCH(name, ...) BENCHMARK_CAPTURE(Filter, name, Case{__VA_ARGS__})->Unit(benchmark::kMillisecond)
BENCH(smooth_5, kQuadratic, 5, 0, 0, false);
BENCH(smooth_15, kQuadratic, 15, 0, 0, false);
BENCH(smooth_51, kQuadratic, 51, 0, 0, false);
BENCH(smooth_15_twins, kQuadratic, 15, 0, 0, true);
BENCH(first_derivative_15, kQuadratic, 15, 1, 0, false);
BENCH(cubic_smooth_15, kCubic, 15, 0, 0, false);
BENCH(cubic_third_derivative_15, kCubic, 15, 3, 0, false);
BENCH(smooth_15_one_hole_in_1000, kQuadratic, 15, 0, 0.001, false);
BENCH(smooth_15_holes_5_percent, kQuadratic, 15, 0, 0.05, false);
BENCH(cubic_smooth_15_holes_5_percent, kCubic, 15, 0, 0.05, false);

}  // namespace
