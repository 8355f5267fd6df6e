#pragma once

#include <cstdint>
#include <cstring>

#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

/// The number, or 0 unless it is to be kept; without a branch. No processor foresees where the missing cells of a table
/// lie, and a wrong guess costs more than several sums.
inline double KeptIf(bool keep, double number) {
  std::uint64_t bits;
  std::memcpy(&bits, &number, sizeof(bits));
  bits &= std::uint64_t{0} - static_cast<std::uint64_t>(keep);
  std::memcpy(&number, &bits, sizeof(bits));
  return number;
}

/// The cell, or 0 where it is missing, likewise.
inline float CellOrZero(float cell) {
  std::uint32_t bits, hole;
  std::memcpy(&bits, &cell, sizeof(bits));
  std::memcpy(&hole, &kMissingCell<float>, sizeof(hole));
  bits &= std::uint32_t{0} - static_cast<std::uint32_t>(bits != hole);
  std::memcpy(&cell, &bits, sizeof(bits));
  return cell;
}

}  // namespace kalmia::analysis
