#include "kalmia/statistics/internal/PathTable.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "kalmia/kernels/simd/Fetch.h"

namespace kalmia {
namespace {

constexpr double kSamePast = 1e-9;
constexpr std::size_t kFirstSlots = 8;

/// To the nearest whole number. Adding 1.5 * 2^52 leaves no bits for a fraction, which is quicker than a call; beyond
/// 2^51 it would take more than the fraction.
double Rounded(double x) {
  constexpr double kNoFraction = 0x1.8p52;
  return std::fabs(x) < 0x1p51 ? x + kNoFraction - kNoFraction : std::nearbyint(x);
}

/// Neighbouring values that straddle a border of the grid stay two paths, which costs time alone.
double OnGrid(double past) { return Rounded(past / kSamePast); }

/// Whether `a` is on the point of the grid where `b` is. Most values are told by their distance alone, without a
/// division.
bool IsOnPointOf(double a, double b, double gridded) {
  return a == b || (std::fabs(a - b) < 2 * kSamePast + 0x1p-51 * std::fabs(a) && OnGrid(a) == gridded);
}

/// One of `slots` in the order of the hash: no power of 2 is needed.
std::size_t FirstSlot(double gridded, std::size_t slots) {
  std::uint64_t bits;
  std::memcpy(&bits, &gridded, sizeof bits);
  bits *= 0x9E3779B97F4A7C15U;  // 2^64 / golden ratio
  return static_cast<std::size_t>((bits >> 32) * slots >> 32);
}

}  // namespace

std::size_t PathTable::BytesOf(std::size_t slots) {
  return slots == 0 ? 0 : NetworkWorkspace::BlockBytes(slots * sizeof(Path));
}

void PathTable::Prefetch(double past) const {
  if (!slots_.empty()) simd::Prefetch(&slots_[FirstSlot(OnGrid(past), slots_.size())]);
}

Path* PathTable::FindSlot(double past) {
  const double gridded = OnGrid(past);
  std::size_t slot = FirstSlot(gridded, slots_.size());
  while (slots_[slot].count != 0 && !IsOnPointOf(slots_[slot].past, past, gridded))
    if (++slot == slots_.size()) slot = 0;
  return &slots_[slot];
}

void PathTable::Add(double past, double count, NetworkWorkspace* workspace) {
  if (4 * size_ >= 3 * slots_.size()) Grow(workspace);
  Path* slot = FindSlot(past);
  if (slot->count == 0) {
    slot->past = past;
    ++size_;
  }
  slot->count += count;
}

/// By half, so that slots left empty stay fewer than those filled.
void PathTable::Grow(NetworkWorkspace* workspace) {
  const std::size_t slots = slots_.empty() ? kFirstSlots : slots_.size() + slots_.size() / 2;
  const std::size_t formerBytes = GetBytes();
  workspace->Take(BytesOf(slots));
  std::vector<Path> former(slots, Path{0, 0});
  former.swap(slots_);
  for (const Path& path : former)
    if (path.count != 0) *FindSlot(path.past) = path;
  workspace->Give(formerBytes);
}

void PathTable::Settle(NetworkWorkspace* workspace) {
  if (slots_.empty()) return;
  workspace->Take(BytesOf(size_));
  const std::size_t formerBytes = GetBytes();
  std::vector<Path> settled;
  settled.reserve(size_);
  for (const Path& path : slots_)
    if (path.count != 0) settled.push_back(path);
  slots_.swap(settled);
  workspace->Give(formerBytes);
  std::sort(slots_.begin(), slots_.end(), [](const Path& a, const Path& b) { return a.past < b.past; });
}

}  // namespace kalmia
