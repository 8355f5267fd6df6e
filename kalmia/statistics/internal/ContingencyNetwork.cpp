#include "kalmia/statistics/internal/ContingencyNetwork.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>

namespace kalmia {
namespace {

constexpr double kTolerance = 1e-7;  ///< tables within this of the observed one's log probability count as equal
constexpr std::size_t kPathsAhead = 8;  ///< as many as hide a cache's delay; the exact number matters little

}  // namespace

ContingencyNetwork::ContingencyNetwork(const std::vector<int>& rows, const std::vector<int>& columns, double observed,
                                       const CochranConditions& conditions, int workspace)
    : columns_(columns),
      columnsEnd_(columns.size()),
      logFactorial_(std::accumulate(rows.begin(), rows.end(), 0)),
      bounds_(rows.size(), logFactorial_),
      conditions_(conditions),
      workspace_(workspace),
      observed_(observed),
      rows_(rows.size()),
      capacityFrom_(rows.size() + 1),
      placed_(rows.size()),
      rest_(rows) {
  std::int32_t multiplier = 1;
  for (const int margin : rows) {
    radix_.push_back(multiplier);
    multiplier *= margin + 1;
  }
  const PartialTable whole = RestOf(rows);
  wholeTotal_ = bounds_.GetTotal(whole);
  wholeLongest_ = bounds_.GetUpperBound(whole);
}

double ContingencyNetwork::Probability() {
  if (wholeLongest_ <= observed_ + kTolerance) return 1;
  Node start;
  start.paths.Add(0, 1, &workspace_);
  workspace_.Take(kNodeBytes + kFinderBytes);
  next_.emplace(KeyOf(rest_), std::move(start));
  while (ColumnsLeft() > 1) GoToNextStage();
  return std::min(probability_, 1.0);
}

/// A node is freed once it is expanded, so that a stage goes while the next one comes.
void ContingencyNetwork::GoToNextStage() {
  Stage current;
  current.swap(next_);
  const std::size_t finderBytes = current.size() * kFinderBytes;
  column_ = TakeColumn();
  for (auto& [key, node] : current) node.paths.Settle(&workspace_);
  for (auto at = current.begin(); at != current.end(); at = current.erase(at)) {
    PathTable& paths = at->second.paths;
    if (!paths.GetSettled().empty()) Expand(at->first, paths.GetSettled());
    workspace_.Give(paths.GetBytes() + kNodeBytes);
  }
  Stage().swap(current);
  workspace_.Give(finderBytes);
}

void ContingencyNetwork::Expand(std::int32_t key, const std::vector<Path>& paths) {
  const std::size_t weightBytes = NetworkWorkspace::BlockBytes((paths.size() + 1) * sizeof(double));
  workspace_.Take(weightBytes);
  paths_ = &paths;
  reference_ = paths.back().past;
  weightUpTo_.reserve(paths.size() + 1);
  weightUpTo_.push_back(0);
  for (const Path& path : paths)
    weightUpTo_.push_back(weightUpTo_.back() + path.count * std::exp(path.past - reference_));
  capacityFrom_.back() = 0;
  for (std::size_t i = rows_.size(); i > 0; --i) {
    rows_[i - 1] = key / radix_[i - 1];
    key %= radix_[i - 1];
    capacityFrom_[i - 1] = capacityFrom_[i] + rows_[i - 1];
  }
  PlaceRow(0, column_, 0, 1, 0, 0);
  std::vector<double>().swap(weightUpTo_);
  workspace_.Give(weightBytes);
}

/// Rows with equal margins form a group; only fillings that descend within a group are walked, each with the number of
/// its permutations, which builds up as a multinomial.
void ContingencyNetwork::PlaceRow(std::size_t row, int left, double product, double ways, int groupSize,
                                  int runLength) {
  if (row == rows_.size()) return Arrive(product, ways);
  const int margin = rows_[row];
  const bool inGroup = row > 0 && margin == rows_[row - 1];
  const int before = inGroup ? placed_[row - 1] : margin;
  groupSize = inGroup ? groupSize + 1 : 1;
  for (int x = std::max(0, left - capacityFrom_[row + 1]); x <= std::min(left, before); ++x) {
    placed_[row] = x;
    const int run = inGroup && x == before ? runLength + 1 : 1;
    PlaceRow(row + 1, left - x, product - logFactorial_[x], ways * groupSize / run, groupSize, run);
  }
}

void ContingencyNetwork::Arrive(double product, double ways) {
  for (std::size_t i = 0; i < rest_.size(); ++i) rest_[i] = rows_[i] - placed_[i];
  std::sort(rest_.begin(), rest_.end(), std::greater<>());
  const double limit = observed_ + kTolerance - product;
  if (ColumnsLeft() == 1) {  // its filling is given
    const double last = bounds_.GetTotal(RestOf(rest_));
    return Count(CountPathsUpTo(limit - last), product, last, ways);
  }
  Node* const next = FindOrAdd();
  const Completions& completions = next->completions;
  const std::size_t allCount = CountPathsUpTo(limit - completions.longest);
  const std::size_t someCount = CountPathsUpTo(limit - completions.shortest);
  Count(allCount, product, completions.total, ways);
  for (std::size_t i = allCount; i < someCount; ++i) {
    if (i + kPathsAhead < someCount) next->paths.Prefetch((*paths_)[i + kPathsAhead].past + product);
    GoOnFrom(next, (*paths_)[i], product, ways);
  }
}

/// All completions of the first `paths` paths.
void ContingencyNetwork::Count(std::size_t paths, double product, double total, double ways) {
  if (paths > 0) probability_ += ways * weightUpTo_[paths] * std::exp(reference_ + product + total - wholeTotal_);
}

std::size_t ContingencyNetwork::CountPathsUpTo(double past) const {
  const auto isAbove = [](double limit, const Path& path) { return limit < path.past; };
  return static_cast<std::size_t>(std::upper_bound(paths_->begin(), paths_->end(), past, isAbove) - paths_->begin());
}

void ContingencyNetwork::GoOnFrom(Node* next, const Path& path, double product, double ways) {
  const double past = path.past + product;
  const double count = path.count * ways;
  const Completions& completions = next->completions;
  if (completions.statistic) {
    const double reached = past + completions.total;
    probability_ += count * std::exp(reached - wholeTotal_) * completions.statistic->Tail(observed_ - reached);
  } else {
    next->paths.Add(past, count, &workspace_);
  }
}

ContingencyNetwork::Node* ContingencyNetwork::FindOrAdd() {
  const std::int32_t key = KeyOf(rest_);
  const auto found = next_.find(key);
  if (found != next_.end()) return &found->second;
  workspace_.RequireNode(next_.size());
  workspace_.Take(kNodeBytes + kFinderBytes);
  Node& node = next_[key];
  node.completions = Complete(RestOf(rest_));
  return &node;
}

std::int32_t ContingencyNetwork::KeyOf(const std::vector<int>& rows) const {
  return std::inner_product(rows.begin(), rows.end(), radix_.begin(), std::int32_t{0});
}

int ContingencyNetwork::TakeColumn() {
  return conditions_.AllowApproximation() ? columns_[--columnsEnd_] : columns_[columnsBegin_++];
}

PartialTable ContingencyNetwork::RestOf(const std::vector<int>& rows) const {
  const auto rowsLeft = static_cast<std::size_t>(std::find(rows.begin(), rows.end(), 0) - rows.begin());
  double sum = 0;
  for (const int margin : rows) sum += margin;
  return {rows.data(), rowsLeft, columns_.data() + columnsBegin_, ColumnsLeft(), sum};
}

ContingencyNetwork::Completions ContingencyNetwork::Complete(const PartialTable& table) {
  Completions result{bounds_.GetTotal(table), 0, bounds_.GetLowerBound(table), std::nullopt};
  if (conditions_.AreMetBy(table)) {
    result.statistic.emplace(table);
    result.longest = bounds_.GetLargest(table);  // a bound would give chi-square paths that count whole
  } else {
    result.longest = bounds_.GetUpperBound(table);
  }
  return result;
}

}  // namespace kalmia
