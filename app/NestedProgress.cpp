#include "app/NestedProgress.h"

#include "app/DisplayText.h"
#include "app/Interrupt.h"

namespace kalmia::app {

double NestedProgress::Level::ShareAt(double value) const {
  return from == to ? begin : begin + (end - begin) * (value - from) / (to - from);
}

void NestedProgress::SetRange(float from, float to) {
  levels_.back().from = from;
  levels_.back().to = to;
}

bool NestedProgress::SetValue(float value) {
  line_->Show(text_, levels_.back().ShareAt(value));
  return !Interrupted();
}

void NestedProgress::SetText(const char* text) {
  text_ = OneLine(text);
  line_->Show(text_, levels_.back().begin);
}

bool NestedProgress::PushSubRange(float from, float to) {
  const Level& outer = levels_.back();
  levels_.push_back({0.0, 1.0, outer.ShareAt(from), outer.ShareAt(to)});
  return !Interrupted();
}

bool NestedProgress::PopSubRange() {
  if (levels_.size() > 1) levels_.pop_back();
  return !Interrupted();
}

bool NestedProgress::IsBreakPressed() { return Interrupted(); }

bool NestedProgress::NextSpin() { return !Interrupted(); }

}  // namespace kalmia::app
