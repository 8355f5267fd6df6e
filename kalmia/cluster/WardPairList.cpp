#include "kalmia/cluster/WardPairList.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "kalmia/cluster/PairSort.h"

using DendroGram::DistanceAndIndex;

namespace kalmia {

ClusterNumbers::ClusterNumbers(int rows)
    : next_(static_cast<std::size_t>(rows), kCurrent), firstRow_(next_.size()), position_(next_.size()) {
  std::iota(firstRow_.begin(), firstRow_.end(), 0);
  std::iota(position_.begin(), position_.end(), 0);
}

int ClusterNumbers::Latest(int number) {
  int latest = number;
  while (next_[Index(latest)] > 0) latest = next_[Index(latest)];
  while (number != latest) number = std::exchange(next_[Index(number)], latest);  // a shorter way for the next time
  return next_[Index(latest)] == kGone ? 0 : latest;
}

int ClusterNumbers::Merge(int a, int b) {
  next_.push_back(kCurrent);
  firstRow_.push_back(FirstRow(a));
  const int merged = static_cast<int>(next_.size());
  next_[Index(a)] = merged;
  next_[Index(b)] = kGone;
  for (std::size_t row = Index(FirstRow(b) + 1); row < position_.size(); ++row) --position_[row];
  return merged;
}

WardPairList::WardPairList(std::vector<DistanceAndIndex>&& pairs, int rows) : numbers_(rows), pairs_(std::move(pairs)) {
  for (std::size_t slice = 0; slice < FirstSlices(); ++slice)
    blocks_.push_back({slice, kBlockSize, pairs_[slice * kBlockSize].distance});
  for (std::size_t k = FirstSlices() * kBlockSize; k < pairs_.size(); ++k) Append(pairs_[k]);
}

DistanceAndIndex* WardPairList::Pairs(const Block& block) {
  return block.slice < FirstSlices() ? pairs_.data() + block.slice * kBlockSize
                                     : added_[block.slice - FirstSlices()].data();
}

std::size_t WardPairList::NewSlice() {
  if (free_.empty()) {
    added_.emplace_back(kBlockSize);
    return FirstSlices() + added_.size() - 1;
  }
  const std::size_t slice = free_.back();
  free_.pop_back();
  return slice;
}

bool WardPairList::IsGone(const DistanceAndIndex& pair) {
  if (numbers_.IsCurrent(pair.i) && numbers_.IsCurrent(pair.j)) return false;
  return numbers_.Latest(pair.i) == 0 || numbers_.Latest(pair.j) == 0;
}

bool WardPairList::IsStale(const DistanceAndIndex& pair) const {
  return pair.distance < 0 || !numbers_.IsCurrent(pair.i) || !numbers_.IsCurrent(pair.j);
}

void WardPairList::RemoveLast() {
  if (--blocks_.back().count > 0) return;
  free_.push_back(blocks_.back().slice);
  blocks_.pop_back();
}

bool WardPairList::IsEmpty() {
  while (!blocks_.empty() && IsGone(*Last())) RemoveLast();
  return blocks_.empty();
}

DistanceAndIndex WardPairList::TakeLast() {
  const DistanceAndIndex last = *Last();
  RemoveLast();
  return last;
}

/// How many pairs stand behind the last one that is neither stale nor gone, those that are gone left out.
std::size_t WardPairList::StaleTailSize() {
  std::size_t size = 0;
  for (auto block = blocks_.rbegin(); block != blocks_.rend(); ++block)
    for (std::size_t k = block->count; k > 0; --k) {
      const DistanceAndIndex& pair = Pairs(*block)[k - 1];
      if (IsGone(pair)) continue;
      if (!IsStale(pair)) return size;
      ++size;
    }
  return size;
}

std::vector<DistanceAndIndex> WardPairList::TakeStaleTail() {
  std::vector<DistanceAndIndex> tail;
  tail.reserve(StaleTailSize());  // not by doubling, since it may be a third of the list
  for (; !IsEmpty() && EndsStale(); RemoveLast())
    tail.push_back({Last()->distance, numbers_.Latest(Last()->i), numbers_.Latest(Last()->j)});
  std::reverse(tail.begin(), tail.end());
  return tail;
}

void WardPairList::Append(const DistanceAndIndex& pair) {
  if (blocks_.empty() || blocks_.back().count == kBlockSize) blocks_.push_back({NewSlice(), 0, pair.distance});
  Block& block = blocks_.back();
  Pairs(block)[block.count++] = pair;
}

void WardPairList::PutBack(const std::vector<DistanceAndIndex>& tail) {
  auto rest = tail.begin();
  if (!IsEmpty()) {
    const float limit = Last()->distance;
    rest = std::partition_point(tail.begin(), tail.end(), [limit](const DistanceAndIndex& pair) {
      return IsFarther(pair.distance, limit);
    });
    Place place = {blocks_.size() - 1, blocks_.back().count};
    for (auto pair = rest; pair != tail.begin();) {
      --pair;
      place = Insert(*pair, FindPlace(pair->distance, place));
    }
  }
  for (; rest != tail.end(); ++rest) Append(*rest);
}

/// The place behind the last pair in front of `end` that is not stale and not nearer, or in front of it where it is
/// equally far. Of the stale pairs that are passed over the distances are lowered: whatever is not stale stays, and
/// distances still fall along the whole list when the pair is inserted.
WardPairList::Place WardPairList::FindPlace(float distance, Place end) {
  const auto firstBlock = blocks_.begin(), lastBlock = firstBlock + static_cast<std::ptrdiff_t>(end.block) + 1;
  const auto nearer = std::partition_point(firstBlock, lastBlock, [distance](const Block& block) {
    return !IsFarther(distance, block.first);
  });
  if (nearer == firstBlock) return {0, 0};
  Place place = {static_cast<std::size_t>(nearer - firstBlock) - 1, 0};
  DistanceAndIndex* pairs = Pairs(blocks_[place.block]);
  DistanceAndIndex* const pairsEnd = pairs + (place.block == end.block ? end.count : blocks_[place.block].count);
  const auto behind = std::partition_point(pairs, pairsEnd, [distance](const DistanceAndIndex& pair) {
    return !IsFarther(distance, pair.distance);
  });
  for (place.count = static_cast<std::size_t>(behind - pairs);; --place.count) {
    if (place.count == 0) {
      if (place.block == 0) return place;
      place = {place.block - 1, blocks_[place.block - 1].count};
      pairs = Pairs(blocks_[place.block]);
    }
    DistanceAndIndex& pair = pairs[place.count - 1];
    if (!IsStale(pair)) break;
    pair.distance = distance;
    if (place.count == 1) blocks_[place.block].first = distance;
  }
  if (!IsFarther(pairs[place.count - 1].distance, distance)) --place.count;
  return place;
}

/// Returns the place in front of the pair.
WardPairList::Place WardPairList::Insert(const DistanceAndIndex& pair, Place place) {
  if (blocks_[place.block].count == kBlockSize) {
    DropGone(place);
    if (blocks_[place.block].count > kBlockSize * 3 / 4) Split(place);
  }
  Block& block = blocks_[place.block];
  DistanceAndIndex* const pairs = Pairs(block);
  std::copy_backward(pairs + place.count, pairs + block.count, pairs + block.count + 1);
  pairs[place.count] = pair;
  ++block.count;
  block.first = pairs[0].distance;
  return place;
}

void WardPairList::DropGone(Place& place) {
  Block& block = blocks_[place.block];
  DistanceAndIndex* const pairs = Pairs(block);
  std::size_t kept = 0, inFront = 0;
  for (std::size_t k = 0; k < block.count; ++k) {
    if (k == place.count) inFront = kept;
    if (!IsGone(pairs[k])) pairs[kept++] = pairs[k];
  }
  place.count = place.count == block.count ? kept : inFront;
  block.count = kept;
}

/// Moves the second half of a block into a new one behind it; the place stays between the same two pairs.
void WardPairList::Split(Place& place) {
  Block behind = {NewSlice(), blocks_[place.block].count / 2, 0};
  Block& block = blocks_[place.block];
  block.count -= behind.count;
  const DistanceAndIndex* const moved = Pairs(block) + block.count;
  std::copy(moved, moved + behind.count, Pairs(behind));
  behind.first = moved->distance;
  blocks_.insert(blocks_.begin() + static_cast<std::ptrdiff_t>(place.block) + 1, behind);
  const std::size_t firstHalf = blocks_[place.block].count;
  if (place.count > firstHalf) place = {place.block + 1, place.count - firstHalf};
}

}  // namespace kalmia
