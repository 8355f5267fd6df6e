// O2PLS: the whole search beside the fits that it makes, its share of products and its peak memory; the products
// themselves beside Eigen's in double precision.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "EigenProducts.h"
#include "MemoryBandwidth.h"
#include "Tables.h"
#include "kalmia/o2pls/NCO2PLS.h"
#include "kalmia/o2pls/O2PLSCrossValidation.h"
#include "testing/AllocationMeter.h"

namespace {

using Matrix = NCDataMatrix<float>;

constexpr int kRounds = 7;
constexpr int kMaxIterations = 200;

struct Shape {
  const char* name;
  int rows, xVariables, yVariables;
};

/// Cells of noise, two components in common, and one of X's own and one of Y's that lie over these.
struct Blocks {
  explicit Blocks(const Shape& s)
      : X(RandomTable(s.rows, s.xVariables, 0, 1)), Y(RandomTable(s.rows, s.yVariables, 0, 2)) {
    for (unsigned a = 0; a < 2; ++a) {
      const NCDataVector<float> t = RandomCells(s.rows, 10 + a), ofX = RandomCells(s.xVariables, 20 + a),
                                ofY = RandomCells(s.yVariables, 30 + a);
      X.AddVprimV(t, ofX, 2.0F);
      Y.AddVprimV(t, ofY, 2.0F);
      X.AddVprimV(RandomCells(s.rows, 12), ofX + RandomCells(s.xVariables, 22), 1.0F);
      Y.AddVprimV(RandomCells(s.rows, 13), ofY + RandomCells(s.yVariables, 32), 1.0F);
    }
  }
  Matrix X, Y;
};

/// Counts the values that a bar is given.
class CountingSink : public NCProgress::Sink {
 public:
  explicit CountingSink(int* values) : values_(values) {}
  void SetRange(float, float) override {}
  bool SetValue(float) override {
    ++*values_;
    return true;
  }
  void SetText(const char*) override {}
  bool PushSubRange(float, float) override { return true; }
  bool PopSubRange() override { return true; }
  bool IsBreakPressed() override { return false; }
  bool NextSpin() override { return true; }
  void SpinDone() override {}

 private:
  int* values_;
};

/// How many models the search fits: one for each round of each trial (the bar is moved after each of them, and five
/// times more from stage to stage), and all rounds once for the components in common, once for their first Q2, once for
/// the results, once more where Y has components of its own, and once where a component was cut off.
int FitsOfSearch(const O2PLSCVResults& r, int values) {
  const int best = static_cast<int>(std::max_element(r.Q2Cum.begin(), r.Q2Cum.end()) - r.Q2Cum.begin()) + 1;
  const int whole = 3 + (r.YSideComponents > 0 ? 1 : 0) + (r.PredictiveSignificance.Size() > best ? 1 : 0);
  return values - 5 + kRounds * whole;
}

double SecondsOf(const std::function<void()>& task) {
  FastestPass fastest;
  for (int i = 0; i < 3; ++i) fastest.Run(task);
  return fastest.Seconds();
}

/// The cross products of a fit: one for each predictive component, of the model and of each orthogonal component.
double SecondsInProducts(const Matrix& X, const Matrix& Y, const O2PLSCVResults& r) {
  const double ofY = SecondsOf([&] { benchmark::DoNotOptimize(Y.MatrixMultiply(X, true, false)); });
  const double ofX = SecondsOf([&] { benchmark::DoNotOptimize(X.MatrixMultiply(Y, true, false)); });
  return r.PredictiveComponents * ((1 + r.XSideComponents) * ofY + r.YSideComponents * ofX);
}

/// Counters: "fits" that the search makes; "ratio" of its time to that of so many fits of a round's rows with the
/// numbers found; "of_fit_in_products"; "peak" memory of the search, above the blocks, in multiples of both. One
/// thread: the tables are so small that a second one hardly pays.
void Search(benchmark::State& state, const Shape& shape) {
  const ThreadsOfTheLibrary team(1);
  const Blocks blocks(shape);
  const int kept = shape.rows - shape.rows / kRounds;
  const Matrix X = blocks.X.GetRowSubMatrix(1, kept), Y = blocks.Y.GetRowSubMatrix(1, kept);
  int values = 0;
  O2PLSCVResults results;
  std::int64_t peak = 0;
  const auto search = [&] {
    values = 0;
    NCProgress bar(std::make_unique<CountingSink>(&values));
    const PeakBytesDuring meter;
    const O2PLSCrossValidation validation(&blocks.X, &blocks.Y, kRounds, &bar, nullptr, kMaxIterations, -1, -1, -1);
    peak = meter.GetBytes();
    results = validation.GetResults();
  };
  FastestPass fastest;
  for (auto _ : state) fastest.Run(search);
  const double fit = SecondsOf([&] {
    NCO2PLS model(X, Y, /*checkDimensions=*/false, kMaxIterations);
    model.Fit(results.PredictiveComponents, results.XSideComponents, results.YSideComponents);
  });
  const int fits = FitsOfSearch(results, values);
  state.counters["common"] = results.PredictiveComponents;
  state.counters["own_of_X"] = results.XSideComponents;
  state.counters["own_of_Y"] = results.YSideComponents;
  state.counters["fits"] = fits;
  state.counters["ratio"] = fastest.Seconds() / (fits * fit);
  state.counters["of_fit_in_products"] = SecondsInProducts(X, Y, results) / fit;
  state.counters["peak"] =
      static_cast<double>(peak) / (4.0 * shape.rows * (shape.xVariables + shape.yVariables));
}

/// Counters: multiply-adds of a second in billions, and that over Eigen's in double precision, each the fastest of
/// passes in turn.
void CrossProduct(benchmark::State& state, const Shape& shape, int threads) {
  const ThreadsOfTheLibrary team(threads);
  const Matrix X = RandomTable(shape.rows, shape.xVariables, 0, 1), Y = RandomTable(shape.rows, shape.yVariables, 0, 2);
  Matrix product(shape.yVariables, shape.xVariables);
  EigenProducts eigen(shape.rows, shape.yVariables, shape.xVariables, threads);
  FastestPass ours, theirs;
  for (auto _ : state) {
    ours.Run([&] { Y.Result(&product).MatrixMultiply(X, /*transposeThis=*/true, /*transposeOther=*/false); });
    theirs.Run([&] { eigen.Multiply(); });
  }
  state.counters["GFMA_per_s"] = 1e-9 * shape.rows * shape.xVariables * shape.yVariables / ours.Seconds();
  state.counters["of_Eigen"] = theirs.Seconds() / ours.Seconds();
}

const Shape kSearches[] = {{"100x1000_and_100x200", 100, 1000, 200}, {"60x5000_and_60x50", 60, 5000, 50}};

// The factors of the first two fit no cache, of the last one only the product does not.
const Shape kProducts[] = {{"4000x3000_and_4000x500", 4000, 3000, 500},
                           {"2000x2000_and_2000x2000", 2000, 2000, 2000},
                           {"100x20000_and_100x500", 100, 20000, 500}};

const int registered = [] {
  for (const Shape& shape : kSearches)
    benchmark::RegisterBenchmark((std::string("Search/") + shape.name).c_str(),
                                 [&shape](benchmark::State& state) { Search(state, shape); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
  for (const Shape& shape : kProducts)
    for (int threads : {1, 2})
      benchmark::RegisterBenchmark(
          (std::string("CrossProduct/") + shape.name + "/" + std::to_string(threads) + "thread").c_str(),
          [&shape, threads](benchmark::State& state) { CrossProduct(state, shape, threads); })
          ->Unit(benchmark::kMillisecond)
          ->Iterations(4)
          ->UseRealTime();
  return 0;
}();

}  // namespace
