#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/table/CellRows.h"

namespace kalmia::analysis {

/// A table of signals on its way through a chain: rows are signals, columns are channels.
struct Signals {
  std::string table;                   ///< how messages call it
  std::vector<std::string> rowPlaces;  ///< how messages call each row, see RowPlaces
  std::vector<std::string> names;      ///< of the columns
  /// The names of the columns before the last wavelet-compress, while its coefficients are the columns; otherwise empty.
  std::vector<std::string> fullNames;
  CellRows cells;
  bool decimalComma = false;           ///< whether the numbers of the table, and in names, have one
  std::vector<int> rows = {};          ///< of the table, from 0; empty where all its rows are here, in their order
};

}  // namespace kalmia::analysis
