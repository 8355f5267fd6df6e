#pragma once

#include <vector>

#include "kalmia/cluster/ClusterDistanceCalculator.h"

namespace DendroGram {

/// Single linkage: the distance of two clusters is that of their nearest two rows, the root of the sum of squared
/// differences, scaled from the m columns that both rows have to all K by the factor K / m under the root. The pairs
/// are walked by rising distance, so that the merges are those of a minimum spanning tree (Kruskal 1956, Proc. AMS 7,
/// 48-50). Heights never fall. Which of several equal distances comes first is not defined.
/// Memory: 12 bytes for each pair of rows; Init throws ClusterAllocationError where it is not there.
/// Cost: the sort of the pairs; each merge is linear in the number of rows.
class SingleLinkageDistanceCalculator : public ClusterDistanceCalculator {
 public:
  void Init(const NCDataMatrix<float>& data, NCProgress* progress) override;
  float FindNearestAndMerge(int& i, int& j) override;
  CString GetId() override;  ///< "SingleLinkageDistanceCalculator"

 private:
  DistanceAndIndex TakeNearest();

  std::vector<DistanceAndIndex> distances_;  ///< sorted by descending distance
  std::vector<int> labels_;                  ///< of each row the position of its cluster
};

}  // namespace DendroGram
