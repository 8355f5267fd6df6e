#pragma once

#include <cstddef>
#include <vector>

#include "kalmia/statistics/internal/NetworkWorkspace.h"

namespace kalmia {

/// Paths through a network from its start to one node, along which a product comes to the same.
struct Path {
  double past;   ///< ln of the product
  double count;  ///< how many there are; 0 in an empty slot of a table
};

/// The paths of one node, equal products (up to 1e-9 of the logarithm) counted together. A hash table with open
/// addressing: products arrive in no order, most of them again and again. Once all have arrived they are put in order.
/// Memory is taken from a workspace, before it is used, and not given back with the table: see GetBytes().
class PathTable {
 public:
  void Add(double past, double count, NetworkWorkspace* workspace);  ///< count > 0; not after Settle()
  void Prefetch(double past) const;  ///< for Add() soon: tables are often larger than the caches
  /// The paths by ascending past, without room for more; they stay where they are from now on.
  void Settle(NetworkWorkspace* workspace);
  const std::vector<Path>& GetSettled() const { return slots_; }
  std::size_t GetBytes() const { return BytesOf(slots_.capacity()); }

 private:
  static std::size_t BytesOf(std::size_t slots);
  void Grow(NetworkWorkspace* workspace);
  Path* FindSlot(double past);

  std::vector<Path> slots_;
  std::size_t size_ = 0;
};

}  // namespace kalmia
