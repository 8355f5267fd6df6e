#pragma once

#include "kalmia/support/NCError.h"
#include "kalmia/support/NCProgress.h"
#include "kalmia/support/WorkMeter.h"

namespace kalmia {

/// The bar of a cluster analysis, which may be absent. Whatever answers that the user wants to stop throws NCError
/// "Cluster analysis aborted.".
class StoppableProgress {
 public:
  explicit StoppableProgress(NCProgress* progress) : progress_(progress) {}

  explicit operator bool() const { return progress_ != nullptr; }
  void SetRange(float from, float to) const {
    if (progress_) progress_->SetRange(from, to);
  }
  void SetText(const char* text) const {
    if (progress_) progress_->SetText(text);
  }
  void SetValue(float value) const { GoOnIf(!progress_ || progress_->SetValue(value)); }
  void PushSubRange(float from, float to) const { GoOnIf(!progress_ || progress_->PushSubRange(from, to)); }
  void PopSubRange() const { GoOnIf(!progress_ || progress_->PopSubRange()); }
  void Poll() const { GoOnIf(!progress_ || !progress_->IsBreakPressed()); }

 private:
  static void GoOnIf(bool wanted) {
    if (!wanted) throw NCError("Cluster analysis aborted.");
  }

  NCProgress* progress_;
};

/// Polls of the bar, by a copy of it; nothing where there is none.
inline Ask QuestionsTo(const StoppableProgress& bar) {
  return bar ? Ask([bar] { bar.Poll(); }) : Ask();
}

}  // namespace kalmia
