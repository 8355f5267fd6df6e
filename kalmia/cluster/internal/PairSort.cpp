#include "kalmia/cluster/internal/PairSort.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <numeric>
#include <utility>
#include <vector>

#include "kalmia/kernels/simd/Fetch.h"
#include "kalmia/kernels/threads/StoppableTeam.h"

using DendroGram::DistanceAndIndex;

namespace kalmia {

namespace {

constexpr std::size_t kPairsAside = 32768;  ///< what is sorted outside of the list, in the second cache
constexpr std::size_t kMostCells = 4096;    ///< that pairs aside are counted into
constexpr std::size_t kMostBuckets = 512;   ///< of the list
constexpr std::size_t kPairsAhead = 8;      ///< more than a cache line
constexpr std::size_t kPairsPerQuestion = 8192;
constexpr std::int64_t kComparisonsPerQuestion = 65536;
constexpr std::size_t kPairsOfPart = 65536;  ///< about, that a thread takes at a time
constexpr std::size_t kMostParts = 256;
constexpr std::uint32_t kMostInKey = 0xFFFF;  ///< the largest row
constexpr std::uint32_t kSign = 0x80000000;
constexpr std::uint32_t kNaN = 0x7FC00000;

/// The bits of a distance, without -0, and of one NaN for all.
std::uint32_t BitsOf(float distance) {
  distance += 0.0F;
  std::uint32_t bits;
  std::memcpy(&bits, &distance, sizeof bits);
  return std::isnan(distance) ? kNaN : bits;
}

/// A number that rises in the order of ComesBefore: the bits of floats rise with them, once those of negative ones are
/// turned over and put below the others.
std::uint64_t KeyOf(const DistanceAndIndex& pair) {
  const std::uint32_t bits = BitsOf(pair.distance);
  const std::uint32_t rising = (bits & kSign) != 0 ? ~bits : bits | kSign;
  const std::uint32_t rows = static_cast<std::uint32_t>(pair.i) << 16 | static_cast<std::uint32_t>(pair.j);
  return std::uint64_t{~rising} << 32 | rows;
}

DistanceAndIndex PairOf(std::uint64_t key) {
  const std::uint32_t rising = ~static_cast<std::uint32_t>(key >> 32);
  const std::uint32_t bits = (rising & kSign) != 0 ? rising & ~kSign : ~rising;
  DistanceAndIndex pair = {0, static_cast<std::int32_t>(key >> 16 & 0xFFFF), static_cast<std::int32_t>(key & 0xFFFF)};
  std::memcpy(&pair.distance, &bits, sizeof bits);
  return pair;
}

/// Equal ranges of keys from the lowest to the highest one, `most` of them at most.
class KeyRanges {
 public:
  KeyRanges(std::uint64_t lowest, std::uint64_t highest, std::size_t most) : lowest_(lowest) {
    while ((highest - lowest) >> shift_ >= most) ++shift_;
    count_ = static_cast<std::size_t>((highest - lowest) >> shift_) + 1;
  }
  std::size_t Of(std::uint64_t key) const { return static_cast<std::size_t>((key - lowest_) >> shift_); }
  std::size_t Count() const { return count_; }

 private:
  std::uint64_t lowest_;
  int shift_ = 0;
  std::size_t count_;
};

/// From counts[range + 1] of each range to where it begins.
void SumUp(std::vector<std::size_t>& counts) { std::partial_sum(counts.begin(), counts.end(), counts.begin()); }

/// Calls step(first, end) for runs of kPairsPerQuestion positions, and asks after each.
template <class Step>
void ForRuns(std::size_t n, const Ask& ask, const Step& step) {
  for (std::size_t first = 0; first < n; first += kPairsPerQuestion) {
    step(first, std::min(n, first + kPairsPerQuestion));
    if (ask) ask();
  }
}

/// The lowest and the highest key.
struct KeyBounds {
  std::uint64_t lowest = std::numeric_limits<std::uint64_t>::max(), highest = 0;

  void Take(std::uint64_t key) {
    lowest = std::min(lowest, key);
    highest = std::max(highest, key);
  }
};

/// Sorts up to kPairsAside pairs by way of their keys.
class SorterAside {
 public:
  SorterAside() : keys_(kPairsAside), sorted_(kPairsAside) {}

  void operator()(DistanceAndIndex* pairs, std::size_t n, const Ask& ask) {
    if (n < 2) return;
    KeyBounds bounds;
    ForRuns(n, ask, [&](std::size_t first, std::size_t end) {
      for (std::size_t k = first; k < end; ++k) bounds.Take(keys_[k] = KeyOf(pairs[k]));
    });
    const KeyRanges cells(bounds.lowest, bounds.highest, std::min(kMostCells, n));
    begins_.assign(cells.Count() + 2, 0);
    for (std::size_t k = 0; k < n; ++k) ++begins_[cells.Of(keys_[k]) + 2];
    SumUp(begins_);
    ForRuns(n, ask, [&](std::size_t first, std::size_t end) {
      for (std::size_t k = first; k < end; ++k) sorted_[begins_[cells.Of(keys_[k]) + 1]++] = keys_[k];
    });
    SortCells(cells.Count(), ask);
    ForRuns(n, ask, [&](std::size_t first, std::size_t end) {
      for (std::size_t k = first; k < end; ++k) pairs[k] = PairOf(sorted_[k]);
    });
  }

 private:
  void SortCells(std::size_t cells, const Ask& ask) {
    std::int64_t comparisons = 0;
    WorkMeter meter(ask, kComparisonsPerQuestion);
    for (std::size_t cell = 0; cell < cells; ++cell) {
      if (begins_[cell + 1] - begins_[cell] < 2) continue;
      std::sort(sorted_.data() + begins_[cell], sorted_.data() + begins_[cell + 1],
                [&comparisons](std::uint64_t a, std::uint64_t b) {
                  ++comparisons;
                  return a < b;
                });
      meter.Add(std::exchange(comparisons, 0));
    }
  }

  std::vector<std::uint64_t> keys_, sorted_;
  std::vector<std::size_t> begins_;
};

KeyRanges BucketsFor(const DistanceAndIndex* pairs, std::size_t n, const Ask& ask) {
  KeyBounds bounds;
  ForRuns(n, ask, [&](std::size_t first, std::size_t end) {
    for (std::size_t k = first; k < end; ++k) bounds.Take(KeyOf(pairs[k]));
  });
  return KeyRanges(bounds.lowest, bounds.highest, std::min(kMostBuckets, n / kPairsAside * 8 + 2));
}

/// Brings each pair into its bucket; returns where the buckets begin, and n.
std::vector<std::size_t> DealOut(DistanceAndIndex* pairs, std::size_t n, const Ask& ask) {
  const KeyRanges buckets = BucketsFor(pairs, n, ask);
  std::vector<std::size_t> begins(buckets.Count() + 1, 0);
  ForRuns(n, ask, [&](std::size_t first, std::size_t end) {
    for (std::size_t k = first; k < end; ++k) ++begins[buckets.Of(KeyOf(pairs[k])) + 1];
  });
  SumUp(begins);
  std::vector<std::size_t> next(begins.begin(), begins.end() - 1);
  WorkMeter meter(ask, kPairsPerQuestion);
  for (std::size_t b = 0; b < buckets.Count(); ++b)
    while (next[b] < begins[b + 1]) {
      std::uint64_t key = KeyOf(pairs[next[b]]);
      for (std::size_t home = buckets.Of(key); home != b; home = buckets.Of(key)) {
        DistanceAndIndex& place = pairs[next[home]++];
        simd::Prefetch(pairs + std::min(next[home] + kPairsAhead, n - 1));
        const std::uint64_t turnedOut = KeyOf(place);
        place = PairOf(key);
        key = turnedOut;
        meter.Add(1);
      }
      pairs[next[b]++] = PairOf(key);
      meter.Add(1);
    }
  return begins;
}

/// Deals the pairs out until they can be sorted aside. Ends, since each bucket holds a smaller range of keys than the
/// whole.
void SortOnOneThread(DistanceAndIndex* pairs, std::size_t n, SorterAside& aside, const Ask& ask) {
  if (n <= kPairsAside) return aside(pairs, n, ask);
  const std::vector<std::size_t> begins = DealOut(pairs, n, ask);
  if (begins.size() == 2) return;  // all the same
  for (std::size_t b = 0; b + 1 < begins.size(); ++b)
    SortOnOneThread(pairs + begins[b], begins[b + 1] - begins[b], aside, ask);
}

/// Sorts a long list. Each part takes the buckets that begin in it; parts do not depend on the number of threads.
void SortByTeam(DistanceAndIndex* pairs, std::size_t n, const Ask& ask) {
  const std::vector<std::size_t> begins = DealOut(pairs, n, ask);
  const std::size_t parts = std::min(kMostParts, n / kPairsOfPart + 1);
  const auto bucketAt = [&](int part) {
    const std::size_t bound = n * static_cast<std::size_t>(part) / parts;
    return static_cast<std::size_t>(std::lower_bound(begins.begin(), begins.end() - 1, bound) - begins.begin());
  };
  ForPieces(static_cast<int>(parts), ThreadsForLongWork(), ask, [&](int part, const Ask& askToo) {
    SorterAside aside;
    for (std::size_t b = bucketAt(part), end = bucketAt(part + 1); b < end; ++b)
      SortOnOneThread(pairs + begins[b], begins[b + 1] - begins[b], aside, askToo);
  });
}

void SortByComparing(DistanceAndIndex* pairs, std::size_t n, const Ask& ask, std::int64_t comparisonsPerQuestion) {
  ForRuns(n, comparisonsPerQuestion > 1 ? ask : Ask(), [pairs](std::size_t first, std::size_t end) {
    for (std::size_t k = first; k < end; ++k) {
      const std::uint32_t bits = BitsOf(pairs[k].distance);
      std::memcpy(&pairs[k].distance, &bits, sizeof bits);
    }
  });
  WorkMeter meter(ask, comparisonsPerQuestion);
  std::sort(pairs, pairs + n, [&meter](const DistanceAndIndex& a, const DistanceAndIndex& b) {
    meter.Add(1);
    return ComesBefore(a, b);
  });
}

bool FitKeys(const DistanceAndIndex* pairs, std::size_t n, const Ask& ask) {
  std::uint32_t rows = 0;
  ForRuns(n, ask, [&](std::size_t first, std::size_t end) {
    for (std::size_t k = first; k < end; ++k)
      rows |= static_cast<std::uint32_t>(pairs[k].i) | static_cast<std::uint32_t>(pairs[k].j);
  });
  return rows <= kMostInKey;
}

}  // namespace

void SortPairs(DistanceAndIndex* pairs, std::size_t n, const Ask& ask) {
  if (n < 2) return SortByComparing(pairs, n, {}, kComparisonsPerQuestion);
  if (!FitKeys(pairs, n, ask)) return SortByComparing(pairs, n, ask, kComparisonsPerQuestion);
  if (n > kPairsAside) return SortByTeam(pairs, n, ask);
  SorterAside aside;
  aside(pairs, n, ask);
}

void SortListOfAnalysis(DistanceAndIndex* pairs, std::size_t n, const Ask& ask) {
  const bool oneByOne = ask && n <= kPairsAskedOneByOne;
  oneByOne ? SortByComparing(pairs, n, ask, 1) : SortPairs(pairs, n, ask);
}

}  // namespace kalmia
