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

class Pool {
 public:
  int* Get() {
    const SpinGuard guard(lock_);
    if (free_.empty()) AddBlock();
    int* cell = free_.back();
    free_.pop_back();
    return cell;
  }

  void Release(int* cell) {
    const SpinGuard guard(lock_);
    free_.push_back(cell);  // room was made when the cell's block was: cannot throw
    if (closing_) FreeIfUnused();
  }

  /// The program ends. Vectors in static storage may outlive this call: the last one released frees the blocks.
  void Close() {
    const SpinGuard guard(lock_);
    closing_ = true;
    FreeIfUnused();
  }

 private:
  void AddBlock() {
    free_.reserve((blocks_.size() + 1) * kCellsPerBlock);
    blocks_.push_back(std::unique_ptr<int[]>(new int[kCellsPerBlock]));
    for (std::size_t i = 0; i < kCellsPerBlock; ++i) free_.push_back(&blocks_.back()[i]);
  }

  void FreeIfUnused() {
    if (free_.size() != blocks_.size() * kCellsPerBlock) return;
    std::vector<int*>().swap(free_);
    std::vector<std::unique_ptr<int[]>>().swap(blocks_);
  }

  SpinLock lock_;
  std::vector<std::unique_ptr<int[]>> blocks_;
  std::vector<int*> free_;  ///< a stack: what came back last goes out first
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

}  // namespace

int* IntPool::GetInt() { return ThePool().Get(); }

void IntPool::ReleaseInt(int* cell) { ThePool().Release(cell); }
