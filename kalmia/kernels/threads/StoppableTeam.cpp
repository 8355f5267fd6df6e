#include "kalmia/kernels/threads/StoppableTeam.h"

#include <omp.h>

#include <algorithm>
#include <atomic>
#include <boost/thread.hpp>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

#include "kalmia/kernels/ThreadingControl.h"
#include "kalmia/kernels/threads/FirstFailure.h"

namespace kalmia {

namespace {

constexpr int kMostThreadsOfSmallMachines = 64;
constexpr std::chrono::milliseconds kWaitBetweenQuestions{5};  ///< an answer is wanted within 50

/// Takes a thread out of a piece that nobody wants any more.
struct Abandoned {};

class StoppableTeam {
 public:
  StoppableTeam(int pieces, const Ask& ask, const std::function<void(int, const Ask&)>& work)
      : pieces_(pieces), ask_(ask), work_(work) {}

  void Run(int threads) {
    std::vector<boost::thread> helpers;
    helpers.reserve(static_cast<std::size_t>(threads) - 1);
    Guarded([&] {
      StartHelpers(threads - 1, &helpers);
      TakePieces([this] { AskForAll(1); });
      AwaitHelpers();
    });
    for (boost::thread& helper : helpers) helper.join();
    failure_.Rethrow();
    if (ask_) AskForAll(0);
  }

 private:
  void StartHelpers(int count, std::vector<boost::thread>* helpers) {
    try {
      while (count-- > 0) {
        ++helping_;
        helpers->emplace_back([this] {
          Guarded([this] { TakePieces([this] { LeaveQuestion(); }); });
          EndHelp();
        });
      }
    } catch (const boost::thread_resource_error&) {
      EndHelp();  // the one that could not be had
    } catch (...) {
      EndHelp();
      throw;
    }
  }

  /// Runs what may throw; after a failure no piece is begun any more.
  template <class Work>
  void Guarded(const Work& work) {
    const int done = failure_.Run([&work] {
      try {
        work();
      } catch (const Abandoned&) {
      }
      return 1;
    });
    if (done == 0) stopped_ = true;
  }

  void TakePieces(const Ask& ask) {
    const Ask& wanted = ask_ ? ask : ask_;
    for (int piece = next_++; piece < pieces_ && !stopped_; piece = next_++) work_(piece, wanted);
  }

  void LeaveQuestion() {
    if (stopped_) throw Abandoned();
    ++questions_;
  }

  /// Puts `mine` questions and those that the others have left.
  void AskForAll(std::int64_t mine) {
    for (std::int64_t count = questions_.exchange(0) + mine; count > 0; --count) {
      if (stopped_) throw Abandoned();
      ask_();
    }
  }

  void EndHelp() {
    const std::lock_guard<std::mutex> lock(mutex_);
    --helping_;
    ended_.notify_one();
  }

  void AwaitHelpers() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!ended_.wait_for(lock, kWaitBetweenQuestions, [this] { return helping_ == 0; })) {
      lock.unlock();
      if (ask_) AskForAll(0);
      lock.lock();
    }
  }

  const int pieces_;
  const Ask& ask_;
  const std::function<void(int, const Ask&)>& work_;
  FirstFailure failure_;
  std::atomic<int> next_{0};
  std::atomic<bool> stopped_{false};
  std::atomic<std::int64_t> questions_{0};  ///< left by helpers, not yet put
  std::atomic<int> helping_{0};             ///< threads beside the calling one
  std::mutex mutex_;
  std::condition_variable ended_;
};

}  // namespace

int ThreadsForLongWork() {
  using NCMultiThreading::ThreadingControl;
  if (!ThreadingControl::IsThreadingOn()) return 1;
  const int most = std::max(kMostThreadsOfSmallMachines, omp_get_num_procs());
  return std::clamp(ThreadingControl::GetNumberOfProcessors(), 1, most);
}

void ForPieces(int pieces, int threads, const Ask& ask, const std::function<void(int piece, const Ask& ask)>& work) {
  threads = std::min(threads, pieces);
  if (threads > 1) return StoppableTeam(pieces, ask, work).Run(threads);
  for (int piece = 0; piece < pieces; ++piece) work(piece, ask);
}

}  // namespace kalmia
