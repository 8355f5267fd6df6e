#include "kalmia/support/NCProgress.h"

#include <utility>

namespace {

/// Shows nothing and never asks to stop.
class SilentSink : public NCProgress::Sink {
 public:
  void SetRange(float, float) override {}
  bool SetValue(float) override { return true; }
  void SetText(const char*) override {}
  bool PushSubRange(float, float) override { return true; }
  bool PopSubRange() override { return true; }
  bool IsBreakPressed() override { return false; }
  bool NextSpin() override { return true; }
  void SpinDone() override {}
};

NCProgress::SinkFactory& Factory() {
  static NCProgress::SinkFactory factory;
  return factory;
}

/// Calls a copy, for a factory may set another one, which destroys it.
template <class... Arguments>
std::unique_ptr<NCProgress::Sink> FromFactory(Arguments... arguments) {
  const NCProgress::SinkFactory factory = Factory();
  return factory ? factory(arguments...) : nullptr;
}

std::unique_ptr<NCProgress::Sink> OrSilent(std::unique_ptr<NCProgress::Sink> sink) {
  return sink ? std::move(sink) : std::make_unique<SilentSink>();
}

}  // namespace

NCProgress::Sink::~Sink() = default;

NCProgress::NCProgress(const char* title, float from, float to, bool first, bool second, bool third, const char* text)
    : sink_(OrSilent(FromFactory(title, from, to, first, second, third, text))) {}

NCProgress::NCProgress(std::unique_ptr<Sink> sink) : sink_(OrSilent(std::move(sink))) {}

NCProgress::~NCProgress() = default;

void NCProgress::SetSinkFactory(SinkFactory factory) { Factory() = std::move(factory); }

void NCProgress::SetRange(float from, float to) { sink_->SetRange(from, to); }
bool NCProgress::SetValue(float value) { return sink_->SetValue(value); }
void NCProgress::SetText(const char* text) { sink_->SetText(text); }
bool NCProgress::PushSubRange(float from, float to) { return sink_->PushSubRange(from, to); }
bool NCProgress::PopSubRange() { return sink_->PopSubRange(); }
bool NCProgress::IsBreakPressed() { return sink_->IsBreakPressed(); }
bool NCProgress::NextSpin() { return sink_->NextSpin(); }
void NCProgress::SpinDone() { sink_->SpinDone(); }
