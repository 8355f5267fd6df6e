// Room for another pair in a full block.
#include "kalmia/cluster/internal/WardPairList.h"

#include <algorithm>

using DendroGram::DistanceAndIndex;

namespace kalmia {

void WardPairList::DropGone(Place* place) {
  Block& block = blocks_[place->block];
  DistanceAndIndex* const pairs = Pairs(block);
  std::size_t kept = 0, inFront = 0;
  for (std::size_t k = 0; k < block.count; ++k) {
    if (k == place->count) inFront = kept;
    if (!IsGone(pairs[k])) pairs[kept++] = pairs[k];
  }
  place->count = place->count == block.count ? kept : inFront;
  block.count = kept;
}

/// Makes room at a place in a full block: by dropping pairs that are gone, else from the nearest neighbour that has
/// some, else by a split. So a list of full blocks is split at one block in 32 at most, until the new blocks are full.
void WardPairList::MakeRoom(Place* place, WorkMeter* meter) {
  meter->Add(kBlockSize);
  WriteDistances(&blocks_[place->block]);
  DropGone(place);
  if (blocks_[place->block].HasRoom()) return;
  const std::size_t target = NearestWithRoom(place->block);
  if (target == place->block) return Split(place);
  const std::size_t blocks = target > place->block ? target - place->block : place->block - target;
  meter->Add(static_cast<std::int64_t>(blocks * kBlockSize));
  target > place->block ? ShiftBehind(place, target) : ShiftInFront(place, target);
}

/// The block itself if there is none.
std::size_t WardPairList::NearestWithRoom(std::size_t block) const {
  for (std::size_t away = 1; away <= kNeighbours; ++away) {
    if (block + away < blocks_.size() && blocks_[block + away].HasRoom()) return block + away;
    if (away <= block && blocks_[block - away].HasRoom()) return block - away;
  }
  return block;
}

/// The last n pairs of a block become the first ones of the next.
void WardPairList::MoveToNext(std::size_t block, std::size_t n) {
  if (n == 0) return;
  Block &from = blocks_[block], &to = blocks_[block + 1];
  WriteDistances(&from);
  WriteDistances(&to);
  DistanceAndIndex* const pairs = Pairs(to);
  std::copy_backward(pairs, pairs + to.count, pairs + to.count + n);
  std::copy_n(Pairs(from) + from.count - n, n, pairs);
  from.count -= n;
  to.count += n;
  to.first = pairs[0].distance;
}

/// The first n pairs of a block become the last ones of that in front of it.
void WardPairList::MoveToPrevious(std::size_t block, std::size_t n) {
  if (n == 0) return;
  Block &from = blocks_[block], &to = blocks_[block - 1];
  WriteDistances(&from);
  WriteDistances(&to);
  DistanceAndIndex* const pairs = Pairs(from);
  std::copy_n(pairs, n, Pairs(to) + to.count);
  std::copy(pairs + n, pairs + from.count, pairs);
  from.count -= n;
  to.count += n;
  to.first = Pairs(to)[0].distance;
  from.first = pairs[0].distance;
}

/// Moves pairs from block to block up to one behind the place that has room; a place among them becomes the place in
/// front of the next block.
void WardPairList::ShiftBehind(Place* place, std::size_t target) {
  const std::size_t n = (kBlockSize - blocks_[target].count) / 2;
  for (std::size_t block = target - 1; block > place->block; --block) MoveToNext(block, n);
  const std::size_t behind = blocks_[place->block].count - place->count;
  MoveToNext(place->block, std::min(n, behind));
  if (behind < n) *place = {place->block + 1, 0};
}

/// The same towards the front.
void WardPairList::ShiftInFront(Place* place, std::size_t target) {
  const std::size_t n = (kBlockSize - blocks_[target].count) / 2;
  for (std::size_t block = target + 1; block < place->block; ++block) MoveToPrevious(block, n);
  const std::size_t inFront = place->count;
  MoveToPrevious(place->block, std::min(n, inFront));
  place->count -= std::min(n, inFront);
  if (inFront < n) *place = {place->block - 1, blocks_[place->block - 1].count};
}

/// Moves the second half of a block into a new one behind it; the place stays between the same two pairs.
void WardPairList::Split(Place* place) {
  Block behind = {NewSlice(), blocks_[place->block].count / 2, 0};
  Block& block = blocks_[place->block];
  block.count -= behind.count;
  const DistanceAndIndex* const moved = Pairs(block) + block.count;
  std::copy(moved, moved + behind.count, Pairs(behind));
  behind.first = moved->distance;
  blocks_.insert(blocks_.begin() + static_cast<std::ptrdiff_t>(place->block) + 1, behind);
  const std::size_t firstHalf = blocks_[place->block].count;
  if (place->count > firstHalf) *place = {place->block + 1, place->count - firstHalf};
}

}  // namespace kalmia
