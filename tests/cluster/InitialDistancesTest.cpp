#include "kalmia/cluster/internal/InitialDistances.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>

#include "cluster/PlainClustering.h"
#include "cluster/Stops.h"
#include "kalmia/cluster/internal/PairMemory.h"
#include "kalmia/cluster/internal/PairSort.h"
#include "kalmia/kernels/ThreadingControl.h"
#include "testing/NoMoreThreads.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"
#include "testing/Threads.h"

namespace {

using DendroGram::ClusterAllocationError;
using DendroGram::DistanceAndIndex;
using Pairs = std::vector<DistanceAndIndex>;

/// What the calculators take.
struct Kind {
  DendroGram::ElementFunction element;
  DendroGram::FinishFunction finish;
};
constexpr Kind kEuclidean = {DendroGram::SquaredDifference, DendroGram::SquareRootOfDistance};
constexpr Kind kWard = {DendroGram::HalfSquaredDifference, DendroGram::Unchanged};
constexpr Kind kWardRoot = {DendroGram::HalfSquaredDifference, DendroGram::SquareRootOfDistance};
constexpr Kind kKinds[] = {kEuclidean, kWard, kWardRoot};

void Calculate(const NCDataMatrix<float>& table, NCProgress* progress, Pairs& pairs, const Kind& kind) {
  DendroGram::CalculateInitialDistances(table, progress, pairs, kind.element, kind.finish);
}

/// Caps the pairs for the length of a scope.
struct MaximumPairs {
  explicit MaximumPairs(std::uint64_t pairs) { DendroGram::SetMaximumPairsInMemory(pairs); }
  ~MaximumPairs() { DendroGram::SetMaximumPairsInMemory(0); }
};

TEST(InitialDistances, AreThoseOfEachPairByItself) {
  static_assert(sizeof(DistanceAndIndex) == 12, "the record of a pair");
  for (const double holes : {0.0, 0.02, 0.3})
    for (const int threads : {1, 2, 5}) {
      const Threads team(threads);
      const NCDataMatrix<float> table = RandomMatrix<float>(41, 9, holes, 4);
      for (const auto kind : kKinds) {
        Pairs pairs;
        Calculate(table, nullptr, pairs, kind);
        ASSERT_EQ(pairs.size(), 41U * 40 / 2);
        EXPECT_TRUE(std::is_sorted(pairs.begin(), pairs.end(), kalmia::ComesBefore));
        std::vector<bool> met(42 * 42, false);
        for (const DistanceAndIndex& pair : pairs) {
          ASSERT_LT(pair.i, pair.j);
          EXPECT_FALSE(met[static_cast<std::size_t>(42 * pair.i + pair.j)]);
          met[static_cast<std::size_t>(42 * pair.i + pair.j)] = true;
          EXPECT_EQ(pair.distance, PlainDistance(table, pair.i, pair.j, kind.element != kEuclidean.element,
                                                 kind.finish != kWard.finish));
        }
      }
    }
}

/// The distance of the first two rows, and of no others.
float DistanceOfTwo(const Kind& kind, const NCDataMatrix<float>& table) {
  DistanceAndIndex pair = {0, 0, 0};
  DistanceAndIndex* const end = DendroGram::RowDistances(table, kind.element, kind.finish).Calculate(1, 1, &pair);
  EXPECT_EQ(end, &pair + 1);
  EXPECT_EQ(pair.i, 1);
  EXPECT_EQ(pair.j, 2);
  return pair.distance;
}

float AbsoluteDifference(float a, float b) { return std::fabs(a - b); }
float Negative(float distance) { return -distance; }

TEST(InitialDistances, AreWhatAnyTwoFunctionsMakeOfTheColumns) {
  const float hole = kHole<float>;
  const NCDataMatrix<float> table = MatrixOf<float>({{1, 2}, {4, 7}, {hole, 4}});
  Pairs pairs;
  Calculate(table, nullptr, pairs, {AbsoluteDifference, Negative});  // 3 + 5; 2 * 2; 3 * 2
  ASSERT_EQ(pairs.size(), 3U);
  const DistanceAndIndex expected[] = {{-4, 1, 3}, {-6, 2, 3}, {-8, 1, 2}};
  for (int k = 0; k < 3; ++k) {
    EXPECT_EQ(pairs[k].distance, expected[k].distance);
    EXPECT_EQ(pairs[k].i, expected[k].i);
    EXPECT_EQ(pairs[k].j, expected[k].j);
  }
}

// The same function under another name is not known, and so computed pair by pair.
float SquaredDifferenceToo(float a, float b) { return DendroGram::SquaredDifference(a, b); }
float RootToo(float distance) { return std::sqrt(distance); }

TEST(InitialDistances, AreTheSameOneByOneAsManyTogether) {
  for (const double holes : {0.0, 0.2}) {
    const NCDataMatrix<float> table = RandomMatrix<float>(45, 7, holes, 11);
    Pairs together, finishedByOthers, oneByOne;
    Calculate(table, nullptr, together, kEuclidean);
    Calculate(table, nullptr, finishedByOthers, {DendroGram::SquaredDifference, RootToo});
    Calculate(table, nullptr, oneByOne, {SquaredDifferenceToo, RootToo});
    for (std::size_t k = 0; k < together.size(); ++k) {
      EXPECT_EQ(together[k].distance, oneByOne[k].distance);
      EXPECT_EQ(together[k].distance, finishedByOthers[k].distance);
      EXPECT_EQ(together[k].j, oneByOne[k].j);
    }
  }
}

TEST(InitialDistances, ScaleFromTheCommonColumnsToAll) {
  const float hole = kHole<float>;
  const NCDataMatrix<float> table = MatrixOf<float>({{1, 2, hole, 4}, {4, hole, 7, 8}});
  // Columns 1 and 4 of 4: 9 + 16, times 2.
  EXPECT_EQ(DistanceOfTwo(kWard, table), 25.0F);
  EXPECT_EQ(DistanceOfTwo(kEuclidean, table), std::sqrt(50.0F));
}

TEST(InitialDistances, OfRowsWithoutACommonColumnAreNoNumbers) {
  const float hole = kHole<float>;
  const NCDataMatrix<float> table = MatrixOf<float>({{1, hole}, {hole, 4}});
  for (const auto kind : kKinds) EXPECT_TRUE(std::isnan(DistanceOfTwo(kind, table)));
}

TEST(InitialDistances, EachSquareIsRoundedToFloatBeforeItIsAdded) {
  const NCDataMatrix<float> table = MatrixOf<float>({{4097, 4097}, {0, 0}});
  // 4097^2 = 16785409 has 25 bits and becomes 16785408; half of it ends in .5, which rounds to the even 8392704.
  EXPECT_EQ(DistanceOfTwo(kEuclidean, table), std::sqrt(33570816.0F));
  EXPECT_EQ(DistanceOfTwo(kWard, table), 16785408.0F);
}

TEST(InitialDistances, OfSeveralRowsComeOneRowBehindTheOther) {
  const NCDataMatrix<float> table = RandomMatrix<float>(37, 5, 0.1, 2);
  const DendroGram::RowDistances distances(table, kEuclidean.element, kEuclidean.finish);
  for (int a = 1; a < 37; ++a)
    for (int count = 1; count <= std::min(4, 37 - a); ++count) {
      Pairs pairs(4 * 36);
      const DistanceAndIndex* pair = pairs.data();
      const DistanceAndIndex* const end = distances.Calculate(a, count, pairs.data());
      for (int i = a; i < a + count; ++i)
        for (int j = i + 1; j <= 37; ++j, ++pair) {
          EXPECT_EQ(pair->i, i);
          EXPECT_EQ(pair->j, j);
          EXPECT_EQ(pair->distance, PlainDistance(table, i, j, false, true));
        }
      EXPECT_EQ(pair, end);
    }
}

TEST(SplitRowsForThreads, SharesThePairsAboutEqually) {
  for (const int rows : {2, 3, 10, 100, 1000, 65535})
    for (const int threads : {1, 2, 3, 8}) {
      const std::vector<int> ends = DendroGram::SplitRowsForThreads(threads, rows);
      ASSERT_EQ(ends.back(), rows);
      EXPECT_TRUE(std::is_sorted(ends.begin(), ends.end()));
      EXPECT_LE(ends.size(), static_cast<std::size_t>(threads) + 1);
      std::int64_t first = 1;
      for (const int end : ends) {
        const std::int64_t share = (end - first) * rows - (std::int64_t{end} * (end - 1) - first * (first - 1)) / 2;
        // Cut between whole rows: a share is off by at most a row at either end.
        EXPECT_LE(share, kalmia::PairCount(rows) / threads + 2 * rows);
        first = end;
      }
    }
  EXPECT_EQ(DendroGram::SplitRowsForThreads(4, 1), std::vector<int>({1}));
}

// b = 9.5, 45 pairs; first target 22, r = 9.5 - sqrt(90.25 - 44) = 2.69..., so rows 1 to 3 with 24 pairs come first.
TEST(SplitRowsForThreads, CutsTenRowsForTwoThreadsBehindTheThird) {
  EXPECT_EQ(DendroGram::SplitRowsForThreads(2, 10), std::vector<int>({4, 10}));
}

TEST(InitialDistances, ThatDoNotFitAreAnErrorOfTheirOwn) {
  const NCDataMatrix<float> table = RandomMatrix<float>(20, 2, 0, 1);
  Pairs pairs;
  {
    const MaximumPairs cap(189);
    try {
      Calculate(table, nullptr, pairs, kWard);
      ADD_FAILURE() << "190 pairs do not fit";
    } catch (const ClusterAllocationError& error) {
      EXPECT_EQ(error.GetMessage(),
                "Memory allocation error.\nWhen doing cluster analysis, a total of N*(N-1)/2 initial distances are "
                "calculated. In this case, enough RAM to hold these distances could not be allocated (N=20). ");
      const std::unique_ptr<NCError> clone(error.Clone());
      EXPECT_NE(dynamic_cast<ClusterAllocationError*>(clone.get()), nullptr);
    }
  }
  const MaximumPairs cap(190);
  Calculate(table, nullptr, pairs, kWard);
  EXPECT_EQ(pairs.size(), 190U);
}

TEST(InitialDistances, OfMoreThan65535RowsAreRefusedBeforeAnyProgress) {
  const NCDataMatrix<float> table(65536, 1, 1.0F);
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  Pairs pairs;
  try {
    Calculate(table, bar.get(), pairs, kWard);
    ADD_FAILURE() << "65536 rows";
  } catch (const ClusterAllocationError&) {
    ADD_FAILURE() << "an ordinary error, so that nothing goes over to the disk";
  } catch (const NCError& error) {
    EXPECT_EQ(error.GetMessage(),
              "Memory allocation error.\nWhen doing cluster analysis, a total of N*(N-1)/2 initial distances are "
              "calculated. In this case, enough RAM to hold these distances could not be allocated (N=65536). ");
  }
  EXPECT_TRUE(log.calls.empty());
}

TEST(InitialDistances, TellHowFarTheyAre) {
  const NCDataMatrix<float> table = MatrixOf<float>({{1}, {5}});
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  Pairs pairs;
  Calculate(table, bar.get(), pairs, kEuclidean);
  EXPECT_EQ(log.Joined(),
            "SetRange 0 3; SetText Allocating memory; SetText Calculating 1 distances; SetValue 1; SetValue 2; "
            "SetText Sorting; SetValue 3");  // a single pair is not compared
  log.calls.clear();
  Calculate(RandomMatrix<float>(9, 2, 0, 1), bar.get(), pairs, kEuclidean);
  // One for each comparison: to tell the 36! orders of as many distances apart takes log2(36!) = 138 of them.
  EXPECT_GE(log.Count("IsBreakPressed"), 138);
}

bool SameBits(const Pairs& a, const Pairs& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(DistanceAndIndex)) == 0;
}

TEST(InitialDistances, AreTheSameBitsForAnyNumberOfThreadsAskedOrNot) {
  for (const int rows : {60, 500}) {  // 124750 pairs are calculated in three shares, and sorted in two parts
    const NCDataMatrix<float> table = WholeNumbers(rows, 40, 2, 0.1, 1);
    Pairs first;
    Calculate(table, nullptr, first, kEuclidean);
    for (const int threads : {1, 2, 5}) {
      const Threads team(threads);
      ProgressLog log;
      const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
      Pairs silent, asked;
      Calculate(table, nullptr, silent, kEuclidean);
      Calculate(table, bar.get(), asked, kEuclidean);
      EXPECT_TRUE(SameBits(silent, first)) << threads;
      EXPECT_TRUE(SameBits(asked, first)) << threads;
    }
  }
}

TEST(InitialDistances, WithoutACommonColumnAreTheSameNaNAskedOrNot) {
  const NCDataMatrix<float> table = MatrixOf<float>({{1, kHole<float>}, {kHole<float>, 4}, {2, 3}});
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  Pairs silent, asked;
  Calculate(table, nullptr, silent, kEuclidean);
  Calculate(table, bar.get(), asked, kEuclidean);
  EXPECT_TRUE(SameBits(silent, asked));
}

/// A difference that counts how often it is taken.
std::atomic<int> differences{0};
float CountedDifference(float a, float b) {
  ++differences;
  return DendroGram::SquaredDifference(a, b);
}

TEST(InitialDistances, OfManyColumnsAreStoppedWhileTheyAreCalculated) {
  const NCDataMatrix<float> table = RandomMatrix<float>(300, 200, 0, 1);  // 44850 pairs, 9 million differences
  ProgressLog whole;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&whole);
  Pairs pairs;
  Calculate(table, bar.get(), pairs, {CountedDifference, DendroGram::SquareRootOfDistance});
  const int all = differences.exchange(0);
  EXPECT_EQ(all, 44850 * 200);
  const auto calculating = std::find(whole.calls.begin(), whole.calls.end(), "SetValue 1");
  ASSERT_NE(calculating, whole.calls.end());
  ASSERT_EQ(*(calculating + 1), "IsBreakPressed");
  ProgressLog log;
  log.stopAt = static_cast<int>(calculating - whole.calls.begin()) + 2;
  const std::unique_ptr<NCProgress> stopping = RecordingBar(&log);
  const Threads alone(1);  // others go on until their own next question
  try {
    Calculate(table, stopping.get(), pairs, {CountedDifference, DendroGram::SquareRootOfDistance});
    ADD_FAILURE() << "not stopped";
  } catch (const NCError& error) {
    EXPECT_EQ(error.GetMessage(), "Cluster analysis aborted.");
  }
  EXPECT_TRUE(EndsAtItsFirstRefusal(log));
  const std::int64_t untilTheFirstQuestion = DendroGram::RowDistances::kCellsPerQuestion;
  EXPECT_LE(differences.exchange(0), untilTheFirstQuestion + 200) << "the question comes after a pair";
}

TEST(InitialDistances, AskWhileTheTableIsLaidOutInTiles) {
  const NCDataMatrix<float> table(16, 300000, 1);
  int questions = 0;
  const DendroGram::RowDistances distances(table, kWard.element, kWard.finish, [&questions] { ++questions; });
  // 4.8 million cells are allocated in steps of 2^20, the last of which asks no more; 14 rows are 2 times 2^21 cells.
  EXPECT_EQ(questions, 4 + 2);
  questions = 0;
  const auto stop = [&questions] {
    ++questions;
    throw 1;
  };
  EXPECT_THROW(DendroGram::RowDistances(table, kWard.element, kWard.finish, stop), int);
  EXPECT_EQ(questions, 1);
}

TEST(InitialDistances, OfALongListMoveTheBarForwardOnly) {
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  Pairs pairs;
  Calculate(RandomMatrix<float>(800, 40, 0, 1), bar.get(), pairs, kEuclidean);  // 319600 pairs
  double last = 0;
  int moves = 0;
  for (const std::string& call : log.calls) {
    if (call.rfind("SetValue ", 0) != 0) continue;
    const double value = std::stod(call.substr(9));
    EXPECT_GE(value, last);
    last = value;
    ++moves;
  }
  EXPECT_EQ(last, 3);
  EXPECT_GT(moves, 50);
}

TEST(InitialDistances, WithoutThreadsAreMadeByTheCallingOne) {
  const NCDataMatrix<float> table = RandomMatrix<float>(500, 50, 0.05, 3);
  Pairs pairs, alone;
  Calculate(table, nullptr, pairs, kWard);
  const Threads team(8);
  const NoMoreThreads none;
  Calculate(table, nullptr, alone, kWard);
  EXPECT_TRUE(SameBits(alone, pairs));
}

TEST(InitialDistances, FitInMemoryWhateverTheNumberOfProcessorsTold) {
  using NCMultiThreading::ThreadingControl;
  ThreadingControl::SetNumberOfProcessors(2000000000);
  ThreadingControl::SetThreadingIsOn(true);
  Pairs pairs;
  EXPECT_NO_THROW(Calculate(RandomMatrix<float>(400, 3, 0, 1), nullptr, pairs, kWard));
  ThreadingControl::Reset();
  EXPECT_EQ(pairs.size(), 79800U);
}

TEST(InitialDistances, WithoutProcessorsAreMadeByOne) {
  NCMultiThreading::ThreadingControl::SetNumberOfProcessors(0);
  Pairs pairs;
  Calculate(RandomMatrix<float>(9, 2, 0, 1), nullptr, pairs, kWard);
  NCMultiThreading::ThreadingControl::Reset();
  EXPECT_EQ(pairs.size(), 36U);
}

}  // namespace
