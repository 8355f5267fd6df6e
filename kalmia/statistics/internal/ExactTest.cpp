#include "kalmia/statistics/internal/ExactTest.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include "kalmia/statistics/internal/ContingencyNetwork.h"
#include "kalmia/statistics/internal/ExactTestFailure.h"
#include "kalmia/statistics/internal/LogFactorials.h"

namespace kalmia {
namespace {

struct Table {
  std::vector<std::int64_t> rows, columns;  ///< margins
  std::int64_t sum = 0;
  int largest = 0;
};

Table Examine(const int* cells, int rows, int columns) {
  if (rows < 2) FailExactTest("NCOL must be at least 2");
  Table table;
  table.rows.assign(static_cast<std::size_t>(rows), 0);
  table.columns.assign(static_cast<std::size_t>(std::max(columns, 0)), 0);
  for (std::int64_t& row : table.rows)
    for (std::int64_t& column : table.columns) {
      const int x = *cells++;
      if (x < 0) FailExactTest("All elements of TABLE may not be negative.");
      row += x;
      column += x;
      table.sum += x;
      table.largest = std::max(table.largest, x);
    }
  if (table.sum == 0) FailExactTest("All elements of TABLE are zero.\nPRT and PRE are set to missing values.");
  return table;
}

void RequireKeys(const std::vector<std::int64_t>& margins) {
  std::int64_t keys = 1;
  for (const std::int64_t margin : margins) {
    if (margin >= std::numeric_limits<std::int32_t>::max() / keys)
      FailExactTest(
          "The hash table key cannot be computed because the largest key\nis larger than the largest representable "
          "int.\nThe algorithm cannot proceed.\nReduce the workspace size or use another algorithm.");
    keys *= margin + 1;
  }
}

/// Descending.
std::vector<int> Sorted(const std::vector<std::int64_t>& margins) {
  std::vector<int> sorted;
  for (const std::int64_t margin : margins) sorted.push_back(static_cast<int>(margin));
  std::sort(sorted.begin(), sorted.end(), std::greater<>());
  return sorted;
}

std::vector<int> WithoutZeros(std::vector<int> sorted) {
  sorted.erase(std::find(sorted.begin(), sorted.end(), 0), sorted.end());
  return sorted;
}

}  // namespace

double ExactTestOfIndependence(const int* table, int rows, int columns, const CochranConditions& conditions,
                               int workspace) {
  const Table counts = Examine(table, rows, columns);
  const bool rowsAreFewer = counts.rows.size() <= counts.columns.size();
  RequireKeys(rowsAreFewer ? counts.rows : counts.columns);
  const std::vector<int> nodes = WithoutZeros(Sorted(rowsAreFewer ? counts.rows : counts.columns));
  const std::vector<int> allStages = Sorted(rowsAreFewer ? counts.columns : counts.rows);
  const std::vector<int> stages = WithoutZeros(allStages);
  if (nodes.size() < 2 || stages.size() < 2) return 1;
  const LogFactorials logFactorial(counts.largest);
  double observed = 0;
  for (std::size_t i = 0; i < counts.rows.size() * counts.columns.size(); ++i) observed -= logFactorial[table[i]];
  return ContingencyNetwork(nodes, conditions.AllowApproximation() ? allStages : stages, observed, conditions,
                            workspace)
      .Probability();
}

}  // namespace kalmia
