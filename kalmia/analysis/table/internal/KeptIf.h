#pragma once

#include <cstdint>
#include <cstring>

#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

/// `keep` ? number : 0, without a branch: processors cannot predict where a table has holes, and a wrong guess costs
/// more than several sums.
inline double KeptIf(bool keep, double number) {
  std::uint64_t bits;
  std::memcpy(&bits, &number, sizeof(bits));
  bits &= std::uint64_t{0} - static_cast<std::uint64_t>(keep);
  std::memcpy(&number, &bits, sizeof(bits));
  return number;
}

/// The cell, or 0 where it is missing, also without a branch.
inline float CellOrZero(float cell) {
  std::uint32_t bits, hole;
  std::memcpy(&bits, &cell, sizeof(bits));
  std::memcpy(&hole, &kMissingCell<float>, sizeof(hole));
  bits &= std::uint32_t{0} - static_cast<std::uint32_t>(bits != hole);
  std::memcpy(&cell, &bits, sizeof(bits));
  return cell;
}

}  // namespace kalmia::analysis
