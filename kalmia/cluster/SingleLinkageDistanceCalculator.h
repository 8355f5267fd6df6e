#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "kalmia/cluster/ClusterDistanceCalculator.h"
#include "kalmia/support/Export.h"

namespace DendroGram {

class MegaDistances;

/// Single linkage: the distance of two clusters is that of their nearest two rows, the root of the sum of squared
/// differences, scaled from the m columns that both rows have to all K by the factor K / m under the root. The pairs
/// are walked by rising distance, so that the merges are those of a minimum spanning tree (Kruskal 1956, Proc. AMS 7,
/// 48-50). Heights never fall. Of equal distances that of the latest rows is taken first, in memory and on
/// disk.
/// Memory: 12 bytes for each pair of rows. Where that is not there the pairs go to temporary files, which are gone with
/// the calculator; the user is told through UserComm, and asked where the disk is too small.
/// Cost: the sort of the pairs; each merge is linear in the number of rows.
class KALMIA_EXPORT SingleLinkageDistanceCalculator : public ClusterDistanceCalculator {
 public:
  SingleLinkageDistanceCalculator();
  /// A copy has its own list; the copy of one whose pairs lie on disk has to be initialised first.
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
