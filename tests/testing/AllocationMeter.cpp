#include "testing/AllocationMeter.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::int64_t> live{0};
std::atomic<std::int64_t> peak{0};
std::atomic<int> untilFailure{0};  ///< allocations up to the one that fails; 0 or less: none does

void RaisePeak(std::int64_t candidate) {
  std::int64_t known = peak.load(std::memory_order_relaxed);
  while (known < candidate && !peak.compare_exchange_weak(known, candidate, std::memory_order_relaxed)) {
  }
}

void* Counted(void* block) {
  if (block) {
    const auto bytes = static_cast<std::int64_t>(malloc_usable_size(block));
    RaisePeak(live.fetch_add(bytes, std::memory_order_relaxed) + bytes);
  }
  return block;
}

void* Allocate(std::size_t bytes, std::size_t alignment) {
  if (untilFailure.load(std::memory_order_relaxed) > 0 && untilFailure.fetch_sub(1) == 1) return nullptr;
  const std::size_t wanted = std::max<std::size_t>(bytes, 1);
  if (alignment <= alignof(std::max_align_t)) return Counted(std::malloc(wanted));
  return Counted(std::aligned_alloc(alignment, (wanted + alignment - 1) / alignment * alignment));
}

void* AllocateOrThrow(std::size_t bytes, std::size_t alignment) {
  void* block = Allocate(bytes, alignment);
  if (!block) throw std::bad_alloc();
  return block;
}

void Release(void* block) {
  if (!block) return;
  live.fetch_sub(static_cast<std::int64_t>(malloc_usable_size(block)), std::memory_order_relaxed);
  std::free(block);
}

constexpr std::size_t kPlain = alignof(std::max_align_t);

}  // namespace

void* operator new(std::size_t bytes) { return AllocateOrThrow(bytes, kPlain); }
void* operator new[](std::size_t bytes) { return AllocateOrThrow(bytes, kPlain); }
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return Allocate(bytes, kPlain); }
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept { return Allocate(bytes, kPlain); }
void* operator new(std::size_t bytes, std::align_val_t a) { return AllocateOrThrow(bytes, std::size_t(a)); }
void* operator new[](std::size_t bytes, std::align_val_t a) { return AllocateOrThrow(bytes, std::size_t(a)); }
void* operator new(std::size_t bytes, std::align_val_t a, const std::nothrow_t&) noexcept {
  return Allocate(bytes, std::size_t(a));
}
void* operator new[](std::size_t bytes, std::align_val_t a, const std::nothrow_t&) noexcept {
  return Allocate(bytes, std::size_t(a));
}
void operator delete(void* block) noexcept { Release(block); }
void operator delete[](void* block) noexcept { Release(block); }
void operator delete(void* block, std::size_t) noexcept { Release(block); }
void operator delete[](void* block, std::size_t) noexcept { Release(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { Release(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { Release(block); }
void operator delete(void* block, std::align_val_t) noexcept { Release(block); }
void operator delete[](void* block, std::align_val_t) noexcept { Release(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { Release(block); }
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept { Release(block); }
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept { Release(block); }
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept { Release(block); }

PeakBytesDuring::PeakBytesDuring() : start_(live.load()), outerPeak_(peak.exchange(start_)) {}

PeakBytesDuring::~PeakBytesDuring() { RaisePeak(outerPeak_); }

std::int64_t PeakBytesDuring::GetBytes() const { return peak.load() - start_; }

std::int64_t PeakBytesDuring::GetLiveBytes() const { return live.load() - start_; }

FailAllocation::FailAllocation(int which) { untilFailure = which; }

FailAllocation::~FailAllocation() { untilFailure = 0; }

bool FailAllocation::HasFailed() const { return untilFailure <= 0; }
