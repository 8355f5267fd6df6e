#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "kalmia/cluster/ClusterDistanceCalculator.h"
#include "kalmia/cluster/internal/ClusterNumbers.h"
#include "kalmia/support/WorkMeter.h"

namespace kalmia {

/// The pairs of clusters by descending distance. A merge leaves the pairs of the two clusters where they are: those of
/// the later one are gone, those of the earlier one are stale, whatever distance they hold. Nothing is moved for it:
/// what a pair is shows in the numbers of its clusters, which are those at which its distance was computed. Distances
/// below 0 are stale from the start.
///
/// The distance of a stale pair says only where it stands: along the list distances never rise. So the place of a pair
/// is found by bisection, and since the list lies in blocks, no more than a block is moved for it, or a few where that
/// one is full. Stale pairs that are passed on the way stand at the place of what passed them; a block of nothing else
/// is passed as a whole the next time.
///
/// Beside the pairs it takes an index of one in 512, and where pairs go into full blocks up to a 32nd of the list;
/// while its end is repaired half a megabyte, and a block for each 32768 pairs that are.
class WardPairList {
 public:
  WardPairList() = default;
  /// `pairs` of so many rows, sorted; the list takes their storage.
  WardPairList(std::vector<DendroGram::DistanceAndIndex>&& pairs, int rows);

  ClusterNumbers& Numbers() { return numbers_; }
  const ClusterNumbers& Numbers() const { return numbers_; }
  /// Whether no pair is left; drops those at the end that are gone. To be called before any of the following three.
  bool IsEmpty(const Ask& ask = {});
  bool EndsStale() { return IsStale(*Last()); }
  DendroGram::DistanceAndIndex TakeLast();
  /// Repairs the stale pairs at the end: update(pair) is called for each, which has the present numbers of its clusters
  /// and is given its present distance. Those that are not farther than the last pair in front of them stay at the end,
  /// sorted, equal ones in the order in which they stood. The others go to their places: each behind the last pair that
  /// is not stale and not nearer, but in front of one that is equally far, so that it is taken later.
  /// It is done in runs of 32768 pairs, which are sorted one by one and merged; the list does not depend on the runs.
  /// Asks once for 8192 pairs at most, whether they are computed, moved, or passed on the way to a place. What is
  /// thrown leaves the list good for nothing.
  void RepairTail(const std::function<void(DendroGram::DistanceAndIndex* pair)>& update, const Ask& ask = {});

 private:
  static constexpr std::size_t kBlockSize = 512;
  static constexpr std::size_t kRunSize = 32768;
  static constexpr std::size_t kRoom = kBlockSize / 32;  ///< less is no room to speak of
  static constexpr std::size_t kNeighbours = 32;         ///< on each side, that a full block may get room from

  struct Block {
    std::size_t slice;  ///< which part of the storage
    std::size_t count;  ///< pairs in it
    float first;        ///< distance of the first one
    bool isPassed = false;  ///< all its pairs are stale and stand at `first`, whatever distances they hold
    bool HasRoom() const { return kBlockSize - count >= kRoom; }
  };
  /// Between two pairs: behind the first `count` of a block.
  struct Place {
    std::size_t block;
    std::size_t count;
  };

  /// Pairs that were taken out of the list, sorted by descending distance; full slices but for the last.
  struct Run {
    std::vector<std::size_t> slices;
    std::size_t count = 0;
  };
  class RunsByDistance;

  std::size_t FirstSlices() const { return pairs_.size() / kBlockSize; }
  DendroGram::DistanceAndIndex* Slice(std::size_t slice);
  DendroGram::DistanceAndIndex* Pairs(const Block& block) { return Slice(block.slice); }
  DendroGram::DistanceAndIndex* Last() { return Pairs(blocks_.back()) + blocks_.back().count - 1; }
  std::size_t NewSlice();
  void RemoveLast();
  void RemoveGoneTail(WorkMeter* meter);
  bool IsGone(const DendroGram::DistanceAndIndex& pair);
  bool IsStale(const DendroGram::DistanceAndIndex& pair) const;
  std::vector<Run> TakeStaleTail(const std::function<void(DendroGram::DistanceAndIndex* pair)>& update, const Ask& ask);
  Run StoreRun(const std::vector<DendroGram::DistanceAndIndex>& pairs);
  const DendroGram::DistanceAndIndex& LastOf(const Run& run);
  void RemoveLastOf(Run* run);
  void AppendTo(std::vector<Block>* blocks, const DendroGram::DistanceAndIndex& pair);
  void AppendReversed(std::vector<Block>* blocks, WorkMeter* meter);
  Place FindPlace(float distance, Place end, WorkMeter* meter);
  std::size_t PassStale(float distance, Place place, WorkMeter* meter);
  Place Insert(const DendroGram::DistanceAndIndex& pair, Place place, WorkMeter* meter);
  void WriteDistances(Block* block);
  void DropGone(Place* place);
  void MakeRoom(Place* place, WorkMeter* meter);
  std::size_t NearestWithRoom(std::size_t block) const;
  void MoveToNext(std::size_t block, std::size_t n);
  void MoveToPrevious(std::size_t block, std::size_t n);
  void ShiftBehind(Place* place, std::size_t target);
  void ShiftInFront(Place* place, std::size_t target);
  void Split(Place* place);

  ClusterNumbers numbers_;
  std::vector<DendroGram::DistanceAndIndex> pairs_;               ///< the first slices
  std::vector<std::vector<DendroGram::DistanceAndIndex>> added_;  ///< further ones
  std::vector<std::size_t> free_;                                 ///< slices that no block uses
  std::vector<Block> blocks_;                                     ///< from the farthest pairs to the nearest
};

}  // namespace kalmia
