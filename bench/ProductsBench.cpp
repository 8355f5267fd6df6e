// Deflation, transposition and matrix times vector as shares of the machine's bandwidth; products of tables beside the
// plain loops.
#include <benchmark/benchmark.h>

#include <string>

#include "MemoryBandwidth.h"
#include "Tables.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/simd/Lanes.h"

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

struct Inputs {
  Inputs(int rows, int columns, double holes)
      : x(RandomTable(rows, columns, holes, 1)),
        alongRows(RandomCells(rows, 2)),
        alongColumns(RandomCells(columns, 3)),
        perRow(rows) {
    x.ForceUnlink();  // now, so that no pass pays for it
  }
  Matrix x;
  Vector alongRows, alongColumns;
  Vector perRow;  ///< result target
  float factor = 1e-3F;
};

struct Kernel {
  const char* name;
  Traffic traffic;
  void (*run)(Inputs&);
};

/// Adds a little and takes it away again in turn, so that the cells stay what they are.
void Deflate(Inputs& in) {
  in.x.AddVprimV(in.alongRows, in.alongColumns, in.factor);
  in.factor = -in.factor;
}

const Kernel kKernels[] = {
    {"Deflate", Traffic::ReadWrite, Deflate},
    {"MatrixTimesVector", Traffic::Read, [](Inputs& in) { in.x.Result(&in.perRow) * in.alongColumns; }},
    {"GetSS", Traffic::Read, [](Inputs& in) { benchmark::DoNotOptimize(in.x.GetSS()); }},
    {"Transpose", Traffic::ReadWrite, [](Inputs& in) { in.x.Transpose(); }},
};

struct Table {
  const char* name;
  int rows, columns;
};
const Table kTables[] = {{"memory", 4000, 5000}, {"L2", 200, 1000}};

/// Holds the lane code to its plain twins for the rest of the scope.
class PlainLoops {
 public:
  explicit PlainLoops(bool on) : before_(kalmia::simd::UsesScalarTwins()) { kalmia::simd::UseScalarTwins(on); }
  ~PlainLoops() { kalmia::simd::UseScalarTwins(before_); }

 private:
  bool before_;
};

void Pass(benchmark::State& state, const Kernel& kernel, const Table& table, double holes, int threads, bool plain) {
  const ThreadsOfTheLibrary team(threads);
  Inputs inputs(table.rows, table.columns, holes);
  const PlainLoops loops(plain);
  RunBesideYardstick(state, 4.0 * table.rows * table.columns, threads, kernel.traffic, [&] { kernel.run(inputs); });
}

void OneSmallCall(benchmark::State& state, const Kernel& kernel, double holes) {
  Inputs inputs(20, 10, holes);
  for (auto _ : state) kernel.run(inputs);
}

struct Form {
  const char* name;
  bool transposeThis, transposeOther;
};
const Form kForms[] = {{"A*B", false, false}, {"A'*B", true, false}, {"A*B'", false, true}, {"A'*B'", true, true}};

/// Counters: multiply-adds of a second in billions, and how many times faster that is than the plain loops on one
/// thread, which do the same sums in the same order.
void Product(benchmark::State& state, const Form& form, int size, double holes, int threads) {
  const Matrix a = RandomTable(size, size, holes, 1), b = RandomTable(size, size, holes, 2);
  Matrix product(size, size);
  const auto multiply = [&] { a.Result(&product).MatrixMultiply(b, form.transposeThis, form.transposeOther); };
  FastestPass fastest, plain;
  for (int pass = 0; pass < 3; ++pass) {
    const ThreadsOfTheLibrary one(1);
    const PlainLoops loops(true);
    plain.Run(multiply);
  }
  const ThreadsOfTheLibrary team(threads);
  for (auto _ : state) fastest.Run(multiply);
  state.counters["GFMA_per_s"] = 1e-9 * size * size * size / fastest.Seconds();
  state.counters["times_plain"] = plain.Seconds() / fastest.Seconds();
}

std::string Share(double holes) { return std::to_string(static_cast<int>(100 * holes)) + "%holes"; }
std::string Threads(int threads) { return std::to_string(threads) + "thread"; }

void RegisterPasses(const Kernel& kernel, const Table& table, double holes) {
  const std::string name = std::string(kernel.name) + "/" + table.name + "/" + Share(holes) + "/";
  for (int threads : {1, 2})
    benchmark::RegisterBenchmark((name + Threads(threads)).c_str(),
                                 [&kernel, &table, holes, threads](benchmark::State& state) {
                                   Pass(state, kernel, table, holes, threads, /*plain=*/false);
                                 })
        ->UseRealTime();
  benchmark::RegisterBenchmark((name + "1thread/plain").c_str(), [&kernel, &table, holes](benchmark::State& state) {
    Pass(state, kernel, table, holes, 1, /*plain=*/true);
  })->UseRealTime();
}

void RegisterProducts(const Form& form, int size, double holes) {
  const std::string name = std::string(form.name) + "/" + std::to_string(size) + "/" + Share(holes) + "/";
  for (int threads : {1, 2})
    benchmark::RegisterBenchmark((name + Threads(threads)).c_str(),
                                 [&form, size, holes, threads](benchmark::State& state) {
                                   Product(state, form, size, holes, threads);
                                 })
        ->UseRealTime();
}

const int registered = [] {
  for (const Kernel& kernel : kKernels) {
    for (const Table& table : kTables)
      for (double holes : {0.0, 0.05, 0.3}) RegisterPasses(kernel, table, holes);
    for (double holes : {0.0, 0.3})
      benchmark::RegisterBenchmark((std::string(kernel.name) + "/20x10/" + Share(holes)).c_str(),
                                   [&kernel, holes](benchmark::State& state) { OneSmallCall(state, kernel, holes); });
  }
  for (const Form& form : kForms)
    for (int size : {20, 200, 1000})
      for (double holes : {0.0, 0.05}) RegisterProducts(form, size, holes);
  return 0;
}();

}  // namespace
