#include "kalmia/kernels/threads/StoppableTeam.h"

#include <gtest/gtest.h>

#include <atomic>
#include <boost/thread.hpp>
#include <chrono>
#include <mutex>
#include <new>
#include <set>
#include <thread>
#include <vector>

#include "kalmia/kernels/ThreadingControl.h"
#include "testing/NoMoreThreads.h"
#include "testing/Threads.h"

namespace {

using kalmia::Ask;
using kalmia::ForPieces;
using NCMultiThreading::ThreadingControl;

TEST(ForPieces, RunsEachPieceOnce) {
  for (const int threads : {1, 2, 5, 64})
    for (const int pieces : {0, 1, 2, 7, 300}) {
      std::vector<std::atomic<int>> runs(300);
      ForPieces(pieces, threads, {}, [&runs](int piece, const Ask&) { ++runs[static_cast<std::size_t>(piece)]; });
      for (int piece = 0; piece < 300; ++piece)
        EXPECT_EQ(runs[static_cast<std::size_t>(piece)], piece < pieces ? 1 : 0) << threads << " threads";
    }
}

TEST(ForPieces, PutsAllQuestionsOnTheCallingThreadWhateverTheNumberOfThreads) {
  const std::thread::id caller = std::this_thread::get_id();
  for (const int threads : {1, 2, 5}) {
    int questions = 0;
    bool elsewhere = false;
    const Ask ask = [&] {
      ++questions;
      elsewhere = elsewhere || std::this_thread::get_id() != caller;
    };
    ForPieces(40, threads, ask, [](int piece, const Ask& askToo) {
      for (int k = 0; k < piece; ++k) askToo();
    });
    EXPECT_EQ(questions, 40 * 39 / 2) << threads;
    EXPECT_FALSE(elsewhere);
  }
}

TEST(ForPieces, AsksWhileTheCallingThreadWaitsForTheOthers) {
  std::atomic<int> questions{0};
  std::atomic<bool> begun{false};
  const std::thread::id caller = std::this_thread::get_id();
  // The caller's piece is over when the other one is begun, which does not end before its question has been put.
  ForPieces(2, 2, [&questions] { ++questions; }, [&](int, const Ask& ask) {
    if (std::this_thread::get_id() == caller) {
      while (!begun) std::this_thread::yield();
      return;
    }
    begun = true;
    ask();
    while (questions == 0) std::this_thread::yield();
  });
  EXPECT_EQ(questions, 1);
}

TEST(ForPieces, ThrowsWhatAnAnswerThrowsAndLeavesAllPieces) {
  for (const int threads : {1, 2, 5})
    for (const int last : {1, 3, 20}) {
      int questions = 0;
      std::atomic<int> begun{0};
      const Ask ask = [&] {
        if (++questions == last) throw last;
      };
      // Without an end of their own: only the answer ends them.
      EXPECT_THROW(ForPieces(1000, threads, ask,
                             [&begun](int, const Ask& askToo) {
                               for (++begun;;) askToo();
                             }),
                   int);
      EXPECT_EQ(questions, last) << "nothing is asked after that";
      EXPECT_LE(begun, threads);
    }
}

TEST(ForPieces, ThrowsWhatAPieceThrowsWhenAllThreadsHaveLeftTheirs) {
  for (const int threads : {1, 2, 5}) {
    std::atomic<int> inside{0};
    EXPECT_THROW(ForPieces(100, threads, [] {},
                           [&inside](int piece, const Ask& ask) {
                             struct Inside {
                               std::atomic<int>& count;
                               explicit Inside(std::atomic<int>& c) : count(c) { ++count; }
                               ~Inside() { --count; }
                             } const here(inside);
                             if (piece == 3) throw std::bad_alloc();
                             for (int k = 0; k < 1000; ++k) ask();
                           }),
                 std::bad_alloc);
    EXPECT_EQ(inside, 0);
  }
}

TEST(ForPieces, ThrowsWhatAPieceThrowsWhereNobodyIsToBeAsked) {
  for (const int threads : {1, 2, 5}) {
    std::atomic<int> begun{0}, inside{0};
    std::atomic<bool> thrown{false};
    const auto work = [&](int piece, const Ask& ask) {
      EXPECT_FALSE(ask);
      ++begun;
      if (piece == 0) {
        thrown = true;
        throw std::bad_alloc();
      }
      ++inside;
      while (!thrown) std::this_thread::yield();
      std::this_thread::sleep_for(std::chrono::milliseconds(20));  // for the failure to be noted
      --inside;
    };
    EXPECT_THROW(ForPieces(1000, threads, {}, work), std::bad_alloc);
    EXPECT_EQ(inside, 0) << "the others have ended their pieces";
    EXPECT_LT(begun, 1000) << "and begin no more";
    EXPECT_GE(begun, 1);
  }
}

TEST(ForPieces, GivesTheCallingThreadTheShareOfThreadsThatCannotBeHad) {
  const NoMoreThreads none;
  ASSERT_THROW(boost::thread([] {}), boost::thread_resource_error);
  std::set<std::thread::id> workers;
  std::mutex mutex;
  int pieces = 0;
  ForPieces(20, 8, {}, [&](int, const Ask&) {
    const std::lock_guard<std::mutex> lock(mutex);
    workers.insert(std::this_thread::get_id());
    ++pieces;
  });
  EXPECT_EQ(pieces, 20);
  EXPECT_EQ(workers, std::set<std::thread::id>{std::this_thread::get_id()});
}

TEST(WorkMeter, AsksOnceForSoMuchWork) {
  int questions = 0;
  const Ask ask = [&questions] { ++questions; };
  kalmia::WorkMeter meter(ask, 10);
  for (int k = 0; k < 9; ++k) meter.Add(1);
  EXPECT_EQ(questions, 0);
  meter.Add(1);
  EXPECT_EQ(questions, 1);
  meter.Add(35);
  EXPECT_EQ(questions, 2);
  const Ask nobody;
  kalmia::WorkMeter(nobody, 1).Add(5);
}

TEST(ThreadsForLongWork, AreBoundedWhateverTheNumberOfProcessorsTold) {
  for (const int told : {-1, 0, 1, 3, 64}) {
    const Threads threads(told > 0 ? told : 1);
    ThreadingControl::SetNumberOfProcessors(told);
    EXPECT_EQ(kalmia::ThreadsForLongWork(), told > 0 ? told : 1);
  }
  ThreadingControl::SetNumberOfProcessors(2000000000);
  ThreadingControl::SetThreadingIsOn(true);
  EXPECT_GE(kalmia::ThreadsForLongWork(), 64);
  EXPECT_LE(kalmia::ThreadsForLongWork(), 65536);
  ThreadingControl::SetThreadingIsOn(false);
  EXPECT_EQ(kalmia::ThreadsForLongWork(), 1);
  ThreadingControl::Reset();
}

}  // namespace
