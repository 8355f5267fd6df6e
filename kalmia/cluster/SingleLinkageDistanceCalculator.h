#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "kalmia/cluster/ClusterDistanceCalculator.h"
#include "kalmia/support/Export.h"

namespace DendroGram {

class MegaDistances;

/// Single linkage: the distance of two clusters is the distance of their two nearest rows: the root of the sum of
/// squared differences over the m columns that both rows have, times K / m under the root for all K columns. Pairs are
/// taken by rising distance, so the merges are those of a minimum spanning tree (Kruskal 1956, Proc. AMS 7, 48-50).
/// Heights never fall. Of equal distances, in memory and on disk, the one of the latest rows comes first.
/// Memory: 12 bytes for each pair of rows. If memory lacks, the pairs go to temporary files, which the calculator
/// deletes; UserComm informs the user, and asks if the disk is too small.
/// Cost: the sort of the pairs; each merge is linear in the number of rows.
class KALMIA_EXPORT SingleLinkageDistanceCalculator : public ClusterDistanceCalculator {
 public:
  SingleLinkageDistanceCalculator();
  /// A copy has its own list. A copy of a calculator with pairs on disk must be initialised first.
  SingleLinkageDistanceCalculator(const SingleLinkageDistanceCalculator& other);
  SingleLinkageDistanceCalculator& operator=(const SingleLinkageDistanceCalculator& other);
  ~SingleLinkageDistanceCalculator() override;

  void Init(const NCDataMatrix<float>& data, NCProgress* progress) override;
  float FindNearestAndMerge(int& i, int& j) override;
  CString GetId() override;  ///< "SingleLinkageDistanceCalculator"

 private:
  DistanceAndIndex TakeNearest();

  std::function<void()> ask_;                ///< empty where there is no progress object
  std::vector<DistanceAndIndex> distances_;  ///< sorted by descending distance
  std::vector<int> labels_;                  ///< of each row the position of its cluster
  std::unique_ptr<MegaDistances> megaDistances_;  ///< the pairs where they do not fit in memory, else null
};

}  // namespace DendroGram
