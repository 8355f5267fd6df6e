#include "MemoryBandwidth.h"

#include <omp.h>

#include <cstddef>
#include <map>
#include <utility>

namespace {

/// Reads every word; the compiler turns this into vector loads, several in flight.
std::uint64_t Sum(const std::uint64_t* words, std::size_t n) {
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < n; ++i) sum += words[i];
  return sum;
}

void Increment(std::uint64_t* words, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) ++words[i];
}

/// Small ranges are repeated until a pass takes a millisecond or so.
int RepeatsFor(double bytes) { return bytes < 4e6 ? static_cast<int>(2e7 / bytes) + 1 : 1; }

}  // namespace

Yardstick::Yardstick(double bytes, int threads, Traffic traffic)
    : memory_(static_cast<std::size_t>(bytes / sizeof(std::uint64_t)), 1),
      threads_(threads),
      traffic_(traffic),
      repeats_(RepeatsFor(bytes)) {}

void Yardstick::Pass() {
  fastest_.Run([this] {
#pragma omp parallel num_threads(threads_)
    {
      const std::size_t part = memory_.size() / static_cast<std::size_t>(omp_get_num_threads());
      std::uint64_t* mine = memory_.data() + part * static_cast<std::size_t>(omp_get_thread_num());
      for (int k = 0; k < repeats_; ++k) {
        if (traffic_ == Traffic::Read)
          benchmark::DoNotOptimize(Sum(mine, part));
        else
          Increment(mine, part);
        benchmark::ClobberMemory();
      }
    }
  });
}

double SecondsInMemory(double bytes, int threads, Traffic traffic) {
  static std::map<std::pair<int, Traffic>, double> secondsPerByte;
  double& known = secondsPerByte[{threads, traffic}];
  if (known == 0) {
    Yardstick yardstick(kBytesInMemory, threads, traffic);
    for (int pass = 0; pass < 10; ++pass) yardstick.Pass();
    known = yardstick.SecondsPerPass() / kBytesInMemory;
  }
  return known * bytes;
}

void ReportShareOfMemoryBandwidth(benchmark::State& state, const FastestPass& fastest, const Yardstick& yardstick,
                                  double bytes, int threads, Traffic traffic) {
  state.counters["of_machine"] = yardstick.SecondsPerPass() / fastest.Seconds();
  state.counters["of_memory"] = SecondsInMemory(bytes, threads, traffic) / fastest.Seconds();
}
