// The regressions of the rows and columns of a table, with and without holes, as shares of the machine's bandwidth.
#include <benchmark/benchmark.h>

#include <string>

#include "MemoryBandwidth.h"
#include "Tables.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/passes/ComponentPasses.h"
#include "kalmia/kernels/simd/Lanes.h"

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

struct Inputs {
  Inputs(int rows, int columns, double holes)
      : x(RandomTable(rows, columns, holes, 1)),
        alongRows(RandomCells(rows, 2)),
        alongColumns(RandomCells(columns, 3)),
        groups(columns),
        perRow(rows),
        perColumn(columns) {
    for (int c = 1; c <= columns; ++c) groups(c) = c % 7;
  }
  Matrix x;
  Vector alongRows, alongColumns;
  NCIntegralVector<int, -99> groups;
  Vector perRow, perColumn;  ///< result targets
};

struct Kernel {
  const char* name;
  void (*run)(Inputs&);
};

const Kernel kKernels[] = {
    {"RegressColumns", [](Inputs& in) { in.x.Result(&in.perColumn).RegressColumns(in.alongRows); }},
    {"ColumnsFix", [](Inputs& in) { in.x.Result(&in.perColumn).SpecialNipalsRegressColumnsFix(in.alongRows); }},
    {"ColumnsFixGroups",
     [](Inputs& in) { in.x.Result(&in.perColumn).SpecialNipalsRegressColumnsFix(in.alongRows, &in.groups, 3); }},
    {"RegressRows", [](Inputs& in) { in.x.Result(&in.perRow).RegressRows(in.alongColumns); }},
    {"RowsFix", [](Inputs& in) { in.x.Result(&in.perRow).SpecialNipalsRegressRowsFix(in.alongColumns, nullptr, 0); }},
    {"RowsFixGroups",
     [](Inputs& in) { in.x.Result(&in.perRow).SpecialNipalsRegressRowsFix(in.alongColumns, &in.groups, 3); }},
    {"RowsFixStride",
     [](Inputs& in) { in.x.Result(&in.perRow).SpecialNipalsRegressRowsFixWithExclude(in.alongColumns, 1, 7); }},
    {"PreMultiply", [](Inputs& in) { in.x.Result(&in.perColumn).PreMultiply(in.alongRows); }},
    {"StartColumn", [](Inputs& in) { in.x.Result(&in.perRow).GetNIPALSStartColumn(); }},
    // A round of a component, in two passes over the table and in one: `of_machine` is of one.
    {"ScoresThenLoadings",
     [](Inputs& in) {
       in.x.Result(&in.perRow).SpecialNipalsRegressRowsFix(in.alongColumns, nullptr, 0);
       in.x.Result(&in.perColumn).SpecialNipalsRegressColumnsFix(in.perRow, nullptr, 0);
     }},
    {"ScoresAndLoadings",
     [](Inputs& in) {
       kalmia::CalcScoresAndLoadings(in.x, in.alongColumns, nullptr, 0, &in.perRow, &in.perColumn);
     }},
};

struct Table {
  const char* name;
  int rows, columns;
};
const Table kTables[] = {{"memory", 4000, 5000}, {"L2", 200, 1000}};

void Pass(benchmark::State& state, const Kernel& kernel, const Table& table, double holes, int threads, bool plain) {
  const ThreadsOfTheLibrary team(threads);
  Inputs inputs(table.rows, table.columns, holes);
  const bool before = kalmia::simd::UsesScalarTwins();
  kalmia::simd::UseScalarTwins(plain);
  RunBesideYardstick(state, 4.0 * table.rows * table.columns, threads, Traffic::Read, [&] { kernel.run(inputs); });
  kalmia::simd::UseScalarTwins(before);
}

void OneSmallCall(benchmark::State& state, const Kernel& kernel, double holes) {
  Inputs inputs(20, 10, holes);
  for (auto _ : state) kernel.run(inputs);
}

std::string Share(double holes) { return std::to_string(static_cast<int>(100 * holes)) + "%holes"; }

const int registered = [] {
  for (const Kernel& kernel : kKernels) {
    for (const Table& table : kTables)
      for (double holes : {0.0, 0.05, 0.3}) {
        const std::string name = std::string(kernel.name) + "/" + table.name + "/" + Share(holes);
        for (int threads : {1, 2})
          benchmark::RegisterBenchmark((name + "/" + std::to_string(threads) + "thread").c_str(),
                                       [&kernel, &table, holes, threads](benchmark::State& state) {
                                         Pass(state, kernel, table, holes, threads, /*plain=*/false);
                                       })
              ->UseRealTime();
        benchmark::RegisterBenchmark((name + "/1thread/plain").c_str(),
                                     [&kernel, &table, holes](benchmark::State& state) {
                                       Pass(state, kernel, table, holes, 1, /*plain=*/true);
                                     })
            ->UseRealTime();
      }
    for (double holes : {0.0, 0.3})
      benchmark::RegisterBenchmark((std::string(kernel.name) + "/20x10/" + Share(holes)).c_str(),
                                   [&kernel, holes](benchmark::State& state) { OneSmallCall(state, kernel, holes); });
  }
  return 0;
}();

}  // namespace
