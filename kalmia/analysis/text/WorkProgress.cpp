#include "kalmia/analysis/text/WorkProgress.h"

#include <memory>

#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

[[noreturn]] void Stop() { throw Stopped("stopped"); }

}  // namespace

class WorkProgress::SilentSink : public NCProgress::Sink {
 public:
  explicit SilentSink(WorkProgress* work) : work_(work) {}

  void SetRange(float /*from*/, float /*to*/) override { work_->Ask(); }
  bool SetValue(float /*value*/) override { return GoOn(); }
  void SetText(const char* /*text*/) override { work_->Ask(); }
  bool PushSubRange(float /*from*/, float /*to*/) override { return GoOn(); }
  bool PopSubRange() override { return GoOn(); }
  bool IsBreakPressed() override { return !GoOn(); }
  bool NextSpin() override { return GoOn(); }
  void SpinDone() override {}

 protected:
  bool GoOn() {
    work_->Ask();
    return true;
  }

  WorkProgress* work_;
};

/// What is inside a round moves nothing.
class WorkProgress::ShownSink : public SilentSink {
 public:
  using SilentSink::SilentSink;

  void SetRange(float from, float to) override {
    work_->Ask();
    if (work_->rounds_ == 0) work_->ranges_.SetRange(from, to);
  }

  bool SetValue(float value) override {
    if (work_->rounds_ > 0) return GoOn();
    work_->ranges_.MoveTo(value);
    work_->Report();
    return true;
  }

  void SetText(const char* text) override { work_->SetText(text); }

  bool PushSubRange(float from, float to) override {
    if (work_->rounds_ > 0) return GoOn();
    work_->ranges_.Push(from, to);
    work_->Report();
    return true;
  }

  bool PopSubRange() override {
    if (work_->rounds_ == 0) work_->ranges_.Pop();
    return GoOn();
  }
};

WorkProgress::WorkProgress(NCProgress* callers)
    : callers_(callers), bar_(std::make_unique<ShownSink>(this)), silentBar_(std::make_unique<SilentSink>(this)) {}

void WorkProgress::Ask() {
  if (callers_ != nullptr && callers_->IsBreakPressed()) Stop();
}

void WorkProgress::BeginStep(const std::string& step, int rounds) {
  Ask();
  step_ = step;
  ranges_ = NestedRanges();
  rounds_ = rounds;
  roundsBegun_ = 0;
  if (callers_ != nullptr) callers_->SetRange(0.0F, 1.0F);
}

void WorkProgress::Begin(const std::string& step, double share) {
  BeginStep(step, /*rounds=*/0);
  MoveTo(share);
  if (callers_ != nullptr) callers_->SetText(step_.c_str());
}

void WorkProgress::BeginRounds(const std::string& step, int rounds) { BeginStep(step, rounds); }

void WorkProgress::MoveTo(double share) {
  ranges_.MoveTo(share);
  Report();
}

void WorkProgress::MoveToPart(int part, int parts) { MoveTo(static_cast<double>(part - 1) / parts); }

void WorkProgress::Report() {
  if (callers_ != nullptr && !callers_->SetValue(static_cast<float>(ranges_.Share()))) Stop();
}

void WorkProgress::SetText(const char* text) {
  Ask();
  std::string shown = OneLine(text);
  if (rounds_ > 0) {
    shown = step_ + ": " + shown;
    MoveToPart(++roundsBegun_, rounds_);
  }
  if (callers_ != nullptr) callers_->SetText(shown.c_str());
}

}  // namespace kalmia::analysis
