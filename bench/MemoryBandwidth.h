#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <vector>

// How far from the machine's limit? Rates are given as a share of what the machine itself moves, measured in the same
// run, so that a number still says something a year later on another machine, and on one whose neighbours are noisy.

/// The fastest of the passes so far: what the machine can do when nobody else uses it.
class FastestPass {
 public:
  template <class Pass>
  void Run(const Pass& pass) {
    const auto begin = std::chrono::steady_clock::now();
    pass();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
    if (time.count() < seconds_) seconds_ = time.count();
  }
  double Seconds() const { return seconds_; }

 private:
  double seconds_ = std::numeric_limits<double>::infinity();
};

enum class Traffic {
  Read,
  ReadWrite  ///< every byte is read, changed and written back
};

/// The machine's own rate for so many bytes by so many threads, each on its own part: plain loops over words. A range
/// that fits the caches of the threads is passed over many times, so that the start of the team does not count.
class Yardstick {
 public:
  Yardstick(double bytes, int threads, Traffic traffic);
  void Pass();
  int Repeats() const { return repeats_; }  ///< how often a pass goes over the range
  double SecondsPerPass() const { return fastest_.Seconds() / repeats_; }

 private:
  std::vector<std::uint64_t> memory_;
  int threads_;
  Traffic traffic_;
  int repeats_;
  FastestPass fastest_;
};

/// A range that no cache holds.
constexpr double kBytesInMemory = 512.0 * 1024 * 1024;

/// Seconds in which so many threads move `bytes` bytes from (and to) memory; measured once a program.
double SecondsInMemory(double bytes, int threads, Traffic traffic);

/// Counters of the fastest pass over a table of `bytes` bytes with `threads` threads:
///   of_machine  share of the rate at which the machine moves so many bytes, by the yardstick: a table that fits the
///               caches is held against the caches
///   of_memory   share of the rate at which it moves memory
void ReportShareOfMemoryBandwidth(benchmark::State& state, const FastestPass& fastest, const Yardstick& yardstick,
                                  double bytes, int threads, Traffic traffic);

/// Runs pass() as the benchmark's iterations, each of which goes over a table of `bytes` bytes with `threads` threads,
/// takes a yardstick of the same size in turn with them, and reports the share of bandwidth. A table that fits the
/// caches is passed over as often as the yardstick is before they change turns, so that both find their bytes there.
template <class Pass>
void RunBesideYardstick(benchmark::State& state, double bytes, int threads, Traffic traffic, const Pass& pass) {
  Yardstick yardstick(bytes, threads, traffic);
  FastestPass fastest;
  int passes = 0;
  yardstick.Pass();
  for (auto _ : state) {
    fastest.Run(pass);
    if (++passes % yardstick.Repeats() != 0) continue;
    state.PauseTiming();
    yardstick.Pass();
    state.ResumeTiming();
  }
  ReportShareOfMemoryBandwidth(state, fastest, yardstick, bytes, threads, traffic);
}
