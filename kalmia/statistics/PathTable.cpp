#include "kalmia/statistics/PathTable.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace kalmia {
namespace {

constexpr double kSamePast = 1e-9;
constexpr std::size_t kFirstSlots = 16;

/// Neighbouring values that straddle a border of the grid stay two paths, which costs time alone.
double OnGrid(double past) { return std::nearbyint(past / kSamePast); }

std::size_t HashOf(double gridded) {
  std::uint64_t bits;
  std::memcpy(&bits, &gridded, sizeof bits);
  bits *= 0x9E3779B97F4A7C15U;  // 2^64 / golden ratio
  return static_cast<std::size_t>(bits >> 32);
}

}  // namespace

Path* PathTable::FindSlot(double past) {
  const double gridded = OnGrid(past);
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = HashOf(gridded) & mask;
  while (slots_[slot].count != 0 && OnGrid(slots_[slot].past) != gridded) slot = (slot + 1) & mask;
  return &slots_[slot];
}

void PathTable::Add(double past, double count) {
  if (2 * size_ >= slots_.size()) Grow();
  Path* slot = FindSlot(past);
  if (slot->count == 0) {
    slot->past = past;
    ++size_;
  }
  slot->count += count;
}

void PathTable::Grow() {
  std::vector<Path> former(slots_.empty() ? kFirstSlots : 2 * slots_.size(), Path{0, 0});
  former.swap(slots_);
  for (const Path& path : former)
    if (path.count != 0) *FindSlot(path.past) = path;
}

std::vector<Path> PathTable::TakeSorted() {
  std::vector<Path> paths;
  paths.swap(slots_);
  const auto isEmpty = [](const Path& path) { return path.count == 0; };
  paths.erase(std::remove_if(paths.begin(), paths.end(), isEmpty), paths.end());
  std::sort(paths.begin(), paths.end(), [](const Path& a, const Path& b) { return a.past < b.past; });
  size_ = 0;
  return paths;
}

}  // namespace kalmia
