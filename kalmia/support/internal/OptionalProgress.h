#pragma once

#include "kalmia/support/NCError.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia {

/// Optional progress bar: without one nothing is shown and nobody asks to stop.
class OptionalProgress {
 public:
  explicit OptionalProgress(NCProgress* bar) : bar_(bar) {}

  bool IsThere() const { return bar_ != nullptr; }
  void SetRange(float from, float to) const {
    if (bar_) bar_->SetRange(from, to);
  }
  void SetText(const char* text) const {
    if (bar_) bar_->SetText(text);
  }
  // False: the user wants to stop.
  bool SetValue(float value) const { return !bar_ || bar_->SetValue(value); }
  bool PushSubRange(float from, float to) const { return !bar_ || bar_->PushSubRange(from, to); }
  bool PopSubRange() const { return !bar_ || bar_->PopSubRange(); }
  bool GoesOn() const { return !bar_ || !bar_->IsBreakPressed(); }

 private:
  NCProgress* bar_;
};

/// Optional progress bar; a stop request throws NCError.
class StoppableProgress {
 public:
  /// The text and the level of the error.
  StoppableProgress(NCProgress* bar, const char* stopped, NCError::Level level)
      : bar_(bar), stopped_(stopped), level_(level) {}

  bool IsThere() const { return bar_.IsThere(); }
  void SetRange(float from, float to) const { bar_.SetRange(from, to); }
  void SetText(const char* text) const { bar_.SetText(text); }
  void SetValue(float value) const { ThrowUnless(bar_.SetValue(value)); }
  void PushSubRange(float from, float to) const { ThrowUnless(bar_.PushSubRange(from, to)); }
  void PopSubRange() const { ThrowUnless(bar_.PopSubRange()); }
  void ThrowIfStopped() const { ThrowUnless(bar_.GoesOn()); }

 private:
  void ThrowUnless(bool goesOn) const {
    if (!goesOn) throw NCError(stopped_, level_);
  }

  OptionalProgress bar_;
  const char* stopped_;
  NCError::Level level_;
};

}  // namespace kalmia
