#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kalmia/cluster/ClusterDistanceCalculator.h"
#include "kalmia/kernels/threads/StoppableTeam.h"

namespace kalmia {

/// Number of pairs of so many rows.
inline std::int64_t PairCount(std::int64_t rows) { return rows * (rows - 1) / 2; }

/// What an analysis takes: bytes for each pair of its list, and for each cell of its table beside the list.
struct MemoryNeeds {
  std::uint64_t perPair, perCell;
};

/// A list of pairs. The cells lie once more, as floats, in the tiles that distances are computed of.
constexpr MemoryNeeds kNeedsOfList{sizeof(DendroGram::DistanceAndIndex), sizeof(float)};
/// Ward's list. Beside the tiles there are the sums of the clusters of two rows or more: two doubles and a count for
/// two cells at least.
constexpr MemoryNeeds kNeedsOfWard{sizeof(DendroGram::DistanceAndIndex), 10};
/// A buffer for pairs that lie on disk, which is made when the tiles are there already.
constexpr MemoryNeeds kNeedsOfBuffer{sizeof(DendroGram::DistanceAndIndex), 0};

/// The most bytes, nearly, that an analysis of a table of this size takes beside its list of pairs. What threads take
/// is bounded, however many processors ThreadingControl was told of: see ThreadsForLongWork.
std::uint64_t BytesBesidePairs(int rows, int columns, const MemoryNeeds& needs);

/// How many pairs of such a table may be held where so many bytes are available: what is beside them is set aside, and
/// a sixteenth of the rest, for what grows with the pairs or with time. Half of the sixteenth is for the blocks that
/// Ward's list adds, up to a 32nd of it; the rest for that list's index, page tables, a buffer for each temporary file,
/// and the needs of other programs.
std::uint64_t PairsThatFitIn(std::uint64_t availableBytes, int rows, int columns, const MemoryNeeds& needs);

constexpr std::size_t kGrownAtOnce = 1 << 20;  ///< elements: some milliseconds of fresh pages

/// Fills a list up to so many elements, all zero, and asks once for some megabytes.
template <class Element>
void GrowTo(std::size_t size, const Ask& ask, std::vector<Element>* list) {
  list->reserve(size);
  while (list->size() < size) {
    list->resize(std::min(size, list->size() + kGrownAtOnce));
    if (ask && list->size() < size) ask();
  }
}

/// How many pairs of such a table may be held in memory now; see SetMaximumPairsInMemory.
std::uint64_t PairsThatFit(int rows, int columns, const MemoryNeeds& needs);

}  // namespace kalmia
