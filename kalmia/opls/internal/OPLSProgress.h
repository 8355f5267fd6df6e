#pragma once

#include "kalmia/support/NCError.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia {

/// A bar that may be absent, and whose wish to stop becomes an NCError of level 2 with a text of its own.
class OPLSProgress {
 public:
  OPLSProgress(NCProgress* bar, const char* stopped) : bar_(bar), stopped_(stopped) {}

  void SetRange(float from, float to) const {
    if (bar_) bar_->SetRange(from, to);
  }
  void SetValue(float value) const { ThrowUnless(!bar_ || bar_->SetValue(value)); }
  void PushSubRange(float from, float to) const { ThrowUnless(!bar_ || bar_->PushSubRange(from, to)); }
  void PopSubRange() const { ThrowUnless(!bar_ || bar_->PopSubRange()); }
  void ThrowIfBreakPressed() const { ThrowUnless(!bar_ || !bar_->IsBreakPressed()); }

 private:
  void ThrowUnless(bool goOn) const {
    if (!goOn) throw NCError(stopped_, NCError::Level2);
  }

  NCProgress* bar_;
  const char* stopped_;
};

}  // namespace kalmia
