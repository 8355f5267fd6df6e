#include "kalmia/statistics/ContingencyNetwork.h"

#include <algorithm>
#include <boost/math/special_functions/gamma.hpp>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <numeric>
#include <unordered_map>
#include <vector>

#include "kalmia/statistics/LogFactorials.h"
#include "kalmia/statistics/PathTable.h"
#include "kalmia/support/NCError.h"

namespace kalmia {
namespace {

constexpr double kTolerance = 1e-7;  ///< tables within this of the observed one's log probability count as equal
constexpr std::int64_t kLargestWorkspace = std::int64_t{1} << 28;
constexpr std::int64_t kPathsPerNode = 30;                      ///< how the workspace is shared out
constexpr std::int64_t kUnitsPerNode = kPathsPerNode * 4 + 16;  ///< 16 bytes a path, 64 a node

/// The texts are those of Algorithm 643. Five of its failures cannot occur here and have no text: two stacks that
/// overflow (the sorts and the recursion need none of fixed size), a negative key (RequireKeys() comes first), and a
/// table with more rows than its array, in both its wordings (an array of its own size is all that is taken).
[[noreturn]] void Fail(const char* reason) {
  CString message;
  message.Format("Error in fexact.\n%s", reason);
  throw NCError(message);
}

/// Descending, without zeros: an empty row or column takes no part.
std::vector<int> SortedMargins(const std::vector<std::int64_t>& margins) {
  std::vector<int> sorted;
  for (const std::int64_t margin : margins)
    if (margin > 0) sorted.push_back(static_cast<int>(margin));
  std::sort(sorted.begin(), sorted.end(), std::greater<>());
  return sorted;
}

/// What is known of the completions of a partial table, as ln of products of 1 / x! over their cells.
struct Completions {
  double total = 0;     ///< of the sum over all completions
  double longest = 0;   ///< no completion is above
  double shortest = 0;  ///< no completion is below
  bool approximate = false;
  double expected = 0;            ///< if `approximate`: at the expected counts
  double degreesOfFreedom = 0;    ///< if `approximate`
};

/// The partial tables that leave the same row margins, in whatever order.
struct Node {
  std::vector<int> rows;  ///< what is left of the margins, descending
  Completions completions;
  PathTable paths;
};

/// The network: stage c holds the partial tables whose first c columns are filled.
class Network {
 public:
  /// Margins without zeros, descending. `observed` is the ln product of the observed table.
  Network(const std::vector<int>& rows, const std::vector<int>& columns, double observed,
          const CochranConditions& conditions, std::int64_t workspace);

  double Probability();

 private:
  using Stage = std::unordered_map<std::int32_t, Node>;

  // One step: the paths of a node go on through every way to fill the next column.
  void Expand(Node* node);
  void PlaceRow(std::size_t row, int left, double product, double ways, int groupSize, int runLength);
  void Arrive(double product, double ways);
  void GoOnFrom(Node* next, std::size_t path, double product, double ways);
  Node* FindOrAdd();

  // Of the completions that fill the columns from columnsTaken_ on; `rowsLeft` margins are not 0.
  Completions Complete(const std::vector<int>& rows) const;
  double LongestBound(const std::vector<int>& rows, std::size_t rowsLeft, double sum) const;
  double ShortestBound(const std::vector<int>& rows, std::size_t rowsLeft) const;
  void ApportionColumn(int total, double share, std::size_t rowsLeft) const;
  bool MayApproximate(const std::vector<int>& rows, std::size_t rowsLeft, double sum) const;
  double ChiSquareProbability(const Completions& completions, double past) const;
  double LogFactorialOfFilling(int amount, const int* bins, std::size_t count) const;

  std::vector<int> columns_;
  std::size_t columnsTaken_ = 0;  ///< in next_; while a node is expanded its own stage is one back
  LogFactorials logFactorial_;
  std::vector<std::int32_t> radix_;  ///< of the number that a node's margins make
  double observed_;
  double wholeTotal_ = 0;
  CochranConditions conditions_;
  std::int64_t mostNodes_, mostPaths_;

  Stage next_;
  std::int64_t pathsHeld_ = 0;  ///< in next_
  double probability_ = 0;

  // The node that is being expanded.
  const Node* node_ = nullptr;
  std::vector<Path> paths_;         ///< its own, by ascending past
  std::vector<double> weightUpTo_;  ///< count e^(past - reference) of the first i paths
  double reference_ = 0;
  std::vector<int> capacityFrom_;   ///< sum of the margins of row i and those behind it
  std::vector<int> placed_, rest_;

  mutable std::vector<double> weight_, logWeight_;  ///< work of the bounds
  mutable std::vector<int> apportioned_;
};

Network::Network(const std::vector<int>& rows, const std::vector<int>& columns, double observed,
                 const CochranConditions& conditions, std::int64_t workspace)
    : columns_(columns),
      logFactorial_(std::accumulate(rows.begin(), rows.end(), 0)),
      observed_(observed),
      conditions_(conditions),
      mostNodes_(workspace / kUnitsPerNode),
      mostPaths_(mostNodes_ * kPathsPerNode),
      capacityFrom_(rows.size() + 1),
      placed_(rows.size()),
      rest_(rows.size()),
      weight_(rows.size()),
      logWeight_(rows.size()),
      apportioned_(rows.size()) {
  std::int32_t multiplier = 1;
  for (const int margin : rows) {
    radix_.push_back(multiplier);
    multiplier *= margin + 1;
  }
  Node start;
  start.rows = rows;
  start.completions = Complete(rows);
  start.paths.Add(0, 1);
  wholeTotal_ = start.completions.total;
  next_.emplace(0, std::move(start));
}

double Network::Probability() {
  const Completions& whole = next_.begin()->second.completions;
  if (whole.longest <= observed_ + kTolerance) return 1;
  if (whole.approximate) return ChiSquareProbability(whole, 0);
  while (columnsTaken_ + 1 < columns_.size()) {
    Stage current;
    current.swap(next_);
    pathsHeld_ = 0;
    ++columnsTaken_;
    for (auto& entry : current) Expand(&entry.second);
  }
  return std::min(probability_, 1.0);
}

void Network::Expand(Node* node) {
  paths_ = node->paths.TakeSorted();
  if (paths_.empty()) return;
  node_ = node;
  reference_ = paths_.back().past;
  weightUpTo_.assign(1, 0.0);
  for (const Path& path : paths_)
    weightUpTo_.push_back(weightUpTo_.back() + path.count * std::exp(path.past - reference_));
  capacityFrom_.back() = 0;
  for (std::size_t i = node->rows.size(); i > 0; --i) capacityFrom_[i - 1] = capacityFrom_[i] + node->rows[i - 1];
  PlaceRow(0, columns_[columnsTaken_ - 1], 0, 1, 0, 0);
}

/// Rows with equal margins form a group; only fillings that descend within a group are walked, each with the number of
/// its permutations, which builds up as a multinomial.
void Network::PlaceRow(std::size_t row, int left, double product, double ways, int groupSize, int runLength) {
  if (row == node_->rows.size()) return Arrive(product, ways);
  const int margin = node_->rows[row];
  const bool inGroup = row > 0 && margin == node_->rows[row - 1];
  const int before = inGroup ? placed_[row - 1] : margin;
  groupSize = inGroup ? groupSize + 1 : 1;
  for (int x = std::max(0, left - capacityFrom_[row + 1]); x <= std::min(left, before); ++x) {
    placed_[row] = x;
    const int run = inGroup && x == before ? runLength + 1 : 1;
    PlaceRow(row + 1, left - x, product - logFactorial_[x], ways * groupSize / run, groupSize, run);
  }
}

void Network::Arrive(double product, double ways) {
  for (std::size_t i = 0; i < rest_.size(); ++i) rest_[i] = node_->rows[i] - placed_[i];
  std::sort(rest_.begin(), rest_.end(), std::greater<>());
  const bool isLast = columnsTaken_ + 1 == columns_.size();  // one column is left: its filling is given
  Node* next = isLast ? nullptr : FindOrAdd();
  const Completions completions = isLast ? Complete(rest_) : next->completions;

  const auto countUpTo = [this](double past) {
    const auto isAbove = [](double limit, const Path& path) { return limit < path.past; };
    return static_cast<std::size_t>(std::upper_bound(paths_.begin(), paths_.end(), past, isAbove) - paths_.begin());
  };
  const double limit = observed_ + kTolerance - product;
  const std::size_t allCount = countUpTo(limit - completions.longest);
  const std::size_t someCount = countUpTo(limit - completions.shortest);
  if (allCount > 0)
    probability_ += ways * weightUpTo_[allCount] * std::exp(reference_ + product + completions.total - wholeTotal_);
  for (std::size_t i = allCount; i < someCount; ++i) GoOnFrom(next, i, product, ways);
}

void Network::GoOnFrom(Node* next, std::size_t path, double product, double ways) {
  const double past = paths_[path].past + product;
  const double count = paths_[path].count * ways;
  const Completions& completions = next->completions;
  if (completions.approximate) {
    probability_ +=
        count * std::exp(past + completions.total - wholeTotal_) * ChiSquareProbability(completions, past);
    return;
  }
  pathsHeld_ -= static_cast<std::int64_t>(next->paths.Size());
  next->paths.Add(past, count);
  pathsHeld_ += static_cast<std::int64_t>(next->paths.Size());
  if (pathsHeld_ > mostPaths_)
    Fail("LDSTP is too small for this problem.\nTry increasing the size of the workspace.");
}

Node* Network::FindOrAdd() {
  const std::int32_t key = std::inner_product(rest_.begin(), rest_.end(), radix_.begin(), std::int32_t{0});
  const auto found = next_.find(key);
  if (found != next_.end()) return &found->second;
  if (static_cast<std::int64_t>(next_.size()) >= mostNodes_)
    Fail("LDKEY is too small for this problem.\nTry increasing the size of the workspace.");
  Node& node = next_[key];
  node.rows = rest_;
  node.completions = Complete(rest_);
  return &node;
}

// ---- What the completions of a partial table can come to

Completions Network::Complete(const std::vector<int>& rows) const {
  Completions result;
  double sum = 0;
  for (const int margin : rows) {
    sum += margin;
    result.total -= logFactorial_[margin];
  }
  if (columnsTaken_ + 1 == columns_.size()) {
    result.longest = result.shortest = result.total;
    return result;
  }
  const auto rowsLeft = static_cast<std::size_t>(std::find(rows.begin(), rows.end(), 0) - rows.begin());
  result.total += logFactorial_[static_cast<int>(sum)];
  for (std::size_t j = columnsTaken_; j < columns_.size(); ++j) result.total -= logFactorial_[columns_[j]];
  result.longest = LongestBound(rows, rowsLeft, sum);
  result.shortest = ShortestBound(rows, rowsLeft);
  result.approximate = MayApproximate(rows, rowsLeft, sum);
  if (result.approximate) {
    const std::size_t columnsLeft = columns_.size() - columnsTaken_;
    result.degreesOfFreedom = static_cast<double>((rowsLeft - 1) * (columnsLeft - 1));
    for (std::size_t i = 0; i < rowsLeft; ++i)
      for (std::size_t j = columnsTaken_; j < columns_.size(); ++j)
        result.expected -= boost::math::lgamma(rows[i] * (columns_[j] / sum) + 1);
  }
  return result;
}

/// By duality: whatever the weights A(i) > 0, the largest -sum ln x! is at most the sum over columns of
/// max (sum x(i) ln A(i) - ln x(i)!), x whole with the column's sum, minus sum r(i) ln A(i). That maximum takes count
/// after count where A(i) / (x(i) + 1) is largest; good weights put the counts' own sums near the margins.
double Network::LongestBound(const std::vector<int>& rows, std::size_t rowsLeft, double sum) const {
  const double halfRow = static_cast<double>(columns_.size() - columnsTaken_) / 2;
  const double halfColumn = static_cast<double>(rowsLeft) / 2;
  const double whole = sum + 2 * halfRow * halfColumn;
  double bound = 0;
  for (std::size_t i = 0; i < rowsLeft; ++i) {
    weight_[i] = rows[i] + halfRow;
    logWeight_[i] = std::log(weight_[i]);
    bound -= logWeight_[i] * rows[i];
  }
  for (std::size_t j = columnsTaken_; j < columns_.size(); ++j) {
    ApportionColumn(columns_[j], (columns_[j] + halfColumn) / whole, rowsLeft);
    for (std::size_t i = 0; i < rowsLeft; ++i)
      bound += apportioned_[i] * logWeight_[i] - logFactorial_[apportioned_[i]];
  }
  return bound;
}

/// Fills apportioned_ with the counts of a column of the sum `total` that come first in the order of A(i) / (x(i) + 1);
/// `share` times A(i) is near them.
void Network::ApportionColumn(int total, double share, std::size_t rowsLeft) const {
  const auto first = apportioned_.begin(), last = first + static_cast<std::ptrdiff_t>(rowsLeft);
  for (std::size_t i = 0; i < rowsLeft; ++i) apportioned_[i] = static_cast<int>(weight_[i] * share);
  int missing = total - std::accumulate(first, last, 0);
  for (; missing > 0; --missing) {
    std::size_t best = 0;
    for (std::size_t i = 1; i < rowsLeft; ++i)
      if (weight_[i] * (apportioned_[best] + 1) > weight_[best] * (apportioned_[i] + 1)) best = i;
    ++apportioned_[best];
  }
  for (; missing < 0; ++missing) {
    std::size_t worst = 0;
    for (std::size_t i = 1; i < rowsLeft; ++i)
      if (weight_[i] * apportioned_[worst] < weight_[worst] * apportioned_[i]) worst = i;
    --apportioned_[worst];
  }
}

/// sum ln x! of `amount` filled into bins one after the other, the largest first: no filling has more, as ln x! is
/// convex.
double Network::LogFactorialOfFilling(int amount, const int* bins, std::size_t count) const {
  double result = 0;
  for (std::size_t i = 0; i < count && amount > 0; ++i) {
    const int x = std::min(amount, bins[i]);
    result += logFactorial_[x];
    amount -= x;
  }
  return result;
}

double Network::ShortestBound(const std::vector<int>& rows, std::size_t rowsLeft) const {
  double byColumns = 0, byRows = 0;
  for (std::size_t j = columnsTaken_; j < columns_.size(); ++j)
    byColumns += LogFactorialOfFilling(columns_[j], rows.data(), rowsLeft);
  for (std::size_t i = 0; i < rowsLeft; ++i)
    byRows += LogFactorialOfFilling(rows[i], columns_.data() + columnsTaken_, columns_.size() - columnsTaken_);
  return -std::min(byColumns, byRows);
}

bool Network::MayApproximate(const std::vector<int>& rows, std::size_t rowsLeft, double sum) const {
  if (!(conditions_.expected > 0) || rowsLeft < 2) return false;
  std::size_t large = 0;
  for (std::size_t i = 0; i < rowsLeft; ++i)
    for (std::size_t j = columnsTaken_; j < columns_.size(); ++j) {
      const double expected = rows[i] * (columns_[j] / sum);
      if (expected < conditions_.smallest) return false;
      if (expected >= conditions_.expected) ++large;
    }
  const std::size_t cells = rowsLeft * (columns_.size() - columnsTaken_);
  return 100.0 * static_cast<double>(large) >= conditions_.percent * static_cast<double>(cells);
}

/// Near the expected counts the ln product falls by half of chi-square.
double Network::ChiSquareProbability(const Completions& completions, double past) const {
  const double half = completions.expected + past - observed_;
  return half <= 0 ? 1.0 : boost::math::gamma_q(completions.degreesOfFreedom / 2, half);
}

// ---- The table

struct Table {
  std::vector<std::int64_t> rows, columns;  ///< margins
  std::int64_t sum = 0;
  int largest = 0;
};

Table Examine(const int* cells, int rows, int columns) {
  if (rows < 2) Fail("NCOL must be at least 2");
  Table table;
  table.rows.assign(static_cast<std::size_t>(rows), 0);
  table.columns.assign(static_cast<std::size_t>(std::max(columns, 0)), 0);
  for (std::int64_t& row : table.rows)
    for (std::int64_t& column : table.columns) {
      const int x = *cells++;
      if (x < 0) Fail("All elements of TABLE may not be negative.");
      row += x;
      column += x;
      table.sum += x;
      table.largest = std::max(table.largest, x);
    }
  if (table.sum == 0) Fail("All elements of TABLE are zero.\nPRT and PRE are set to missing values.");
  return table;
}

void RequireKeys(const std::vector<std::int64_t>& margins) {
  std::int64_t keys = 1;
  for (const std::int64_t margin : margins) {
    if (margin >= std::numeric_limits<std::int32_t>::max() / keys)
      Fail(
          "The hash table key cannot be computed because the largest key\nis larger than the largest representable "
          "int.\nThe algorithm cannot proceed.\nReduce the workspace size or use another algorithm.");
    keys *= margin + 1;
  }
}

}  // namespace

double ExactTestOfIndependence(const int* table, int rows, int columns, const CochranConditions& conditions,
                               int workspace) {
  const Table counts = Examine(table, rows, columns);
  const bool rowsAreFewer = counts.rows.size() <= counts.columns.size();
  RequireKeys(rowsAreFewer ? counts.rows : counts.columns);
  const std::vector<int> shorter = SortedMargins(rowsAreFewer ? counts.rows : counts.columns);
  const std::vector<int> longer = SortedMargins(rowsAreFewer ? counts.columns : counts.rows);
  if (shorter.size() < 2 || longer.size() < 2) return 1;
  const LogFactorials logFactorial(counts.largest);
  double observed = 0;
  for (std::size_t i = 0; i < counts.rows.size() * counts.columns.size(); ++i) observed -= logFactorial[table[i]];
  const std::int64_t units = workspace > 0 ? workspace : kLargestWorkspace;
  return Network(shorter, longer, observed, conditions, units).Probability();
}

}  // namespace kalmia
