// Holds kernels and fits to shares of the machine's own rates, measured in the same run.
//   SpeedGuard bounds.txt          fails when a share falls below its bound
//   SpeedGuard bounds.txt product  the same, for one share
//   SpeedGuard                     measures, and prints what bounds.txt is to hold: half of each share
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "FloatRate.h"
#include "MemoryBandwidth.h"
#include "Tables.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/pcapls/NCPLS.h"

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

/// The share may still grow with every round: what disturbs a pass makes it slower, never faster.
struct Contest {
  std::function<void()> round;    ///< one pass of the work and one of the machine's yardstick
  std::function<double()> share;  ///< of the machine's rate, by the fastest pass of each
};

constexpr int kFewestRounds = 5;  ///< so that one lucky yardstick or pass does not decide
constexpr int kMostRounds = 40;   ///< a share that is still below its bound then is no work of the neighbours
constexpr int kPlaces = 4;        ///< nor of the pages, if it stays below its bound in as many places of memory

Contest BesideMemory(double bytes, int threads, Traffic traffic, std::function<void()> work) {
  const auto yardstick = std::make_shared<Yardstick>(bytes, threads, traffic);
  const auto fastest = std::make_shared<FastestPass>();
  const auto round = [=] {
    const ThreadsOfTheLibrary team(threads);
    yardstick->Pass();
    for (int k = 0; k < yardstick->Repeats(); ++k) fastest->Run(work);
  };
  return {round, [=] { return yardstick->SecondsPerPass() / fastest->Seconds(); }};
}

/// One thread; `operations` products and sums.
Contest BesideArithmetic(double operations, std::function<void()> work) {
  const auto yardstick = std::make_shared<FastestPass>(), fastest = std::make_shared<FastestPass>();
  const auto round = [=] {
    const ThreadsOfTheLibrary team(1);
    yardstick->Run(DoOperations);
    fastest->Run(work);
  };
  return {round, [=] { return operations / kOperations * yardstick->Seconds() / fastest->Seconds(); }};
}

struct Inputs {
  Inputs(int rows, int columns, double holes)
      : x(RandomTable(rows, columns, holes, 1)),
        alongRows(RandomCells(rows, 2)),
        alongColumns(RandomCells(columns, 3)),
        perRow(rows),
        perColumn(columns) {
    x.ForceUnlink();  // now, so that no pass pays for it
  }
  Matrix x;
  Vector alongRows, alongColumns;
  Vector perRow, perColumn;  ///< result targets
  float factor = 1e-3F;
};

void RegressColumns(Inputs& in) { in.x.Result(&in.perColumn).SpecialNipalsRegressColumnsFix(in.alongRows); }
void RegressRows(Inputs& in) {
  in.x.Result(&in.perRow).SpecialNipalsRegressRowsFix(in.alongColumns, nullptr, 0);
}
/// Adds a little and takes it away again in turn, so that the cells stay what they are.
void Deflate(Inputs& in) {
  in.x.AddVprimV(in.alongRows, in.alongColumns, in.factor);
  in.factor = -in.factor;
}

Contest Kernel(void (*kernel)(Inputs&), int rows, int columns, double holes, int threads, Traffic traffic) {
  const auto inputs = std::make_shared<Inputs>(rows, columns, holes);
  return BesideMemory(4.0 * rows * columns, threads, traffic, [=] { kernel(*inputs); });
}

Contest InMemory(void (*kernel)(Inputs&), double holes, int threads, Traffic traffic = Traffic::Read) {
  return Kernel(kernel, /*rows=*/2000, /*columns=*/5000, holes, threads, traffic);
}

Contest InCache(void (*kernel)(Inputs&), double holes) {
  return Kernel(kernel, /*rows=*/200, /*columns=*/1000, holes, /*threads=*/1, Traffic::Read);
}

Contest Product(int size) {
  const auto a = std::make_shared<Matrix>(RandomTable(size, size, 0, 1));
  const auto b = std::make_shared<Matrix>(RandomTable(size, size, 0, 2));
  const auto product = std::make_shared<Matrix>(size, size);
  return BesideArithmetic(2.0 * size * size * size, [=] { a->Result(product.get()).MatrixMultiply(*b, false, false); });
}

/// Beside as many reads of X as there are components.
Contest PLSFit(int rows, int columns, int components, double holes) {
  const auto x = std::make_shared<Matrix>(RandomTable(rows, columns, holes, 1));
  const auto y = std::make_shared<Matrix>(RandomTable(rows, 1, 0, 2));
  Contest one = BesideMemory(4.0 * rows * columns, /*threads=*/1, Traffic::Read, [=] {
    NCPLS model(x.get(), y.get(), /*maxIterations=*/500);
    for (int a = 0; a < components; ++a) {
      model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/false);
      model.CalculateResiduals();
    }
  });
  return {one.round, [=] { return components * one.share(); }};
}

struct Entry {
  const char* name;
  std::function<Contest()> make;
};

std::vector<Entry> Entries() {
  std::vector<Entry> entries = {
      {"regress-columns", [] { return InMemory(RegressColumns, 0, 1); }},
      {"regress-rows", [] { return InMemory(RegressRows, 0, 1); }},
      {"deflate", [] { return InMemory(Deflate, 0, 1, Traffic::ReadWrite); }},
      {"regress-columns-with-holes", [] { return InMemory(RegressColumns, 0.05, 1); }},
      {"regress-rows-with-holes", [] { return InMemory(RegressRows, 0.05, 1); }},
      {"regress-columns-in-cache", [] { return InCache(RegressColumns, 0); }},
      {"regress-rows-with-holes-in-cache", [] { return InCache(RegressRows, 0.05); }},
      {"product", [] { return Product(200); }},
      {"pls-fit", [] { return PLSFit(500, 1000, 3, 0); }},
      {"pls-fit-with-holes", [] { return PLSFit(500, 1000, 3, 0.05); }},
      {"pls-fit-of-a-small-table", [] { return PLSFit(100, 50, 5, 0); }},
      {"regress-rows-by-two-threads", [] { return InMemory(RegressRows, 0, 2); }},
  };
  if (std::thread::hardware_concurrency() < 2) entries.pop_back();
  return entries;
}

double ShareInOnePlace(const Contest& contest, double bound) {
  for (int round = 1; round <= kMostRounds; ++round) {
    contest.round();
    if (round >= kFewestRounds && contest.share() >= bound) break;
  }
  return contest.share();
}

/// Which physical pages a table of about the size of a cache gets decides whether they displace each other there: one
/// place may halve what another one reaches. The contests stay until the end, so that each has pages of its own.
double Share(const Entry& entry, double bound) {
  std::vector<Contest> places;
  double best = 0;
  while (best < bound && places.size() < kPlaces) {
    places.push_back(entry.make());
    best = std::max(best, ShareInOnePlace(places.back(), bound));
  }
  return best;
}

std::map<std::string, double> ReadBounds(const char* path) {
  std::ifstream file(path);
  std::map<std::string, double> bounds;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line.front() == '#') continue;
    std::istringstream words(line);
    std::string name;
    double bound = 0;
    if (!(words >> name >> bound) || bound <= 0) throw std::runtime_error("no bound: " + line);
    bounds[name] = bound;
  }
  return bounds;
}

/// False where one share is below its bound. An empty `only` stands for all.
bool Holds(const std::map<std::string, double>& bounds, const std::string& only) {
  bool holds = true;
  for (const Entry& entry : Entries()) {
    if (!only.empty() && only != entry.name) continue;
    const auto bound = bounds.find(entry.name);
    if (bound == bounds.end()) throw std::runtime_error(std::string("no bound for ") + entry.name);
    const double share = Share(entry, bound->second);
    const bool keeps = share >= bound->second;
    std::printf("%-34s %9.4f  bound %9.4f%s\n", entry.name, share, bound->second, keeps ? "" : "  below its bound");
    std::fflush(stdout);
    holds = holds && keeps;
  }
  return holds;
}

void PrintHalves() {
  for (const Entry& entry : Entries())
    std::printf("%-34s %.3g\n", entry.name, Share(entry, std::numeric_limits<double>::infinity()) / 2);
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc == 1) {
    PrintHalves();
    return 0;
  }
  return Holds(ReadBounds(argv[1]), argc > 2 ? argv[2] : "") ? 0 : 1;
} catch (const std::exception& failure) {
  std::cerr << "SpeedGuard: " << failure.what() << '\n';
  return 2;
}
