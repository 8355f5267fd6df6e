#pragma once

#include <cstddef>

namespace kalmia {

/// The margins of a table some of whose columns are filled and taken out. A completion is a table of these margins.
struct PartialTable {
  const int* rows;          ///< what is left of them, descending, above 0
  std::size_t rowCount;
  const int* columns;       ///< those not taken out, descending; 0 occurs
  std::size_t columnCount;
  double sum;
};

}  // namespace kalmia
