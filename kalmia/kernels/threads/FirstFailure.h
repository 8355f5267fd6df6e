#pragma once

#include <exception>
#include <mutex>

namespace kalmia {

/// Brings an exception out of threads and parallel regions, which it may not leave by itself: the first one is kept
/// until all have come to their end, later ones are dropped.
class FirstFailure {
 public:
  /// What work() returns, or 0 where it throws. Any number of threads may call this at the same time.
  template <class Work>
  int Run(const Work& work) {
    try {
      return work();
    } catch (...) {
      const std::lock_guard<std::mutex> lock(mutex_);
      if (!failure_) failure_ = std::current_exception();
      return 0;
    }
  }

  /// Throws what was kept, if anything. To be called when no thread is in Run any more.
  void Rethrow() const {
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  std::mutex mutex_;
  std::exception_ptr failure_;
};

}  // namespace kalmia
