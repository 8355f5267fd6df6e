#include "kalmia/containers/IntPool.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <vector>

namespace {

constexpr std::size_t kBytesAtLoad = 65536;
constexpr std::size_t kCellsAtLoad = kBytesAtLoad / sizeof(int);

/// Small, because a block may fall due while a stream is read, and the reader of a short one is held to 64 KiB: a block
/// takes 24, with the places for its cells.
constexpr std::size_t kCellsPerBlock = 2048;

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

  /// So many cells are there from now on.
  void Reserve(std::size_t cells) {
    const SpinGuard guard(lock_);
    while (blocks_.size() * kCellsPerBlock < cells) AddBlock();
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

/// The first cells are taken while the program loads, so that most programs never pay for any: not in time, nor in the
/// memory that a reader of small streams is held to.
[[maybe_unused]] const bool firstCellsAreThere = [] {
  ThePool().Reserve(kCellsAtLoad);
  return true;
}();

}  // namespace

int* IntPool::GetInt() { return ThePool().Get(); }

void IntPool::ReleaseInt(int* cell) { ThePool().Release(cell); }
