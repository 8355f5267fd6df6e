#pragma once

#include <memory>

#include "kalmia/cluster/ClusterDistanceCalculator.h"
#include "kalmia/support/Export.h"

namespace DendroGram {

/// Ward's criterion: the distance of two clusters is the increase in the sum of squares within clusters that their
/// merge would bring, or its root. Source: Ward (1963), J. Am. Stat. Assoc. 58, 236-244.
///
/// It is kept lazily. The pairs stand in a list sorted by distance; a merge marks the pairs of the merged cluster as
/// stale, which keep the places of the first cluster's pairs until they reach the end of the list, and are computed
/// anew only there. This is not exact: a pair with the merged cluster may be nearer than its place says. Of the rows
/// (33,-24) (-40,-21) (-9,31) (-5,-41) the second and the fourth merge at 812.5; the two and the first are then worth
/// 2086.17, but stand at the place of 2669, so the first and the third merge next, at 2394.5. Heights may fall towards
/// the root.
///
/// Missing: the first distance of two rows is their sum over the common columns times K over the number of those; once
/// a row was merged, the sum of squares of each column and cluster is scaled from the present cells to the size of the
/// cluster, and a distance may be slightly negative (its root is then 0).
/// Memory: 12 bytes for each pair of rows, and the sums of clusters, up to 10 bytes for each cell of the table; Init
/// throws ClusterAllocationError where that is not there. Cost: a stale distance costs
/// one pass over the columns; a merge those that have come to the end of the list, and one over its rows for the sums
/// of the merged cluster. A stop during a merge leaves the calculator good for another Init alone.
class KALMIA_EXPORT WardDistanceCalculator : public ClusterDistanceCalculator {
 public:
  enum DistanceType : int {
    DistanceIncrease = 0,      ///< the increase in the sum of squares
    DistanceRootIncrease = 1,  ///< its square root
  };

  /// Any other type has no distances: Init makes none, and a merge throws NCError, which names the type.
  explicit WardDistanceCalculator(DistanceType type);
  WardDistanceCalculator(const WardDistanceCalculator& other);
  WardDistanceCalculator& operator=(const WardDistanceCalculator& other);
  ~WardDistanceCalculator() override;

  void Init(const NCDataMatrix<float>& data, NCProgress* progress) override;
  float FindNearestAndMerge(int& i, int& j) override;
  CString GetId() override;  ///< "WardDistanceCalculator" and the number of the type

 private:
  struct State;

  void RepairTail();
  bool HasDistances() const { return type_ == DistanceIncrease || type_ == DistanceRootIncrease; }
  CString NothingToMergeText() const;

  DistanceType type_;
  std::unique_ptr<State> state_;
};

}  // namespace DendroGram
