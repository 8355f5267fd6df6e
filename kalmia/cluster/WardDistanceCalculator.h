#pragma once

#include <memory>

#include "kalmia/cluster/ClusterDistanceCalculator.h"
#include "kalmia/support/Export.h"

namespace DendroGram {

/// Ward's criterion: the distance of two clusters is the increase in the sum of squares within clusters that their
/// merge would bring, or its root. Source: Ward (1963), J. Am. Stat. Assoc. 58, 236-244.
///
/// Distances are updated lazily. The pairs are in a list sorted by distance. A merge marks the pairs of the merged
/// cluster as stale: they keep the places of the first cluster's pairs and are computed anew only at the end of the
/// list. This is not exact: a stale pair may be nearer than its place says. Of the rows (33,-24) (-40,-21) (-9,31)
/// (-5,-41) the second and the fourth merge at 812.5. Their distance to the first is then 2086.17, but its place is
/// that of 2669, so the first and the third merge next, at 2394.5. Heights may fall towards the root.
///
/// Missing: the first distance of two rows is the sum over their common columns times K over the number of these. After
/// a merge, the sum of squares of each column and cluster is scaled from the present cells to the size of the cluster;
/// a distance may then be slightly negative (its root is 0).
/// Memory: 12 bytes for each pair of rows, and up to 10 bytes for each cell of the table for the sums of clusters; Init
/// throws ClusterAllocationError if memory lacks. Cost: a stale distance takes one pass over the columns. A merge takes
/// the stale distances at the end of the list, and a pass over its rows for the sums of the merged cluster. After a
/// stop during a merge only another Init is allowed.
class KALMIA_EXPORT WardDistanceCalculator : public ClusterDistanceCalculator {
 public:
  enum DistanceType : int {
    DistanceIncrease = 0,      ///< the increase in the sum of squares
    DistanceRootIncrease = 1,  ///< its square root
  };

  /// For any other type Init makes no distances, and a merge throws NCError, which names the type.
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
