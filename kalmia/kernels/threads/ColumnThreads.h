#pragma once

#include <boost/thread.hpp>
#include <numeric>
#include <utility>
#include <vector>

#include "kalmia/kernels/MatrixColumnVectorOperationThread.h"
#include "kalmia/kernels/ThreadingControl.h"
#include "kalmia/kernels/threads/FirstFailure.h"

namespace kalmia {

/// Splits columns 1 to n into the slices of ColumnSliceRange, one for each processor, and runs slice(first, last), both
/// included, on a thread of its own for each but the first, which the calling thread takes. Returns the sum of what the
/// slices return. Throws what a slice throws, and boost::thread_resource_error if a thread cannot be had; those that
/// run are waited for first.
template <class Slice>
int ForColumnThreads(int n, const Slice& slice) {
  NCMultiThreading::ColumnSliceRange range(1, n, NCMultiThreading::ThreadingControl::GetNumberOfProcessors());
  if (range.Empty()) return 0;
  std::vector<int> counts(range.GetNumSlices(), 0);
  FirstFailure failure;
  const auto work = [&slice, &failure](std::pair<int, int> columns, int* count) {
    *count = failure.Run([&] { return slice(columns.first, columns.second - 1); });
  };

  // Not a boost::thread_group: one that finds no memory to note a thread lets it run on, with nobody waiting for it.
  struct JoinedAtTheEnd : std::vector<boost::thread> {
    ~JoinedAtTheEnd() { Join(); }
    void Join() {
      for (boost::thread& thread : *this)
        if (thread.joinable()) thread.join();
    }
  } threads;
  threads.reserve(counts.size() - 1);
  const std::pair<int, int> mine = range.Next();
  for (std::size_t k = 1; !range.Empty(); ++k) {
    const std::pair<int, int> theirs = range.Next();
    threads.emplace_back([&work, theirs, count = &counts[k]] { work(theirs, count); });
  }
  work(mine, &counts[0]);
  threads.Join();
  failure.Rethrow();
  return std::accumulate(counts.begin(), counts.end(), 0);
}

}  // namespace kalmia
