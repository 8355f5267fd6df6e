#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "app/Analysis.h"
#include "kalmia/analysis/text/NestedRanges.h"
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

/// The first few in each second: a text a millisecond would keep a slow terminal busy.
class FewInASecond {
 public:
  bool IsOneOfThem();

 private:
  int count_ = 0;
  std::chrono::steady_clock::time_point begin_;  ///< of the second
};

/// The command's side of the library's progress objects: draws them on the line, ranges within ranges as one bar that
/// never goes back. A new range of the outermost level begins a new bar. The first texts of new bars in a second, and
/// the first others, are drawn at once. After Ctrl-C every answer is to stop.
class ConsoleProgress : public NCProgress::Sink {
 public:
  explicit ConsoleProgress(ProgressLine* line) : line_(line) {}

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
  std::string text_;
  NestedRanges ranges_;
  unsigned polls_ = 0;
  bool isNew_ = true;  ///< a bar without a text of its own yet
  FewInASecond newBars_;
  FewInASecond otherTexts_;
};

/// A bar on the terminal, as a command hands it to its work; without one in the first moments, if so wished.
class TerminalBar {
 public:
  explicit TerminalBar(std::chrono::milliseconds moments = {})
      : line_(moments), bar_(std::make_unique<ConsoleProgress>(&line_)) {}
  TerminalBar(const TerminalBar&) = delete;
  TerminalBar& operator=(const TerminalBar&) = delete;

  NCProgress* Get() { return &bar_; }

 private:
  ProgressLine line_;
  NCProgress bar_;
};

}  // namespace kalmia::app
