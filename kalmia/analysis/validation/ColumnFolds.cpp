#include "kalmia/analysis/validation/ColumnFolds.h"

#include <algorithm>

namespace kalmia::analysis {

ColumnFolds MakeColumnFolds(std::size_t columns, int rowGroups) {
  ColumnFolds folds;
  folds.groups = static_cast<int>(std::min(columns, static_cast<std::size_t>(rowGroups)));
  for (std::size_t j = 1; j <= columns; ++j) {
    folds.groupOfColumn.push_back(static_cast<int>(j % static_cast<std::size_t>(folds.groups)));
  }
  return folds;
}

int MostComponentsOfColumns(std::size_t columns, int columnGroups) {
  const auto groups = static_cast<std::size_t>(columnGroups);
  const std::size_t outside = columns - (columns + groups - 1) / groups;
  return std::max(0, static_cast<int>(outside) - 1);
}

PredictableRows RowsToPredict(const std::vector<int>& fewestCellsOutside, int mostComponents) {
  std::vector<int> cells = fewestCellsOutside;
  std::sort(cells.begin(), cells.end());
  PredictableRows rows;
  rows.mostComponents = mostComponents;
  const std::size_t tenth = cells.size() / 10;  // so many rows may leave: the next one has to stay
  if (tenth < cells.size()) rows.mostComponents = std::max(0, std::min(mostComponents, cells[tenth] - 1));
  for (const int outside : fewestCellsOutside) rows.takesPart.push_back(outside > rows.mostComponents);
  return rows;
}

}  // namespace kalmia::analysis
