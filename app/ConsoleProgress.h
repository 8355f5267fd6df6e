#pragma once

#include <chrono>
#include <string>

#include "kalmia/support/NCProgress.h"

namespace kalmia::app {

/// One line on standard error that shows how far the work is; wiped away at the end. Shows nothing where standard error
/// is no terminal, and nothing in the first moments, if so wished: for work that is mostly short.
class ProgressLine {
 public:
  explicit ProgressLine(std::chrono::milliseconds moments = {});
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  /// Draws the label and a bar filled by `share`, 0 to 1; at most some twenty times a second.
  void Show(const std::string& label, double share);
  /// Draws them at once: the beginning of something that may take long.
  void ShowAtOnce(const std::string& label, double share);

 private:
  bool onTerminal_;
  bool drawn_ = false;
  std::chrono::steady_clock::time_point begin_;
  std::chrono::steady_clock::time_point lastDrawn_;
};

/// The command's side of the library's progress objects: draws their bars on the line and hands Ctrl-C to the
/// calculation. While a component is fitted, a stop is the answer that the calculation asks for. A cross-validation
/// asks for none, or passes it over: it is left by a Failure (Stopped) thrown from its next call.
class ConsoleProgress : public NCProgress::Sink {
 public:
  explicit ConsoleProgress(ProgressLine* line) : line_(line) {}

  void BeginFit(int component);
  void BeginFit(const std::string& label);
  /// `steps` are the texts that the cross-validation sets.
  void BeginRounds(int component, int steps);

  void SetRange(float from, float to) override;
  bool SetValue(float value) override;
  void SetText(const char* text) override;
  bool PushSubRange(float from, float to) override;
  bool PopSubRange() override;
  bool IsBreakPressed() override;
  bool NextSpin() override;
  void SpinDone() override {}

 private:
  ProgressLine* line_;
  std::string label_;
  float from_ = 0.0F;
  float to_ = 1.0F;
  int steps_ = 0;  ///< of the cross-validation under way; 0 while a component is fitted
  int stepsBegun_ = 0;
};

}  // namespace kalmia::app
