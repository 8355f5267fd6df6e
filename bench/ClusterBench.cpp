// Cluster trees: the distances of all rows as a share of the machine's floating-point rate, and the whole analysis.
#include <algorithm>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "FloatRate.h"
#include "MemoryBandwidth.h"
#include "Tables.h"
#include "kalmia/cluster/DendroGram.h"
#include "kalmia/cluster/internal/CommonColumns.h"
#include "kalmia/cluster/internal/InitialDistances.h"
#include "kalmia/containers/Missing.h"
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
      for (int a = 1; a < rows; a += DendroGram::RowDistances::kRowsSideBySide)
        benchmark::DoNotOptimize(
            distances.Calculate(a, std::min(DendroGram::RowDistances::kRowsSideBySide, rows - a), pairs.data()));
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
BENCHMARK(Ward)->ArgsProduct({{12000, 20000}, {2}})->Iterations(1)->UseRealTime();  // 0.9 and 2.4 GB

/// A bar whose user never wants to stop.
struct PatientUser : NCProgress::Sink {
  void SetRange(float, float) override {}
  bool SetValue(float) override { return true; }
  void SetText(const char*) override {}
  bool PushSubRange(float, float) override { return true; }
  bool PopSubRange() override { return true; }
  bool IsBreakPressed() override { return false; }
  bool NextSpin() override { return true; }
  void SpinDone() override {}
};

/// "asked" is the time of the distances and their sort with a progress object over that without one, of tables with
/// two columns, so that the sort is most of it.
void SortWithProgress(benchmark::State& state) {
  const ThreadsOfTheLibrary threads(static_cast<int>(state.range(1)));
  const NCDataMatrix<float> table = RandomTable(static_cast<int>(state.range(0)), 2, 0, 1);
  NCProgress progress(std::make_unique<PatientUser>());
  std::vector<DendroGram::DistanceAndIndex> pairs;
  FastestPass silent, asked;
  const auto distances = [&](NCProgress* bar) {
    DendroGram::CalculateInitialDistances(table, bar, pairs, SquaredDifference, SquareRootOfDistance);
  };
  for (auto _ : state) {
    silent.Run([&] { distances(nullptr); });
    asked.Run([&] { distances(&progress); });
  }
  state.counters["ns_per_pair"] = 1e9 * silent.Seconds() / PairsOf(table.SizeRows());
  state.counters["asked"] = asked.Seconds() / silent.Seconds();
}
BENCHMARK(SortWithProgress)->ArgsProduct({{300, 1000, 4000}, {1, 2}})->Iterations(10)->UseRealTime();

/// "of_cells" is the time of the check for rows without common columns over that of comparing the cells of each pair,
/// one by one. All rows miss half of their cells, so that each pair is looked at.
void MissingCells(benchmark::State& state) {
  const int rows = 2000, columns = static_cast<int>(state.range(0));
  NCDataMatrix<float> table(rows, columns, kalmia::kMissingCell<float>);
  for (int r = 1; r <= rows; ++r)
    for (int c = 0; c < (columns + 1) / 2; ++c) table(r, 1 + (c + r / 1000) % columns, 1.0F);
  const auto cellByCell = [&] {
    int fewest = columns;
    for (int a = 1; a <= rows; ++a)
      for (int b = a + 1; b <= rows; ++b) {
        const float *const x = table[a].begin(), *const y = table[b].begin();
        int common = 0;
        for (int c = 0; c < columns; ++c)
          if (x[c] != kalmia::kMissingCell<float> && y[c] != kalmia::kMissingCell<float>) ++common;
        fewest = std::min(fewest, common);
      }
    benchmark::DoNotOptimize(fewest);
  };
  FastestPass bits, cells;
  for (auto _ : state) {
    bits.Run([&] { kalmia::CheckMissingData(table, {}); });
    cells.Run(cellByCell);
  }
  state.counters["ns_per_pair"] = 1e9 * bits.Seconds() / PairsOf(rows);
  state.counters["of_cells"] = bits.Seconds() / cells.Seconds();
}
BENCHMARK(MissingCells)->Arg(20)->Arg(100)->Arg(1000)->UseRealTime();

using OwnedTree = std::unique_ptr<DendroGram::DendroGramNode, void (*)(DendroGram::DendroGramNode*)>;

/// A tree over so many leaves: a chain, or one whose clusters are merged at random.
OwnedTree TreeOf(int leafs, bool chain) {
  using DendroGram::DendroGramNode;
  std::vector<DendroGramNode*> clusters;
  for (int item = 1; item <= leafs; ++item) clusters.push_back(new DendroGramNode(item));
  std::mt19937 random(1);
  for (float height = 1; clusters.size() > 1; ++height) {
    DendroGramNode* const last = clusters.back();
    clusters.pop_back();
    DendroGramNode*& other = clusters[chain ? clusters.size() - 1 : random() % clusters.size()];
    other = new DendroGramNode(height, last, other);
  }
  return OwnedTree(clusters.front(), DendroGramNode::Destroy);
}

/// Some of the nodes: every `step`-th, from the top down.
std::vector<const DendroGram::DendroGramNode*> SomeNodes(const DendroGram::DendroGramNode& root, int step) {
  std::vector<const DendroGram::DendroGramNode*> pending = {&root}, some;
  for (int n = 1; !pending.empty(); ++n) {
    const DendroGram::DendroGramNode* const node = pending.back();
    pending.pop_back();
    if (n % step == 0) some.push_back(node);
    if (node->IsLeaf()) continue;
    pending.push_back(node->GetRight());
    pending.push_back(node->GetLeft());
  }
  return some;
}

/// Takes lines as a picture does that keeps them.
struct Lines : DendroGram::DendroGramDrawOutput {
  struct Line {
    float x1, y1, x2, y2;
  };
  void DrawLine(float x1, float y1, float x2, float y2, const DendroGram::DendroGramNode*) override {
    lines.push_back({x1, y1, x2, y2});
  }
  void DrawLabel(const std::vector<int>*, float x, float y) override { lines.push_back({x, y, x, y}); }
  bool GetLabelRect(const std::vector<int>*, float, float, float*, float*, float*, float*) override { return false; }
  std::vector<Line> lines;
};

/// "excluded" is the time of a drawing with some leaves left out over that of the whole tree; "hit" the same of hit
/// tests. Those left out are the leaves among every so many-th node, so that nearly all of the tree is still drawn.
void DrawWithExcluded(benchmark::State& state, bool chain) {
  const OwnedTree tree = TreeOf(60000, chain);
  DendroGram::DendroGramDrawer whole(*tree), part(*tree);
  for (const DendroGram::DendroGramNode* const node : SomeNodes(*tree, static_cast<int>(state.range(0))))
    if (node->IsLeaf()) part.AddExcluded(node);
  Lines lines;
  const auto draw = [&lines](const DendroGram::DendroGramDrawer& drawer) {
    lines.lines.clear();
    drawer.Draw(lines, 0, 1000, 0, 1000);
    benchmark::DoNotOptimize(lines.lines.data());
  };
  const auto hit = [](const DendroGram::DendroGramDrawer& drawer) {
    delete drawer.HitTest(0, 1000, 0, 1000, 500, 500, 5, 5, /*nearestOnly=*/true);
  };
  FastestPass drawnWhole, drawnInPart, hitWhole, hitInPart;
  for (auto _ : state) {
    drawnWhole.Run([&] { draw(whole); });
    drawnInPart.Run([&] { draw(part); });
    hitWhole.Run([&] { hit(whole); });
    hitInPart.Run([&] { hit(part); });
  }
  state.counters["ms"] = 1e3 * drawnWhole.Seconds();
  state.counters["excluded"] = drawnInPart.Seconds() / drawnWhole.Seconds();
  state.counters["hit"] = hitInPart.Seconds() / hitWhole.Seconds();
}
BENCHMARK_CAPTURE(DrawWithExcluded, chain, true)->Arg(100000)->Arg(1000)->Arg(10)->Arg(2)->UseRealTime();
BENCHMARK_CAPTURE(DrawWithExcluded, bushy, false)->Arg(100000)->Arg(1000)->Arg(10)->Arg(2)->UseRealTime();

}  // namespace
