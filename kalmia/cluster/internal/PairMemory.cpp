#include "kalmia/cluster/internal/PairMemory.h"

#include <algorithm>

#include "kalmia/cluster/internal/StorageSettings.h"
#include "kalmia/kernels/simd/SquareSums.h"
#include "kalmia/support/AvailableMemory.h"

namespace kalmia {

namespace {

constexpr std::uint64_t kBytesPerRow = 400;                        // two nodes of the tree, a cluster, their blocks
constexpr std::uint64_t kBytesPerThread = std::uint64_t{1} << 20;  // keys of pairs that are sorted, a stack
constexpr int kRowsMore = simd::kTileRows;  // tiles are filled up; the sums of four rows at once are on their way

}  // namespace

std::uint64_t BytesBesidePairs(int rows, int columns, const MemoryNeeds& needs) {
  return (needs.perCell * static_cast<std::uint64_t>(columns) + kBytesPerRow) *
             static_cast<std::uint64_t>(rows + kRowsMore) +
         kBytesPerThread * static_cast<std::uint64_t>(ThreadsForLongWork());
}

std::uint64_t PairsThatFitIn(std::uint64_t availableBytes, int rows, int columns, const MemoryNeeds& needs) {
  const std::uint64_t left = availableBytes - std::min(availableBytes, BytesBesidePairs(rows, columns, needs));
  return (left - left / 16) / needs.perPair;
}

std::uint64_t PairsThatFit(int rows, int columns, const MemoryNeeds& needs) {
  const std::uint64_t fit = PairsThatFitIn(AvailableMemory(), rows, columns, needs);
  const std::uint64_t most = MaximumPairs();
  return most == 0 ? fit : std::min(fit, most);
}

}  // namespace kalmia
