#pragma once

#include <cstdint>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/CString.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCError.h"
#include "kalmia/support/NCProgress.h"

namespace DendroGram {

/// A pair of clusters, or of rows, and its distance; 12 bytes.
struct DistanceAndIndex {
  float distance;
  std::int32_t i;  ///< from 1
  std::int32_t j;  ///< from 1, above i
};

/// The list of all pairs finds no room in memory.
class KALMIA_EXPORT ClusterAllocationError : public NCError {
 public:
  explicit ClusterAllocationError(const char* message) : NCError(CString(message)) {}
  NCError* Clone() const override { return new ClusterAllocationError(*this); }
};

/// What "near" means, and with it the work of a cluster analysis: the strategy of one run of GetDendroGram. A copy has
/// its own state, but asks the progress object of Init too.
class KALMIA_EXPORT ClusterDistanceCalculator {
 public:
  virtual ~ClusterDistanceCalculator() = default;

  /// Makes ready for merging the rows of `data`, each a cluster of its own, at the positions 0, 1, ... Throws NCError
  /// where the user stops or the distances cannot be had. `progress` may be null; else it has to live as long as
  /// clusters are merged, since a merge may ask it too, and throws NCError then.
  virtual void Init(const NCDataMatrix<float>& data, NCProgress* progress) = 0;
  /// Merges the two nearest clusters: `i` and `j` become their positions, the merged one takes the lower position, and
  /// those behind the higher one move up. Returns their distance. NCError when fewer than two clusters are left.
  virtual float FindNearestAndMerge(int& i, int& j) = 0;
  /// What the distances are: a name for the calculator and its settings, part of the name of a cached tree.
  virtual CString GetId() = 0;

 protected:
  ClusterDistanceCalculator() = default;
  ClusterDistanceCalculator(const ClusterDistanceCalculator&) = default;
  ClusterDistanceCalculator& operator=(const ClusterDistanceCalculator&) = default;
};

/// Caps the list of pairs, 12 bytes each, for the whole process: one that has more pairs does not fit in memory. 0, the
/// default, leaves it to the machine: what it and the limits of a container have free. Not while an analysis runs.
KALMIA_EXPORT void SetMaximumPairsInMemory(std::uint64_t pairs);

}  // namespace DendroGram
