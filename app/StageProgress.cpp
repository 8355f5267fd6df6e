#include "app/StageProgress.h"

#include <memory>

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

bool StageProgress::GoesOn() const {
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
