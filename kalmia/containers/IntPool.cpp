#include "kalmia/containers/IntPool.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <vector>

namespace {

constexpr std::size_t kBlockBytes = 65536;
constexpr std::size_t kCellsPerBlock = kBlockBytes / sizeof(int);

/// One word: 0 is free, 1 is taken. For the few instructions of a pop or a push.
class SpinLock {
 public:
  void lock() {
    int expected = 0;
    while (!word_.compare_exchange_weak(expected, 1, std::memory_order_acquire)) expected = 0;
  }
  void unlock() { word_.store(0, std::memory_order_release); }

 private:
  std::atomic<int> word_{0};
};

class SpinGuard {
 public:
  explicit SpinGuard(SpinLock& lock) : lock_(lock) { lock_.lock(); }
  SpinGuard(const SpinGuard&) = delete;
  SpinGuard& operator=(const SpinGuard&) = delete;
  ~SpinGuard() { lock_.unlock(); }

 private:
  SpinLock& lock_;
};

/// The free cells are a stack: what came back last goes out first. It grows with the blocks, a piece of as many places
/// for each, so that a cell that comes back always has a place, and nothing is copied when a block is added.
class Pool {
 public:
  int* Get() {
    const SpinGuard guard(lock_);
    if (freeCells_ == 0) AddBlock();
    --freeCells_;
    return Top();
  }

  void Release(int* cell) {
    const SpinGuard guard(lock_);
    Push(cell);
    if (closing_) FreeIfUnused();
  }

  /// The program ends. Vectors in static storage may outlive this call: the last one released frees the blocks.
  void Close() {
    const SpinGuard guard(lock_);
    closing_ = true;
    FreeIfUnused();
  }

 private:
  struct Block {
    std::unique_ptr<int[]> cells{new int[kCellsPerBlock]};
    std::unique_ptr<int*[]> places{new int*[kCellsPerBlock]};
  };

  int*& Top() { return blocks_[freeCells_ / kCellsPerBlock].places[freeCells_ % kCellsPerBlock]; }

  void Push(int* cell) {
    Top() = cell;
    ++freeCells_;
  }

  void AddBlock() {
    blocks_.emplace_back();
    int* cells = blocks_.back().cells.get();
    for (std::size_t i = 0; i < kCellsPerBlock; ++i) Push(cells + i);
  }

  void FreeIfUnused() {
    if (freeCells_ != blocks_.size() * kCellsPerBlock) return;
    std::vector<Block>().swap(blocks_);
    freeCells_ = 0;
  }

  SpinLock lock_;
  std::vector<Block> blocks_;
  std::size_t freeCells_ = 0;
  bool closing_ = false;
};

/// Made at first use and never destroyed, only closed: a vector in static storage works before and after.
Pool& ThePool() {
  alignas(Pool) static unsigned char storage[sizeof(Pool)];
  static Pool& pool = *new (storage) Pool;
  static const struct Closer {
    ~Closer() { pool.Close(); }
  } closer;
  return pool;
}

/// The first block is taken while the program loads, so that no operation pays for it: not in time, nor in the memory
/// that a reader of small streams is held to.
[[maybe_unused]] const bool firstBlockIsThere = [] {
  Pool& pool = ThePool();
  pool.Release(pool.Get());
  return true;
}();

}  // namespace

int* IntPool::GetInt() { return ThePool().Get(); }

void IntPool::ReleaseInt(int* cell) { ThePool().Release(cell); }
