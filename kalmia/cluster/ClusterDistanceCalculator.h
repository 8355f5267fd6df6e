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

/// The list of all pairs does not fit in memory.
class KALMIA_EXPORT ClusterAllocationError : public NCError {
 public:
  explicit ClusterAllocationError(const char* message) : NCError(CString(message)) {}
  NCError* Clone() const override { return new ClusterAllocationError(*this); }
};

/// The strategy of one run of GetDendroGram: it defines the distance of clusters and merges them. A copy has its own
/// state, but uses the same progress object.
class KALMIA_EXPORT ClusterDistanceCalculator {
 public:
  virtual ~ClusterDistanceCalculator() = default;

  /// Prepares merging the rows of `data`, each a cluster at the positions 0, 1, ... Throws NCError if the user stops or
  /// the distances cannot be computed. `progress` may be null; otherwise it must live until the last merge, which may
  /// ask it too and throws NCError on a stop request.
  virtual void Init(const NCDataMatrix<float>& data, NCProgress* progress) = 0;
  /// Merges the two nearest clusters and returns their distance. `i` and `j` become their positions; the merged cluster
  /// takes the lower one, and those after the higher one move up. NCError if fewer than two clusters are left.
  virtual float FindNearestAndMerge(int& i, int& j) = 0;
  /// A name for the kind of distances, with the settings; part of the name of a cached tree.
  virtual CString GetId() = 0;

 protected:
  ClusterDistanceCalculator() = default;
  ClusterDistanceCalculator(const ClusterDistanceCalculator&) = default;
  ClusterDistanceCalculator& operator=(const ClusterDistanceCalculator&) = default;
};

/// Limits the list of pairs, 12 bytes each, for the whole process: a longer list does not fit in memory. 0, the
/// default, means the free memory of the machine, within the limits of a container. Must not be called while an
/// analysis runs.
KALMIA_EXPORT void SetMaximumPairsInMemory(std::uint64_t pairs);

}  // namespace DendroGram
