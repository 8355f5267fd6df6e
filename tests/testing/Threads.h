#pragma once

#include <cstdint>

// Threads for tests: a given number of them, whatever the machine has and however busy it is.

/// Gives every parallel step `threads` threads (OpenMP's adjustment to the load is off) until the end of the scope,
/// which puts threading back to where the library starts it.
class Threads {
 public:
  explicit Threads(int threads);
  Threads(const Threads&) = delete;
  Threads& operator=(const Threads&) = delete;
  ~Threads();
};

/// The threads that a region over a table of so many cells really gets now.
int TeamReallyGot(std::int64_t cells);
