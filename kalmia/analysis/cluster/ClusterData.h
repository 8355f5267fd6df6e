#pragma once

#include <string>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia::analysis {

/// The rows to be clustered, scaled, with the names of rows and columns.
struct ClusterData {
  std::vector<std::string> columnNames;
  std::vector<std::string> rowNames;
  NCDataMatrix<float> cells;  ///< all rows of the table by the columns that stay

  // What the table has but the distances do not see.
  std::vector<std::string> textColumns;
  std::vector<std::string> constantColumns;
  std::vector<std::string> emptyColumns;

  int Rows() const { return cells.SizeRows(); }
};

}  // namespace kalmia::analysis
