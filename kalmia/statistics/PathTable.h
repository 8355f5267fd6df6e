#pragma once

#include <cstddef>
#include <vector>

namespace kalmia {

/// Paths through a network from its start to one node, along which a product comes to the same.
struct Path {
  double past;   ///< ln of the product
  double count;  ///< how many there are; 0 in an empty slot of a table
};

/// The paths of one node, equal products (up to 1e-9 of the logarithm) counted together. A hash table with open
/// addressing: products arrive in no order, most of them again and again.
class PathTable {
 public:
  std::size_t Size() const { return size_; }
  void Add(double past, double count);  ///< count > 0
  /// All paths by ascending past; the table is empty afterwards.
  std::vector<Path> TakeSorted();

 private:
  void Grow();
  Path* FindSlot(double past);

  std::vector<Path> slots_;  ///< their number is 0 or a power of 2
  std::size_t size_ = 0;
};

}  // namespace kalmia
