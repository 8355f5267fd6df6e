#include "kalmia/cluster/InitialDistances.h"

#include <algorithm>
#include <boost/thread.hpp>
#include <limits>

#include "kalmia/cluster/StoppableProgress.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/kernels/FirstFailure.h"
#include "kalmia/kernels/ThreadingControl.h"
#include "kalmia/support/AvailableMemory.h"

using kalmia::StoppableProgress;

namespace DendroGram {

namespace {

std::uint64_t maximumPairs = 0;  // 0: what the machine has free

CString NoMemoryText(int rows) {
  CString text;
  text.Format(
      "Memory allocation error.\nWhen doing cluster analysis, a total of N*(N-1)/2 initial distances are calculated. "
      "In this case, enough RAM to hold these distances could not be allocated (N=%u). ",
      static_cast<unsigned>(rows));
  return text;
}

template <ElementFunction element, FinishFunction finish>
float Distance(const float* a, const float* b, int columns) {
  constexpr float kHole = kalmia::kMissingCell<float>;
  double sum = 0;
  std::uint64_t common = 0;
  for (int c = 1; c <= columns; ++c) {
    if (a[c] == kHole || b[c] == kHole) continue;
    sum += static_cast<double>(element(a[c], b[c]));
    ++common;
  }
  return finish(static_cast<float>(sum * (columns / static_cast<double>(common))));
}

template <ElementFunction element, FinishFunction finish>
void RowDistances(const NCDataMatrix<float>& data, int a, int first, int last, DistanceAndIndex* pairs) {
  const float* const row = data[a].GetVector();
  for (int b = first; b <= last; ++b)
    *pairs++ = {Distance<element, finish>(row, data[b].GetVector(), data.SizeColumns()), a, b};
}

/// The pairs of the rows first to last with all later rows, on one thread.
struct InitDistancesThreadClass {
  RowDistance kind;
  const NCDataMatrix<float>& data;
  int first;
  int last;
  DistanceAndIndex* pairs;

  int operator()() const {
    DistanceAndIndex* at = pairs;
    for (int a = first; a <= last; ++a) {
      CalculateRowDistances(kind, data, a, a + 1, data.SizeRows(), at);
      at += data.SizeRows() - a;
    }
    return last - first + 1;
  }
};

/// Joins its threads at the end, whatever happens.
struct ThreadGroup : std::vector<boost::thread> {
  ~ThreadGroup() { Join(); }
  void Join() {
    for (boost::thread& thread : *this)
      if (thread.joinable()) thread.join();
  }
};

void FillList(const NCDataMatrix<float>& data, RowDistance kind, std::vector<DistanceAndIndex>& list) {
  using NCMultiThreading::ThreadingControl;
  const std::int64_t rows = data.SizeRows();
  const int processors = ThreadingControl::IsThreadingOn() ? ThreadingControl::GetNumberOfProcessors() : 1;
  const std::vector<int> ends = SplitRowsForThreads(std::max(1, processors), data.SizeRows());
  kalmia::FirstFailure failure;
  ThreadGroup threads;
  threads.reserve(ends.size());
  int first = 1;
  for (const int end : ends) {
    if (end <= first) continue;
    const std::int64_t offset = (first - 1) * rows - std::int64_t{first} * (first - 1) / 2;
    const InitDistancesThreadClass work = {kind, data, first, end - 1, list.data() + offset};
    if (end == ends.back())
      failure.Run(work);  // the calling thread takes the last share
    else
      threads.emplace_back([work, &failure] { failure.Run(work); });
    first = end;
  }
  threads.Join();
  failure.Rethrow();
}

}  // namespace

void SetMaximumPairsInMemory(std::uint64_t pairs) { maximumPairs = pairs; }

void CalculateRowDistances(RowDistance kind, const NCDataMatrix<float>& data, int a, int first, int last,
                           DistanceAndIndex* pairs) {
  if (kind == RowDistanceEuclidean)
    RowDistances<SquaredDifference, SquareRootOfDistance>(data, a, first, last, pairs);
  else if (kind == RowDistanceWard)
    RowDistances<HalfSquaredDifference, Unchanged>(data, a, first, last, pairs);
  else
    RowDistances<HalfSquaredDifference, SquareRootOfDistance>(data, a, first, last, pairs);
}

std::vector<int> SplitRowsForThreads(int threads, int rows) {
  const std::int64_t n = rows, total = kalmia::PairCount(n);
  const float b = static_cast<float>(2 * n - 1) / 2;
  std::vector<int> ends;
  std::int64_t done = 0, previous = 0;
  for (int left = threads; left > 0; --left) {
    const std::int64_t target = (total - done) / left + done;
    // Inverts the number of pairs of the first r rows.
    const float root = static_cast<float>(std::sqrt(static_cast<double>(b) * b - 2.0 * static_cast<double>(target)));
    const float r = b - root;
    std::int64_t v = static_cast<std::int64_t>(r + 0.5);
    if (v == previous) ++v;
    if (v + 1 >= n) break;
    ends.push_back(static_cast<int>(v + 1));
    previous = v;
    done = v * n - (v + 1) * v / 2;
  }
  ends.push_back(rows);
  return ends;
}

void CalculateInitialDistances(const NCDataMatrix<float>& data, NCProgress* progress,
                               std::vector<DistanceAndIndex>& list, RowDistance kind) {
  const StoppableProgress bar(progress);
  const int rows = data.SizeRows();
  // The number of pairs is told in 32 bits.
  if (rows > std::sqrt(4294967294.0)) throw NCError(NoMemoryText(rows));
  const std::int64_t count = kalmia::PairCount(rows);
  bar.SetRange(0, 3);
  bar.SetText("Allocating memory");
  list.clear();
  if (static_cast<std::uint64_t>(count) > kalmia::PairsThatFit()) throw ClusterAllocationError(NoMemoryText(rows));
  try {
    list.resize(static_cast<std::size_t>(count));
  } catch (const std::exception&) {
    throw ClusterAllocationError(NoMemoryText(rows));
  }
  CString text;
  text.Format("Calculating %u distances", static_cast<unsigned>(count));
  bar.SetText(text);
  bar.SetValue(1);
  FillList(data, kind, list);
  bar.SetValue(2);
  bar.SetText("Sorting");
  if (bar) {
    std::sort(list.begin(), list.end(), [&bar](const DistanceAndIndex& a, const DistanceAndIndex& b) {
      bar.Poll();
      return kalmia::IsFartherPair(a, b);
    });
  } else {
    std::sort(list.begin(), list.end(), kalmia::IsFartherPair);
  }
  bar.SetValue(3);
}

}  // namespace DendroGram

std::uint64_t kalmia::PairsThatFit() {
  const std::uint64_t fit = AvailableMemory() / sizeof(DendroGram::DistanceAndIndex);
  return DendroGram::maximumPairs == 0 ? fit : std::min(fit, DendroGram::maximumPairs);
}
