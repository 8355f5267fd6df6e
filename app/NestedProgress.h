#pragma once

#include <string>
#include <vector>

#include "app/ConsoleProgress.h"

namespace kalmia::app {

/// Progress of a calculation that shows its steps as ranges within ranges, each with a text of its own: one bar for all
/// of it, which never goes back, whatever the calculation says. On Ctrl-C the answer to all that it says or asks is to
/// stop.
class NestedProgress : public NCProgress::Sink {
 public:
  explicit NestedProgress(ProgressLine* line) : line_(line) {}

  /// A bar of its own for the calculation that comes now.
  void Begin(const std::string& text);

  void SetRange(float from, float to) override;
  bool SetValue(float value) override;
  void SetText(const char* text) override;
  bool PushSubRange(float from, float to) override;
  bool PopSubRange() override;
  bool IsBreakPressed() override;
  bool NextSpin() override;
  void SpinDone() override {}

 protected:
  /// What the calculation is told at each of its calls.
  virtual bool GoesOn() const;

 private:
  /// The range of one level, and the part of the bar that it fills.
  struct Level {
    double from, to;
    double begin, end;
    double ShareAt(double value) const;
  };

  void FillUpTo(double share);

  ProgressLine* line_;
  std::string text_;
  double share_ = 0.0;  ///< of the bar that is filled
  unsigned polls_ = 0;
  std::vector<Level> levels_ = {{0.0, 1.0, 0.0, 1.0}};
};

}  // namespace kalmia::app
