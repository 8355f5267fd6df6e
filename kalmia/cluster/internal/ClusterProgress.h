#pragma once

#include "kalmia/support/WorkMeter.h"
#include "kalmia/support/internal/OptionalProgress.h"

namespace kalmia {

/// The bar of a cluster analysis, which may be absent. A stop request throws NCError.
class ClusterProgress : public StoppableProgress {
 public:
  explicit ClusterProgress(NCProgress* progress)
      : StoppableProgress(progress, "Cluster analysis aborted.", NCError::Level0) {}
};

/// Asks the bar, by a copy of it, whether the user wants to stop. Empty without a bar.
inline Ask QuestionsTo(const ClusterProgress& bar) {
  return bar.IsThere() ? Ask([bar] { bar.ThrowIfStopped(); }) : Ask();
}

}  // namespace kalmia
