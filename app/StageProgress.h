#pragma once

#include "app/NestedProgress.h"

namespace kalmia::app {

/// The same for a calculation that does not take every answer as a stop: Ctrl-C leaves it by a Failure (Stopped) from
/// its next call.
class StageProgress : public NestedProgress {
 public:
  using NestedProgress::NestedProgress;

 protected:
  bool GoesOn() const override;
};

/// While it lives, every bar that the library opens itself is silent, and Ctrl-C leaves the calculation at its next
/// move by a Failure (Stopped).
class StoppableBars {
 public:
  StoppableBars();
  ~StoppableBars();
  StoppableBars(const StoppableBars&) = delete;
  StoppableBars& operator=(const StoppableBars&) = delete;
};

}  // namespace kalmia::app
