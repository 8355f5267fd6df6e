#pragma once

#include <cstdint>

/// The largest amount of memory, in bytes, that was held through operator new and not yet given back, above what was
/// held at the start of the scope. Counts all threads. A program that uses it gets counting operators new and delete,
/// built on malloc, so that the sanitizers go on seeing every block. Scopes may nest.
class PeakBytesDuring {
 public:
  PeakBytesDuring();
  ~PeakBytesDuring();
  PeakBytesDuring(const PeakBytesDuring&) = delete;
  PeakBytesDuring& operator=(const PeakBytesDuring&) = delete;

  std::int64_t GetBytes() const;      ///< the peak from the start of the scope until now
  std::int64_t GetLiveBytes() const;  ///< what is held now above the start: 0 when nothing leaks

 private:
  std::int64_t start_;
  std::int64_t outerPeak_;
};

/// In this scope one allocation through operator new fails: number `which`, from 1. The others go through.
class FailAllocation {
 public:
  explicit FailAllocation(int which);
  ~FailAllocation();
  FailAllocation(const FailAllocation&) = delete;
  FailAllocation& operator=(const FailAllocation&) = delete;

  bool HasFailed() const;  ///< false where there were not that many
};
