#include "kalmia/cluster/SingleLinkageDistanceCalculator.h"

#include <numeric>
#include <utility>

#include "kalmia/cluster/InitialDistances.h"

namespace DendroGram {

void SingleLinkageDistanceCalculator::Init(const NCDataMatrix<float>& data, NCProgress* progress) {
  labels_.resize(static_cast<std::size_t>(data.SizeRows()));
  std::iota(labels_.begin(), labels_.end(), 0);
  CalculateInitialDistances(data, progress, distances_, RowDistanceEuclidean);
}

DistanceAndIndex SingleLinkageDistanceCalculator::TakeNearest() {
  if (distances_.empty()) throw NCError("Cluster analysis: there are no two clusters left to merge.");
  const DistanceAndIndex nearest = distances_.back();
  distances_.pop_back();
  return nearest;
}

float SingleLinkageDistanceCalculator::FindNearestAndMerge(int& i, int& j) {
  while (true) {
    const DistanceAndIndex pair = TakeNearest();
    int low = labels_[static_cast<std::size_t>(pair.i) - 1], high = labels_[static_cast<std::size_t>(pair.j) - 1];
    if (low == high) continue;  // two rows of one cluster
    if (low > high) std::swap(low, high);
    for (int& label : labels_) {
      if (label == high) label = low;
      if (label > high) --label;
    }
    i = low;
    j = high;
    return pair.distance;
  }
}

CString SingleLinkageDistanceCalculator::GetId() { return "SingleLinkageDistanceCalculator"; }

}  // namespace DendroGram
