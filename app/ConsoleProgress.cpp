#include "app/ConsoleProgress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string_view>

#include "app/DisplayText.h"
#include "app/Interrupt.h"

namespace kalmia::app {

namespace {

constexpr std::size_t kBarWidth = 20;
constexpr std::size_t kUsualTerminalWidth = 80;
constexpr std::chrono::milliseconds kRedraw{50};
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

void ConsoleProgress::BeginFit(int component) { BeginFit("component " + std::to_string(component)); }

void ConsoleProgress::BeginFit(const std::string& label) {
  steps_ = 0;
  label_ = label;
  line_->Show(label_, 0.0);
}

void ConsoleProgress::BeginRounds(int component, int steps) {
  steps_ = steps;
  stepsBegun_ = 0;
  label_ = "component " + std::to_string(component);
}

void ConsoleProgress::SetRange(float from, float to) {
  from_ = from;
  to_ = to;
  if (steps_ > 0) StopIfInterrupted();
}

bool ConsoleProgress::SetValue(float value) {
  if (steps_ > 0) {
    StopIfInterrupted();  // the bar shows the rounds, not the iterations of one
    return true;
  }
  line_->Show(label_, (static_cast<double>(value) - from_) / (static_cast<double>(to_) - from_));
  return !Interrupted();
}

/// A cross-validation sets a text at the beginning of each step.
void ConsoleProgress::SetText(const char* text) {
  if (steps_ == 0) return;
  StopIfInterrupted();
  line_->Show(label_ + ": " + OneLine(text), static_cast<double>(stepsBegun_) / steps_);
  ++stepsBegun_;
}

bool ConsoleProgress::PushSubRange(float /*from*/, float /*to*/) { return !Interrupted(); }

bool ConsoleProgress::PopSubRange() { return !Interrupted(); }

bool ConsoleProgress::IsBreakPressed() { return Interrupted(); }

bool ConsoleProgress::NextSpin() { return !Interrupted(); }

}  // namespace kalmia::app
