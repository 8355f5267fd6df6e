#include "kalmia/cluster/PairSort.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <numeric>
#include <vector>

#include "kalmia/kernels/Slices.h"
#include "kalmia/kernels/Team.h"
#include "kalmia/kernels/simd/Fetch.h"

using DendroGram::DistanceAndIndex;

namespace kalmia {

namespace {

constexpr std::size_t kPairsAside = 32768;  ///< what is sorted outside of the list, in the second cache
constexpr std::size_t kMostCells = 4096;    ///< that pairs aside are counted into
constexpr std::size_t kMostBuckets = 512;   ///< of the list
constexpr std::size_t kPairsAhead = 8;      ///< more than a cache line
constexpr std::uint32_t kSign = 0x80000000;
constexpr std::uint32_t kNaN = 0x7FC00000;

/// A number that rises in the order of ComesBefore: the bits of floats rise with them, once those of negative ones are
/// turned over and put below the others.
std::uint64_t KeyOf(const DistanceAndIndex& pair) {
  const float distance = pair.distance + 0.0F;  // no -0
  std::uint32_t bits;
  std::memcpy(&bits, &distance, sizeof bits);
  bits = std::isnan(distance) ? kNaN : bits;
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

/// Sorts up to kPairsAside pairs by way of their keys.
class SorterAside {
 public:
  SorterAside() : keys_(kPairsAside), sorted_(kPairsAside) {}

  void operator()(DistanceAndIndex* pairs, std::size_t n) {
    if (n < 2) return;
    std::uint64_t lowest = std::numeric_limits<std::uint64_t>::max(), highest = 0;
    for (std::size_t k = 0; k < n; ++k) {
      const std::uint64_t key = keys_[k] = KeyOf(pairs[k]);
      lowest = std::min(lowest, key);
      highest = std::max(highest, key);
    }
    const KeyRanges cells(lowest, highest, std::min(kMostCells, n));
    begins_.assign(cells.Count() + 2, 0);
    for (std::size_t k = 0; k < n; ++k) ++begins_[cells.Of(keys_[k]) + 2];
    SumUp(begins_);
    for (std::size_t k = 0; k < n; ++k) sorted_[begins_[cells.Of(keys_[k]) + 1]++] = keys_[k];
    for (std::size_t cell = 0; cell < cells.Count(); ++cell) SortCell(begins_[cell], begins_[cell + 1]);
    for (std::size_t k = 0; k < n; ++k) pairs[k] = PairOf(sorted_[k]);
  }

 private:
  void SortCell(std::size_t begin, std::size_t end) {
    if (end - begin > 1) std::sort(sorted_.data() + begin, sorted_.data() + end);
  }

  std::vector<std::uint64_t> keys_, sorted_;
  std::vector<std::size_t> begins_;
};

KeyRanges BucketsFor(const DistanceAndIndex* pairs, std::size_t n) {
  std::uint64_t lowest = KeyOf(pairs[0]), highest = lowest;
  for (std::size_t k = 1; k < n; ++k) {
    const std::uint64_t key = KeyOf(pairs[k]);
    lowest = std::min(lowest, key);
    highest = std::max(highest, key);
  }
  return KeyRanges(lowest, highest, std::min(kMostBuckets, n / kPairsAside * 8 + 2));
}

/// Brings each pair into its bucket; returns where the buckets begin, and n.
std::vector<std::size_t> DealOut(DistanceAndIndex* pairs, std::size_t n) {
  const KeyRanges buckets = BucketsFor(pairs, n);
  std::vector<std::size_t> begins(buckets.Count() + 1, 0);
  for (std::size_t k = 0; k < n; ++k) ++begins[buckets.Of(KeyOf(pairs[k])) + 1];
  SumUp(begins);
  std::vector<std::size_t> next(begins.begin(), begins.end() - 1);
  for (std::size_t b = 0; b < buckets.Count(); ++b)
    while (next[b] < begins[b + 1]) {
      std::uint64_t key = KeyOf(pairs[next[b]]);
      for (std::size_t home = buckets.Of(key); home != b; home = buckets.Of(key)) {
        DistanceAndIndex& place = pairs[next[home]++];
        simd::FetchAhead(pairs + std::min(next[home] + kPairsAhead, n - 1));
        const std::uint64_t turnedOut = KeyOf(place);
        place = PairOf(key);
        key = turnedOut;
      }
      pairs[next[b]++] = PairOf(key);
    }
  return begins;
}

/// Deals the pairs out until sortFew(pairs, n) can take them. Ends, since each bucket holds a smaller range of keys
/// than the whole.
template <class SortFew>
void SortOnOneThread(DistanceAndIndex* pairs, std::size_t n, SortFew& sortFew) {
  if (n <= kPairsAside) return sortFew(pairs, n);
  const std::vector<std::size_t> begins = DealOut(pairs, n);
  if (begins.size() == 2) return;  // all the same
  for (std::size_t b = 0; b + 1 < begins.size(); ++b)
    SortOnOneThread(pairs + begins[b], begins[b + 1] - begins[b], sortFew);
}

}  // namespace

void SortPairs(DistanceAndIndex* pairs, std::size_t n) {
  const int team = n <= kPairsAside ? 1 : TeamSize(static_cast<std::int64_t>(n));
  if (team < 2) {
    SorterAside aside;
    return SortOnOneThread(pairs, n, aside);
  }
  const std::vector<std::size_t> begins = DealOut(pairs, n);
  // Each share takes the buckets that begin in its part of the list.
  ForSlices(team, team, 1, [&](int first, int last) {
    SorterAside aside;
    const auto bucketAt = [&](int share) {
      const std::size_t bound = n * static_cast<std::size_t>(share) / static_cast<std::size_t>(team);
      return static_cast<std::size_t>(std::lower_bound(begins.begin(), begins.end() - 1, bound) - begins.begin());
    };
    const std::size_t end = bucketAt(last);
    for (std::size_t b = bucketAt(first - 1); b < end; ++b)
      SortOnOneThread(pairs + begins[b], begins[b + 1] - begins[b], aside);
    return last - first + 1;
  });
}

void SortPairs(DistanceAndIndex* pairs, std::size_t n, const std::function<void()>& poll) {
  const auto sortFew = [&poll](DistanceAndIndex* some, std::size_t count) {
    std::sort(some, some + count, [&poll](const DistanceAndIndex& a, const DistanceAndIndex& b) {
      poll();
      return ComesBefore(a, b);
    });
  };
  SortOnOneThread(pairs, n, sortFew);
}

}  // namespace kalmia
