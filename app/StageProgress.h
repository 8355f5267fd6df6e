#pragma once

#include <memory>
#include <string>
#include <vector>

#include "app/ConsoleProgress.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::app {

/// The command's side of a calculation that goes through stages: the text of each with a bar of the whole, nested
/// levels included. Ctrl-C leaves the calculation by a Failure (Stopped) from its next call.
class StageProgress : public NCProgress::Sink {
 public:
  explicit StageProgress(ProgressLine* line) : line_(line) {}

  void SetRange(float from, float to) override;
  bool SetValue(float value) override;
  void SetText(const char* text) override;
  bool PushSubRange(float from, float to) override;
  bool PopSubRange() override;
  bool IsBreakPressed() override;
  bool NextSpin() override;
  void SpinDone() override {}

 private:
  /// A level of the bar: its range, and the part of the whole that it moves through.
  struct Level {
    double from = 0.0;
    double to = 1.0;
    double begin = 0.0;
    double end = 1.0;

    double ShareAt(double value) const { return begin + (end - begin) * (value - from) / (to - from); }
  };

  ProgressLine* line_;
  std::string label_;
  double share_ = 0.0;
  std::vector<Level> levels_ = {{}};
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
