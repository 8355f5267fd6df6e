#include "kalmia/cluster/internal/WardPairList.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "kalmia/cluster/internal/PairSort.h"

using DendroGram::DistanceAndIndex;

namespace kalmia {

namespace {

constexpr std::int64_t kPairsPerQuestion = 8192;

}  // namespace

WardPairList::WardPairList(std::vector<DistanceAndIndex>&& pairs, int rows) : numbers_(rows), pairs_(std::move(pairs)) {
  for (std::size_t slice = 0; slice < FirstSlices(); ++slice)
    blocks_.push_back({slice, kBlockSize, pairs_[slice * kBlockSize].distance});
  for (std::size_t k = FirstSlices() * kBlockSize; k < pairs_.size(); ++k) AppendTo(&blocks_, pairs_[k]);
}

DistanceAndIndex* WardPairList::Slice(std::size_t slice) {
  return slice < FirstSlices() ? pairs_.data() + slice * kBlockSize : added_[slice - FirstSlices()].data();
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

void WardPairList::RemoveGoneTail(WorkMeter* meter) {
  for (; !blocks_.empty() && IsGone(*Last()); RemoveLast()) meter->Add(1);
}

bool WardPairList::IsEmpty(const Ask& ask) {
  WorkMeter meter(ask, kPairsPerQuestion);
  RemoveGoneTail(&meter);
  return blocks_.empty();
}

DistanceAndIndex WardPairList::TakeLast() {
  const DistanceAndIndex last = *Last();
  RemoveLast();
  return last;
}

/// The stale pairs at the end, present numbers and distances in them, as sorted runs from the end towards the front.
/// Each run lies in slices that its pairs have left.
std::vector<WardPairList::Run> WardPairList::TakeStaleTail(const std::function<void(DistanceAndIndex*)>& update,
                                                           const Ask& ask) {
  WorkMeter meter(ask, kPairsPerQuestion);
  const auto hasStaleTail = [this, &meter] {
    RemoveGoneTail(&meter);
    return !blocks_.empty() && EndsStale();
  };
  std::vector<Run> runs;
  std::vector<DistanceAndIndex> pairs;
  while (hasStaleTail()) {
    pairs.clear();
    for (; pairs.size() < kRunSize && hasStaleTail(); RemoveLast())
      pairs.push_back({Last()->distance, numbers_.Latest(Last()->i), numbers_.Latest(Last()->j)});
    std::reverse(pairs.begin(), pairs.end());
    for (DistanceAndIndex& pair : pairs) {
      update(&pair);
      meter.Add(1);
    }
    std::stable_sort(pairs.begin(), pairs.end(), IsFartherPair);
    runs.push_back(StoreRun(pairs));
  }
  return runs;
}

WardPairList::Run WardPairList::StoreRun(const std::vector<DistanceAndIndex>& pairs) {
  Run run;
  for (; run.count < pairs.size(); run.count += std::min(kBlockSize, pairs.size() - run.count)) {
    run.slices.push_back(NewSlice());
    const auto from = pairs.begin() + static_cast<std::ptrdiff_t>(run.count);
    std::copy_n(from, std::min(kBlockSize, pairs.size() - run.count), Slice(run.slices.back()));
  }
  return run;
}

const DistanceAndIndex& WardPairList::LastOf(const Run& run) {
  return Slice(run.slices.back())[(run.count - 1) % kBlockSize];
}

void WardPairList::RemoveLastOf(Run* run) {
  if (--run->count % kBlockSize > 0) return;
  free_.push_back(run->slices.back());
  run->slices.pop_back();
}

/// The pairs of sorted runs from the nearest to the farthest, equal ones from that on which stood last in the list.
class WardPairList::RunsByDistance {
 public:
  RunsByDistance(WardPairList* list, std::vector<Run>* runs) : list_(list), runs_(runs) {
    for (std::size_t run = 0; run < runs->size(); ++run) Push(run);
  }
  bool IsEmpty() const { return heads_.empty(); }
  const DistanceAndIndex& Nearest() const { return heads_.front().pair; }
  void RemoveNearest() {
    std::pop_heap(heads_.begin(), heads_.end(), ComesLater);
    const std::size_t run = heads_.back().run;
    heads_.pop_back();
    list_->RemoveLastOf(&(*runs_)[run]);
    if ((*runs_)[run].count > 0) Push(run);
  }

 private:
  struct Head {
    DistanceAndIndex pair;
    std::size_t run;  ///< from the end of the list
  };
  static bool ComesLater(const Head& a, const Head& b) {
    if (IsFartherPair(a.pair, b.pair)) return true;
    return !IsFartherPair(b.pair, a.pair) && a.run > b.run;
  }
  void Push(std::size_t run) {
    heads_.push_back({list_->LastOf((*runs_)[run]), run});
    std::push_heap(heads_.begin(), heads_.end(), ComesLater);
  }

  WardPairList* list_;
  std::vector<Run>* runs_;
  std::vector<Head> heads_;
};

void WardPairList::AppendTo(std::vector<Block>* blocks, const DistanceAndIndex& pair) {
  if (blocks->empty() || blocks->back().count == kBlockSize) blocks->push_back({NewSlice(), 0, pair.distance});
  Block& block = blocks->back();
  Pairs(block)[block.count++] = pair;
}

/// Puts blocks with pairs by rising distance at the end of the list, turned round.
void WardPairList::AppendReversed(std::vector<Block>* blocks, WorkMeter* meter) {
  for (; !blocks->empty(); blocks->pop_back()) {
    meter->Add(static_cast<std::int64_t>(blocks->back().count));
    Block block = blocks->back();
    std::reverse(Pairs(block), Pairs(block) + block.count);
    block.first = Pairs(block)->distance;
    blocks_.push_back(block);
  }
}

void WardPairList::RepairTail(const std::function<void(DistanceAndIndex*)>& update, const Ask& ask) {
  std::vector<Run> runs = TakeStaleTail(update, ask);
  RunsByDistance tail(this, &runs);
  WorkMeter meter(ask, kPairsPerQuestion);
  const bool isWhole = blocks_.empty();
  const float limit = isWhole ? 0 : Last()->distance;
  std::vector<Block> nearest;
  for (; !tail.IsEmpty() && (isWhole || !IsFarther(tail.Nearest().distance, limit)); tail.RemoveNearest()) {
    AppendTo(&nearest, tail.Nearest());
    meter.Add(1);
  }
  if (!tail.IsEmpty()) {
    for (Place place = {blocks_.size() - 1, blocks_.back().count}; !tail.IsEmpty(); tail.RemoveNearest()) {
      place = Insert(tail.Nearest(), FindPlace(tail.Nearest().distance, place, &meter), &meter);
      meter.Add(1);
    }
  }
  AppendReversed(&nearest, &meter);
}

/// The place behind the last pair in front of `end` that is not stale and not nearer, or in front of it where it is
/// equally far. Of the stale pairs that are passed over the distances are lowered: whatever is not stale stays, and
/// distances still fall along the whole list when the pair is inserted.
WardPairList::Place WardPairList::FindPlace(float distance, Place end, WorkMeter* meter) {
  const auto firstBlock = blocks_.begin(), lastBlock = firstBlock + static_cast<std::ptrdiff_t>(end.block) + 1;
  const auto nearer = std::partition_point(firstBlock, lastBlock, [distance](const Block& block) {
    return !IsFarther(distance, block.first);
  });
  if (nearer == firstBlock) return {0, 0};
  Place place = {static_cast<std::size_t>(nearer - firstBlock) - 1, 0};
  const Block& cut = blocks_[place.block];
  const std::size_t count = place.block == end.block ? end.count : cut.count;
  const DistanceAndIndex* const pairs = Pairs(cut);
  const auto isNotNearer = [distance](const DistanceAndIndex& pair) { return !IsFarther(distance, pair.distance); };
  place.count = count;  // of a block that was passed: all of it stands where the first one does
  if (!cut.isPassed)
    place.count = static_cast<std::size_t>(std::partition_point(pairs, pairs + count, isNotNearer) - pairs);
  while ((place.count = PassStale(distance, place, meter)) == 0) {
    if (place.block == 0) return place;
    place = {place.block - 1, blocks_[place.block - 1].count};
  }
  if (!IsFarther(Pairs(blocks_[place.block])[place.count - 1].distance, distance)) --place.count;
  return place;
}

/// Lowers the distances of the stale pairs right in front of a place; returns how many of its block are left there.
std::size_t WardPairList::PassStale(float distance, Place place, WorkMeter* meter) {
  Block& block = blocks_[place.block];
  std::size_t left = block.isPassed ? 0 : place.count;
  for (DistanceAndIndex* const pairs = Pairs(block); left > 0 && IsStale(pairs[left - 1]); --left)
    pairs[left - 1].distance = distance;
  meter->Add(block.isPassed ? 1 : static_cast<std::int64_t>(place.count - left) + 1);
  if (left > 0 || place.count == 0) return left;
  block.first = distance;
  block.isPassed = place.count == block.count;
  return 0;
}

/// Returns the place in front of the pair.
WardPairList::Place WardPairList::Insert(const DistanceAndIndex& pair, Place place, WorkMeter* meter) {
  if (blocks_[place.block].count == kBlockSize) MakeRoom(&place, meter);
  Block& block = blocks_[place.block];
  WriteDistances(&block);
  DistanceAndIndex* const pairs = Pairs(block);
  std::copy_backward(pairs + place.count, pairs + block.count, pairs + block.count + 1);
  pairs[place.count] = pair;
  ++block.count;
  block.first = pairs[0].distance;
  return place;
}

/// To be done before a block that was passed gets pairs that do not stand where all of it stands.
void WardPairList::WriteDistances(Block* block) {
  if (!block->isPassed) return;
  DistanceAndIndex* const pairs = Pairs(*block);
  for (std::size_t k = 0; k < block->count; ++k) pairs[k].distance = block->first;
  block->isPassed = false;
}

}  // namespace kalmia
