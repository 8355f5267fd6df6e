#include "app/StageProgress.h"

#include "app/DisplayText.h"
#include "app/Interrupt.h"

namespace kalmia::app {

namespace {

/// Shows nothing, and leaves on Ctrl-C.
class SilentBar : public NCProgress::Sink {
 public:
  void SetRange(float /*from*/, float /*to*/) override { StopIfInterrupted(); }
  bool SetValue(float /*value*/) override { return GoOn(); }
  void SetText(const char* /*text*/) override { StopIfInterrupted(); }
  bool PushSubRange(float /*from*/, float /*to*/) override { return GoOn(); }
  bool PopSubRange() override { return GoOn(); }
  bool IsBreakPressed() override { return !GoOn(); }
  bool NextSpin() override { return GoOn(); }
  void SpinDone() override {}

 private:
  static bool GoOn() {
    StopIfInterrupted();
    return true;
  }
};

}  // namespace

void StageProgress::SetRange(float from, float to) {
  StopIfInterrupted();
  levels_.back().from = static_cast<double>(from);
  levels_.back().to = static_cast<double>(to);
}

bool StageProgress::SetValue(float value) {
  StopIfInterrupted();
  share_ = levels_.back().ShareAt(static_cast<double>(value));
  line_->Show(label_, share_);
  return true;
}

void StageProgress::SetText(const char* text) {
  StopIfInterrupted();
  label_ = OneLine(text);
  line_->ShowAtOnce(label_, share_);
}

bool StageProgress::PushSubRange(float from, float to) {
  StopIfInterrupted();
  const Level& outer = levels_.back();
  const double begin = outer.ShareAt(static_cast<double>(from));
  const double end = outer.ShareAt(static_cast<double>(to));
  levels_.push_back({0.0, 1.0, begin, end});
  share_ = begin;
  return true;
}

bool StageProgress::PopSubRange() {
  StopIfInterrupted();
  if (levels_.size() > 1) levels_.pop_back();
  return true;
}

bool StageProgress::IsBreakPressed() {
  StopIfInterrupted();
  return false;
}

bool StageProgress::NextSpin() {
  StopIfInterrupted();
  return true;
}

StoppableBars::StoppableBars() {
  NCProgress::SetSinkFactory([](const char*, float, float, bool, bool, bool, const char*) {
    return std::unique_ptr<NCProgress::Sink>(std::make_unique<SilentBar>());
  });
}

StoppableBars::~StoppableBars() { NCProgress::SetSinkFactory({}); }

}  // namespace kalmia::app
