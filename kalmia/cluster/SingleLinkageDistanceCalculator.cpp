#include "kalmia/cluster/SingleLinkageDistanceCalculator.h"

#include <cstdint>
#include <numeric>
#include <utility>

#include "kalmia/cluster/internal/ClusterProgress.h"
#include "kalmia/cluster/internal/DistancesOnDisk.h"
#include "kalmia/cluster/internal/InitialDistances.h"

namespace DendroGram {

namespace {

constexpr std::int64_t kPairsPerQuestion = 65536;  ///< of one cluster that a merge passes over

}  // namespace

SingleLinkageDistanceCalculator::SingleLinkageDistanceCalculator() = default;
SingleLinkageDistanceCalculator::~SingleLinkageDistanceCalculator() = default;

SingleLinkageDistanceCalculator::SingleLinkageDistanceCalculator(const SingleLinkageDistanceCalculator& other)
    : ClusterDistanceCalculator(other) {
  *this = other;
}

SingleLinkageDistanceCalculator& SingleLinkageDistanceCalculator::operator=(
    const SingleLinkageDistanceCalculator& other) {
  if (this == &other) return *this;
  ask_ = other.ask_;
  distances_ = other.distances_;
  labels_ = other.megaDistances_ ? std::vector<int>() : other.labels_;
  megaDistances_.reset();
  return *this;
}

void SingleLinkageDistanceCalculator::Init(const NCDataMatrix<float>& data, NCProgress* progress) {
  labels_.resize(static_cast<std::size_t>(data.SizeRows()));
  std::iota(labels_.begin(), labels_.end(), 0);
  megaDistances_.reset();
  ask_ = kalmia::QuestionsTo(kalmia::ClusterProgress(progress));
  try {
    CalculateInitialDistances(data, progress, distances_, SquaredDifference, SquareRootOfDistance);
  } catch (const ClusterAllocationError&) {
    megaDistances_ = kalmia::DistancesOnDisk(data, progress);
  }
}

DistanceAndIndex SingleLinkageDistanceCalculator::TakeNearest() {
  if (megaDistances_) {
    const DistanceAndIndex nearest = megaDistances_->GetNearest();
    megaDistances_->RemoveNearest();
    return nearest;
  }
  if (distances_.empty()) throw NCError("Cluster analysis: there are no two clusters left to merge.");
  const DistanceAndIndex nearest = distances_.back();
  distances_.pop_back();
  return nearest;
}

float SingleLinkageDistanceCalculator::FindNearestAndMerge(int& i, int& j) {
  kalmia::WorkMeter pairs(ask_, kPairsPerQuestion);
  while (true) {
    pairs.Add(1);
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
