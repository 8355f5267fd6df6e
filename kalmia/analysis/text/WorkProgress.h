#pragma once

#include <string>

#include "kalmia/analysis/text/NestedRanges.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// How far a piece of work is, on the caller's bar, which may be null: then nothing is shown and nothing stops. The
/// work is one named step after the other. Each has the bar from 0 to 1, and never goes back on it.
///
/// Every call throws Stopped once the caller's bar wants to stop, and so does every call of the bars that it
/// hands to the library: some calculations ask for no answer, or pass it over, and are left by the exception.
class KALMIA_EXPORT WorkProgress {
 public:
  explicit WorkProgress(NCProgress* callers);
  WorkProgress(const WorkProgress&) = delete;
  WorkProgress& operator=(const WorkProgress&) = delete;

  /// The step that comes now, of which this share is done.
  void Begin(const std::string& step, double share = 0.0);
  /// A step of so many rounds, each of which sets a text on Bar(): shown behind the name of the step. The bar shows the
  /// rounds, and not what happens inside one.
  void BeginRounds(const std::string& step, int rounds);
  /// This share of the step is done.
  void MoveTo(double share);
  /// Of so many equal parts of the step this one, from 1, comes now.
  void MoveToPart(int part, int parts);
  /// Shows nothing, but looks whether to stop.
  void Ask();

  /// For a calculation of the library: its ranges and values move the bar of the step, and its texts take the place of
  /// the step's name.
  NCProgress* Bar() { return &bar_; }
  /// For one that is to show nothing.
  NCProgress* SilentBar() { return &silentBar_; }

 private:
  class ShownSink;
  class SilentSink;

  void BeginStep(const std::string& step, int rounds);
  void SetText(const char* text);
  void Report();

  NCProgress* callers_;
  std::string step_;
  NestedRanges ranges_;  ///< of the step
  int rounds_ = 0;       ///< of the step; 0 where its values and ranges are shown
  int roundsBegun_ = 0;
  NCProgress bar_;
  NCProgress silentBar_;
};

}  // namespace kalmia::analysis
