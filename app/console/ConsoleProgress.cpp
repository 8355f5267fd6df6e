#include "app/console/ConsoleProgress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <utility>

#include "app/console/Interrupt.h"
#include "kalmia/analysis/text/DisplayText.h"

namespace kalmia::app {

namespace {

constexpr std::size_t kBarWidth = 20;
constexpr std::size_t kUsualTerminalWidth = 80;
constexpr std::chrono::milliseconds kRedraw{50};
constexpr int kFew = 32;
constexpr unsigned kPollsPerLook = 1U << 16;  ///< a poll comes with each comparison of a sort
constexpr std::string_view kWipe = "\r\x1b[K";

std::size_t TerminalWidth() {
  winsize size = {};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualTerminalWidth;
  return size.ws_col;
}

/// A terminal that cannot be written to shows no bar; the work goes on.
void Draw(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
    if (written <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

std::string Bar(double share) {
  const double filled = std::clamp(std::isfinite(share) ? share : 0.0, 0.0, 1.0) * kBarWidth;
  std::string bar(kBarWidth, '.');
  std::fill_n(bar.begin(), static_cast<std::ptrdiff_t>(filled), '#');
  return "[" + bar + "] ";
}

}  // namespace

ProgressLine::ProgressLine(std::chrono::milliseconds moments)
    : onTerminal_(isatty(STDERR_FILENO) == 1), begin_(std::chrono::steady_clock::now() + moments) {}

ProgressLine::~ProgressLine() {
  if (drawn_) Draw(kWipe);
}

void ProgressLine::Show(const std::string& label, double share) {
  if (drawn_ && std::chrono::steady_clock::now() - lastDrawn_ < kRedraw) return;
  ShowAtOnce(label, share);
}

void ProgressLine::ShowAtOnce(const std::string& label, double share) {
  const auto now = std::chrono::steady_clock::now();
  if (!onTerminal_ || now < begin_) return;
  drawn_ = true;
  lastDrawn_ = now;
  const std::size_t room = TerminalWidth() - 1;  // a full line would make the terminal go on to the next one
  const std::string bar = Bar(share).substr(0, room);
  Draw(std::string(kWipe) + bar + ShortenedTo(room - bar.size(), label));
}

bool FewInASecond::IsOneOfThem() {
  const auto now = std::chrono::steady_clock::now();
  if (now - begin_ >= std::chrono::seconds(1)) {
    begin_ = now;
    count_ = 0;
  }
  return ++count_ <= kFew;
}

void ConsoleProgress::SetRange(float from, float to) {
  if (ranges_.IsOutermost()) {
    ranges_ = NestedRanges();
    isNew_ = true;
  }
  ranges_.SetRange(from, to);
}

bool ConsoleProgress::SetValue(float value) {
  ranges_.MoveTo(value);
  line_->Show(text_, ranges_.Share());
  return !Interrupted();
}

void ConsoleProgress::SetText(const char* text) {
  text_ = OneLine(text);
  FewInASecond& drawnAtOnce = std::exchange(isNew_, false) ? newBars_ : otherTexts_;
  if (drawnAtOnce.IsOneOfThem()) {
    line_->ShowAtOnce(text_, ranges_.Share());
  } else {
    line_->Show(text_, ranges_.Share());
  }
}

bool ConsoleProgress::PushSubRange(float from, float to) {
  ranges_.Push(from, to);
  line_->Show(text_, ranges_.Share());
  return !Interrupted();
}

bool ConsoleProgress::PopSubRange() {
  ranges_.Pop();
  return !Interrupted();
}

/// Some steps say nothing but poll, and soon after their text is set, before it could be seen.
bool ConsoleProgress::IsBreakPressed() {
  if (++polls_ % kPollsPerLook == 0) line_->Show(text_, ranges_.Share());
  return Interrupted();
}

bool ConsoleProgress::NextSpin() { return !Interrupted(); }

}  // namespace kalmia::app
