// Standard normal variates, detrending and skewness: how many times as fast as the same definitions worked out cell by
// cell in long double, which on x86 means the x87 unit and elsewhere other bits. Both run in turn on one table, whose
// rows are spectra of so many cells; 0 or 10 % of them are holes.
#include <cmath>
#include <vector>

#include "MemoryBandwidth.h"
#include "Tables.h"

namespace {

using Row = NCDataVector<float>;
using Matrix = NCDataMatrix<float>;
constexpr int kRows = 100;
constexpr float kHole = static_cast<float>(kalmia::kMissing);

long double MeanOf(const Row& row) { return row.GetSum() / (row.Size() - row.GetNumMisVal()); }

long double SdOf(const Row& row, long double mean) {
  return std::sqrt(row.GetSS(mean) / (row.Size() - row.GetNumMisVal() - 1));
}

void SNVInLongDouble(const Row& row, float* out) {
  const long double mean = MeanOf(row), sd = SdOf(row, mean);
  for (const float x : row) *out++ = x == kHole ? kHole : static_cast<float>((x - mean) / sd);
}

void DetrendMeanInLongDouble(const Row& row, float* out) {
  const long double mean = MeanOf(row);
  for (const float x : row) *out++ = x == kHole ? kHole : static_cast<float>(x - mean);
}

void DetrendLinearInLongDouble(const Row& row, float* out) {
  long double n = 0, x = 0, xx = 0, y = 0, xy = 0;
  for (int i = 1; i <= row.Size(); ++i) {
    if (row[i] == kHole) continue;
    const long double abscissa = i, ordinate = row[i];
    ++n;
    x += abscissa;
    xx += abscissa * abscissa;
    y += ordinate;
    xy += abscissa * ordinate;
  }
  const long double slope = (xy - x * y / n) / (xx - x * x / n), intercept = (y - x * slope) / n;
  for (int i = 1; i <= row.Size(); ++i)
    *out++ = row[i] == kHole ? kHole : static_cast<float>(row[i] - (i * slope + intercept));
}

void SkewnessInLongDouble(const Row& row, float* out) {
  const long double mean = MeanOf(row), sd = SdOf(row, mean);
  long double sum = 0;
  for (const float x : row) {
    if (x == kHole) continue;
    const long double z = (x - mean) / sd;
    sum += z * z * z;
  }
  *out = static_cast<float>(sum);
}

/// byLongDouble(row, out) for every row, and byLibrary(): "times_as_fast" is the ratio of their fastest passes.
template <class ByLongDouble, class ByLibrary>
void Compare(benchmark::State& state, const Matrix& table, const ByLongDouble& byLongDouble,
             const ByLibrary& byLibrary) {
  std::vector<float> out(static_cast<std::size_t>(table.SizeColumns()));
  FastestPass fastest, yardstick;
  for (auto _ : state) {
    fastest.Run(byLibrary);
    state.PauseTiming();
    yardstick.Run([&] {
      for (const Row& row : table) {
        byLongDouble(row, out.data());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
      }
    });
    state.ResumeTiming();
  }
  state.counters["times_as_fast"] = yardstick.Seconds() / fastest.Seconds();
  state.counters["ns_per_cell"] = fastest.Seconds() * 1e9 / table.SizeColumns() / table.SizeRows();
}

Matrix TableOf(const benchmark::State& state) {
  return RandomTable(kRows, static_cast<int>(state.range(0)), static_cast<double>(state.range(1)) / 100, 1);
}

void SNV(benchmark::State& state) {
  const Matrix table = TableOf(state);
  Matrix out(table.SizeRows(), table.SizeColumns());
  Compare(state, table, SNVInLongDouble, [&] { table.Result(&out).SNV(); });
}

/// `detrend(row)` of every row of a table of the library's own.
template <class Detrend>
void DetrendRows(benchmark::State& state, decltype(&DetrendMeanInLongDouble) byLongDouble, const Detrend& detrend) {
  const Matrix table = TableOf(state);
  std::vector<Row> rows(static_cast<std::size_t>(kRows));
  for (int r = 1; r <= kRows; ++r) rows[static_cast<std::size_t>(r - 1)].CopyContent(table[r]);
  Compare(state, table, byLongDouble, [&] {
    for (Row& row : rows) detrend(row);
  });
}

void DetrendMean(benchmark::State& state) {
  DetrendRows(state, DetrendMeanInLongDouble, [](Row& row) {
    long double mean;
    row.DetrendMean(mean);
  });
}

void DetrendLinear(benchmark::State& state) {
  DetrendRows(state, DetrendLinearInLongDouble, [](Row& row) {
    long double intercept, slope;
    row.DetrendLinear(intercept, slope);
  });
}

void Skewness(benchmark::State& state) {
  const Matrix table = TableOf(state);
  Compare(state, table, SkewnessInLongDouble, [&] {
    for (const Row& row : table) benchmark::DoNotOptimize(row.GetSkewness());
  });
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"cells", "holes"})->ArgsProduct({{100, 1000, 100000}, {0, 10}})->MinTime(0.1)->UseRealTime();
}
BENCHMARK(SNV)->Apply(Sizes);
BENCHMARK(DetrendMean)->Apply(Sizes);
BENCHMARK(DetrendLinear)->Apply(Sizes);
BENCHMARK(Skewness)->Apply(Sizes);

}  // namespace
