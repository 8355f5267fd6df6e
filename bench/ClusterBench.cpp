// Cluster trees: the distances of all rows as a share of the machine's floating-point rate, and the whole analysis.
#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "FloatRate.h"
#include "MemoryBandwidth.h"
#include "Tables.h"
#include "kalmia/cluster/DendroGram.h"
#include "kalmia/cluster/InitialDistances.h"
#include "kalmia/support/UserComm.h"

namespace {

constexpr int kColumns = 50;

/// Subtraction, product and sum of each column of each pair; conversions do not count.
constexpr double kOperationsPerCell = 3;

double PairsOf(int rows) { return 0.5 * rows * (rows - 1); }

void AllDistances(benchmark::State& state, DendroGram::ElementFunction element, DendroGram::FinishFunction finish,
                  double holes) {
  const int rows = static_cast<int>(state.range(0));
  const NCDataMatrix<float> table = RandomTable(rows, kColumns, holes, 1);
  std::vector<DendroGram::DistanceAndIndex> pairs(4 * static_cast<std::size_t>(rows));
  FastestPass fastest, yardstick;
  for (auto _ : state) {
    fastest.Run([&] {
      const DendroGram::RowDistances distances(table, element, finish);
      for (int a = 1; a < rows; a += DendroGram::RowDistances::kRowsAtOnce)
        benchmark::DoNotOptimize(
            distances.Calculate(a, std::min(DendroGram::RowDistances::kRowsAtOnce, rows - a), pairs.data()));
    });
    state.PauseTiming();
    yardstick.Run(DoOperations);
    state.ResumeTiming();
  }
  const double rate = kOperationsPerCell * kColumns * PairsOf(rows) / fastest.Seconds();
  state.counters["ns_per_pair"] = 1e9 * fastest.Seconds() / PairsOf(rows);
  state.counters["of_machine"] = rate / (kOperations / yardstick.Seconds());
}
using DendroGram::HalfSquaredDifference, DendroGram::SquaredDifference;
using DendroGram::SquareRootOfDistance, DendroGram::Unchanged;
BENCHMARK_CAPTURE(AllDistances, single_linkage, SquaredDifference, SquareRootOfDistance, 0.0)->Arg(1000)->Arg(4000);
BENCHMARK_CAPTURE(AllDistances, single_linkage_holes, SquaredDifference, SquareRootOfDistance, 0.05)
    ->Arg(1000)
    ->Arg(4000);
BENCHMARK_CAPTURE(AllDistances, ward, HalfSquaredDifference, Unchanged, 0.0)->Arg(1000)->Arg(4000);
BENCHMARK_CAPTURE(AllDistances, ward_holes, HalfSquaredDifference, Unchanged, 0.05)->Arg(1000)->Arg(4000);

/// "init" is the share of the distances and their sort.
template <class Calculator>
void Tree(benchmark::State& state, const Calculator& fresh) {
  const int rows = static_cast<int>(state.range(0));
  const ThreadsOfTheLibrary threads(static_cast<int>(state.range(1)));
  const NCDataMatrix<float> table = RandomTable(rows, kColumns, 0, 1);
  FastestPass whole, init;
  for (auto _ : state) {
    Calculator calculator = fresh;
    init.Run([&] { calculator.Init(table, nullptr); });
    calculator = fresh;
    whole.Run([&] {
      DendroGram::DendroGramNode::Destroy(DendroGram::GetDendroGram(table, calculator, nullptr, nullptr));
    });
  }
  state.counters["s"] = whole.Seconds();
  state.counters["init"] = init.Seconds() / whole.Seconds();
}

void SingleLinkage(benchmark::State& state) { Tree(state, DendroGram::SingleLinkageDistanceCalculator()); }
BENCHMARK(SingleLinkage)->ArgsProduct({{1000, 2000, 4000, 8000}, {1, 2}})->Iterations(2)->UseRealTime();

/// What went through read and write calls so far.
double BytesMoved() {
  std::ifstream file("/proc/self/io");
  double bytes = 0, number = 0;
  for (std::string word; file >> word >> number;)
    if (word == "rchar:" || word == "wchar:") bytes += number;
  return bytes;
}

/// The library's questions are not asked.
struct NoDialogue : UserComm {
  NoDialogue() { SetUserComm(this); }
  ~NoDialogue() override { SetUserComm(nullptr); }
  int Ask(const char*, const char*, const char*, int) override { return 0; }
  void Show(const char*, const char*, int) override {}
};

/// The second argument is the share of the pairs that fits in memory, as its reciprocal. "moved" is what was read and
/// written over the size of the list of pairs: it is written, read and written while it is split, and read again up to
/// the last merge, which makes 4 at most; what is split again counts twice more.
void SingleLinkageOnDisk(benchmark::State& state) {
  const int rows = static_cast<int>(state.range(0));
  const NoDialogue dialogue;
  const NCDataMatrix<float> table = RandomTable(rows, kColumns, 0, 1);
  DendroGram::SetMaximumPairsInMemory(static_cast<std::uint64_t>(PairsOf(rows)) / state.range(1));
  const double before = BytesMoved();
  FastestPass fastest;
  for (auto _ : state)
    fastest.Run([&] {
      DendroGram::SingleLinkageDistanceCalculator calculator;
      DendroGram::DendroGramNode::Destroy(DendroGram::GetDendroGram(table, calculator, nullptr, nullptr));
    });
  DendroGram::SetMaximumPairsInMemory(0);
  const double list = PairsOf(rows) * sizeof(DendroGram::DistanceAndIndex);
  state.counters["s"] = fastest.Seconds();
  state.counters["moved"] = (BytesMoved() - before) / static_cast<double>(state.iterations()) / list;
}
BENCHMARK(SingleLinkageOnDisk)->ArgsProduct({{1000, 4000}, {2, 16, 128}})->Iterations(2)->UseRealTime();

void Ward(benchmark::State& state) {
  using DendroGram::WardDistanceCalculator;
  Tree(state, WardDistanceCalculator(WardDistanceCalculator::DistanceIncrease));
}
BENCHMARK(Ward)->ArgsProduct({{1000, 2000, 4000, 8000}, {1, 2}})->Iterations(2)->UseRealTime();

}  // namespace
