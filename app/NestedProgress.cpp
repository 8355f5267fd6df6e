#include "app/NestedProgress.h"

#include <algorithm>

#include "app/DisplayText.h"
#include "app/Interrupt.h"

namespace kalmia::app {

namespace {

constexpr unsigned kPollsPerLook = 1U << 16;  ///< a poll comes with each comparison of a sort

}  // namespace

double NestedProgress::Level::ShareAt(double value) const {
  return from == to ? begin : begin + (end - begin) * (value - from) / (to - from);
}

bool NestedProgress::GoesOn() const { return !Interrupted(); }

/// A convergence may become worse, and a step may be shorter than the one before it was said to be.
void NestedProgress::FillUpTo(double share) {
  share_ = std::max(share_, share);
  line_->Show(text_, share_);
}

void NestedProgress::Begin(const std::string& text) {
  levels_ = {Level{0.0, 1.0, 0.0, 1.0}};
  share_ = 0.0;
  SetText(text.c_str());
}

void NestedProgress::SetRange(float from, float to) {
  GoesOn();
  levels_.back().from = from;
  levels_.back().to = to;
}

bool NestedProgress::SetValue(float value) {
  FillUpTo(levels_.back().ShareAt(value));
  return GoesOn();
}

void NestedProgress::SetText(const char* text) {
  GoesOn();
  text_ = OneLine(text);
  line_->ShowAtOnce(text_, share_);
}

bool NestedProgress::PushSubRange(float from, float to) {
  const Level& outer = levels_.back();
  const double begin = outer.ShareAt(from);
  levels_.push_back({0.0, 1.0, begin, outer.ShareAt(to)});
  FillUpTo(begin);
  return GoesOn();
}

bool NestedProgress::PopSubRange() {
  if (levels_.size() > 1) levels_.pop_back();
  return GoesOn();
}

/// Some steps say nothing but poll, and soon after their text is set, before it could be seen.
bool NestedProgress::IsBreakPressed() {
  if (++polls_ % kPollsPerLook == 0) line_->Show(text_, share_);
  return !GoesOn();
}

bool NestedProgress::NextSpin() { return GoesOn(); }

}  // namespace kalmia::app
