#include "kalmia/statistics/internal/CompletionBounds.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kalmia {
namespace {

/// Costs are sums of a few logarithms; a way has to be cheaper by more than their rounding, so that none turns in
/// circles.
constexpr double kCheaper = 1e-12;

}  // namespace

CompletionBounds::CompletionBounds(std::size_t mostRows, const LogFactorials& logFactorial)
    : logFactorial_(logFactorial),
      apportionment_(mostRows),
      counts_(mostRows),
      logWeight_(mostRows),
      surplus_(mostRows),
      steps_(mostRows) {}

double CompletionBounds::GetTotal(const PartialTable& table) const {
  double total = 0;
  for (std::size_t i = 0; i < table.rowCount; ++i) total -= logFactorial_[table.rows[i]];
  if (table.columnCount == 1) return total;
  total += logFactorial_[static_cast<int>(table.sum)];
  for (std::size_t j = 0; j < table.columnCount; ++j) total -= logFactorial_[table.columns[j]];
  return total;
}

/// By duality: whatever the weights A(i) > 0, the largest -sum ln x! is at most the sum over columns of
/// max (sum x(i) ln A(i) - ln x(i)!), x whole with the column's sum, minus sum r(i) ln A(i).
double CompletionBounds::GetUpperBound(const PartialTable& table) {
  apportionment_.SetWeights(table);
  double bound = 0;
  for (std::size_t i = 0; i < table.rowCount; ++i) {
    logWeight_[i] = std::log(apportionment_.GetWeight(i));
    bound -= logWeight_[i] * table.rows[i];
  }
  for (std::size_t j = 0; j < table.columnCount; ++j) {
    apportionment_.FillColumn(table.columns[j], counts_.data());
    for (std::size_t i = 0; i < table.rowCount; ++i) bound += counts_[i] * logWeight_[i] - logFactorial_[counts_[i]];
  }
  return bound;
}

/// sum ln x! of `amount` filled into bins one after the other, the largest first: no filling has more, as ln x! is
/// convex.
double CompletionBounds::LogFactorialOfFilling(int amount, const int* bins, std::size_t count) const {
  double result = 0;
  for (std::size_t i = 0; i < count && amount > 0; ++i) {
    const int x = std::min(amount, bins[i]);
    result += logFactorial_[x];
    amount -= x;
  }
  return result;
}

double CompletionBounds::GetLowerBound(const PartialTable& table) const {
  double byColumns = 0, byRows = 0;
  for (std::size_t j = 0; j < table.columnCount; ++j)
    byColumns += LogFactorialOfFilling(table.columns[j], table.rows, table.rowCount);
  for (std::size_t i = 0; i < table.rowCount; ++i)
    byRows += LogFactorialOfFilling(table.rows[i], table.columns, table.columnCount);
  return -std::min(byColumns, byRows);
}

// ---- The largest of all completions

/// Apportioned columns are the best counts but for the rows' sums, and stay the best of all counts with the same rows'
/// sums while each count that is in the wrong row goes the cheapest way to a row that lacks one, maybe through other
/// rows: the successive shortest paths of a minimum cost flow, whose costs -ln of 1 / x! are convex.
double CompletionBounds::GetLargest(const PartialTable& table) {
  FillColumns(table);
  const auto surplusEnd = surplus_.begin() + static_cast<std::ptrdiff_t>(table.rowCount);
  while (std::any_of(surplus_.begin(), surplusEnd, [](int surplus) { return surplus > 0; })) MoveOneCount(table);
  double largest = 0;
  for (std::size_t k = 0; k < table.rowCount * table.columnCount; ++k) largest -= logFactorial_[counts_[k]];
  return largest;
}

void CompletionBounds::FillColumns(const PartialTable& table) {
  const std::size_t cells = table.rowCount * table.columnCount;
  if (counts_.size() < cells) counts_.resize(cells);
  apportionment_.SetWeights(table);
  for (std::size_t i = 0; i < table.rowCount; ++i) surplus_[i] = -table.rows[i];
  for (std::size_t j = 0; j < table.columnCount; ++j) {
    int* const column = counts_.data() + j * table.rowCount;
    apportionment_.FillColumn(table.columns[j], column);
    for (std::size_t i = 0; i < table.rowCount; ++i) surplus_[i] += column[i];
  }
}

/// The ways of Bellman and Ford, from all rows with a surplus at once.
void CompletionBounds::MoveOneCount(const PartialTable& table) {
  for (std::size_t i = 0; i < table.rowCount; ++i)
    steps_[i] = {surplus_[i] > 0 ? 0.0 : std::numeric_limits<double>::infinity(), i, 0};
  for (std::size_t round = 1; round < table.rowCount; ++round)
    for (std::size_t from = 0; from < table.rowCount; ++from)
      for (std::size_t to = 0; to < table.rowCount; ++to)
        if (from != to) RelaxMove(from, to, table);
  std::size_t row = table.rowCount;
  for (std::size_t i = 0; i < table.rowCount; ++i)
    if (surplus_[i] < 0 && (row == table.rowCount || steps_[i].cost < steps_[row].cost)) row = i;
  ++surplus_[row];
  for (; steps_[row].from != row; row = steps_[row].from) {
    int* const column = counts_.data() + steps_[row].column * table.rowCount;
    ++column[row];
    --column[steps_[row].from];
  }
  --surplus_[row];
}

/// A count that goes from x to y within a column costs ln (y + 1) - ln x.
void CompletionBounds::RelaxMove(std::size_t from, std::size_t to, const PartialTable& table) {
  if (std::isinf(steps_[from].cost)) return;
  double ratio = std::numeric_limits<double>::infinity();
  std::size_t best = 0;
  for (std::size_t j = 0; j < table.columnCount; ++j) {
    const int* const column = counts_.data() + j * table.rowCount;
    if (column[from] == 0) continue;
    const double ratioHere = (column[to] + 1.0) / column[from];
    if (ratioHere < ratio) {
      ratio = ratioHere;
      best = j;
    }
  }
  const double cost = steps_[from].cost + std::log(ratio);
  if (cost < steps_[to].cost - kCheaper) steps_[to] = {cost, from, best};
}

}  // namespace kalmia
