#include "kalmia/cluster/WardDistanceCalculator.h"

#include <cmath>
#include <utility>
#include <vector>

#include "kalmia/cluster/internal/ClusterProgress.h"
#include "kalmia/cluster/internal/InitialDistances.h"
#include "kalmia/cluster/internal/PairMemory.h"
#include "kalmia/cluster/internal/WardClusters.h"
#include "kalmia/cluster/internal/WardPairList.h"

namespace DendroGram {

/// What an analysis has made so far.
struct WardDistanceCalculator::State {
  kalmia::Ask ask;  ///< empty where there is no progress object
  kalmia::WardClusters clusters;
  kalmia::WardPairList distances;

  int PlaceOf(int number) const { return distances.Numbers().FirstRow(number); }
};

WardDistanceCalculator::WardDistanceCalculator(DistanceType type) : type_(type), state_(std::make_unique<State>()) {}

WardDistanceCalculator::WardDistanceCalculator(const WardDistanceCalculator& other)
    : ClusterDistanceCalculator(other), type_(other.type_), state_(std::make_unique<State>(*other.state_)) {}

WardDistanceCalculator& WardDistanceCalculator::operator=(const WardDistanceCalculator& other) {
  auto copy = std::make_unique<State>(*other.state_);
  type_ = other.type_;
  state_ = std::move(copy);
  return *this;
}

WardDistanceCalculator::~WardDistanceCalculator() = default;

void WardDistanceCalculator::Init(const NCDataMatrix<float>& data, NCProgress* progress) {
  *state_ = State();
  state_->ask = kalmia::QuestionsTo(kalmia::ClusterProgress(progress));
  std::vector<DistanceAndIndex> list;
  if (HasDistances())
    CalculateInitialDistances(data, progress, list, HalfSquaredDifference,
                              type_ == DistanceIncrease ? Unchanged : SquareRootOfDistance, kalmia::kNeedsOfWard);
  state_->distances = kalmia::WardPairList(std::move(list), data.SizeRows());
  state_->clusters = kalmia::WardClusters(data, state_->ask);
}

CString WardDistanceCalculator::GetId() {
  CString id;
  id.Format("WardDistanceCalculator%i", static_cast<int>(type_));
  return id;
}

/// Computes the stale distances at the end of the list anew and brings them to their places.
void WardDistanceCalculator::RepairTail() {
  const State& state = *state_;
  kalmia::WorkMeter cells(state.ask, kalmia::WardClusters::kCellsPerQuestion);
  const auto update = [this, &state, &cells](DistanceAndIndex* entry) {
    const float increase = state.clusters.Increase(state.PlaceOf(entry->i), state.PlaceOf(entry->j));
    entry->distance = type_ == DistanceRootIncrease ? std::sqrt(increase < 0 ? 0.0F : increase) : increase;
    cells.Add(state.clusters.Columns());
  };
  state_->distances.RepairTail(update, state.ask);
}

CString WardDistanceCalculator::NothingToMergeText() const {
  if (HasDistances()) return "Cluster analysis: there are no two clusters left to merge.";
  CString text;
  text.Format("Cluster analysis: %i is no type of Ward's distance.", static_cast<int>(type_));
  return text;
}

float WardDistanceCalculator::FindNearestAndMerge(int& i, int& j) {
  kalmia::WardPairList& distances = state_->distances;
  if (distances.IsEmpty(state_->ask)) throw NCError(NothingToMergeText());
  if (distances.EndsStale()) RepairTail();
  const DistanceAndIndex nearest = distances.TakeLast();
  i = distances.Numbers().Position(nearest.i);
  j = distances.Numbers().Position(nearest.j);
  state_->clusters.Merge(state_->PlaceOf(nearest.i), state_->PlaceOf(nearest.j), state_->ask);
  distances.Numbers().Merge(nearest.i, nearest.j);
  return nearest.distance;
}

}  // namespace DendroGram
