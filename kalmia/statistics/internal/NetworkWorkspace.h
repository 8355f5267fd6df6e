#pragma once

#include <cstddef>
#include <cstdint>

namespace kalmia {

/// Keeps the memory of a network within what its user told, in units of four bytes. Entries, the room that they grow in
/// and the allocator's part of each block may come to three eighths more than told; all else is small beside them.
class NetworkWorkspace {
 public:
  /// 0 units or fewer stand for 2^29, 2 GiB.
  explicit NetworkWorkspace(int units);

  /// Throws NCError where another partial table is one too many beside `count` of the same stage.
  void RequireNode(std::size_t count) const;
  /// Throws NCError where that much memory would be too much.
  void Take(std::size_t bytes);
  void Give(std::size_t bytes) { free_ += static_cast<std::int64_t>(bytes); }

  static constexpr std::size_t BlockBytes(std::size_t bytes) { return bytes + 16; }  ///< with an allocator's own part

 private:
  std::int64_t mostNodes_;
  std::int64_t free_;
};

}  // namespace kalmia
