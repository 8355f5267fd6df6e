#pragma once

#include <cstdint>

namespace kalmia {

/// Number of pairs of so many rows.
inline std::int64_t PairCount(std::int64_t rows) { return rows * (rows - 1) / 2; }

constexpr std::uint64_t kBytesPerPair = 12;
/// Where many rows are equal or nearly so, up to a third of the pairs of a Ward list come to its end stale at once:
/// they are copied, and sorted by way of half as much.
constexpr std::uint64_t kBytesPerWardPair = 18;

/// The most bytes, nearly, that an analysis of a table of this size takes beside its list of pairs.
std::uint64_t BytesBesidePairs(int rows, int columns);

/// How many pairs of such a table may be held where so many bytes are available: what is beside them is set aside, and
/// a sixteenth of the rest, for what grows with the pairs or with time (the index of Ward's list, page tables, a buffer
/// for each temporary file, the needs of other programs).
std::uint64_t PairsThatFitIn(std::uint64_t availableBytes, int rows, int columns, std::uint64_t bytesPerPair);

/// How many pairs of such a table may be held in memory now; see SetMaximumPairsInMemory.
std::uint64_t PairsThatFit(int rows, int columns, std::uint64_t bytesPerPair = kBytesPerPair);

}  // namespace kalmia
