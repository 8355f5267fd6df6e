#pragma once

#include <string>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCIntegralVector.h"

namespace kalmia::analysis {

/// One of two blocks.
struct Block {
  std::string table;  ///< how messages call its file
  std::vector<std::string> names;
  std::vector<std::vector<double>> measured;  ///< the cells, column by column, in the units of its file
  NCDataMatrix<float> cells;                  ///< the same for the model, less the shifts
  std::vector<double> shifts;                 ///< as in ColumnScaling
  std::vector<std::string> textColumns;  ///< these and those below are no part of it
  std::vector<std::string> constantColumns;
  std::vector<std::string> emptyColumns;
};

/// Two blocks of the same rows.
struct BlockPair {
  Block x;
  Block y;
  std::vector<std::string> rowNames;
  std::vector<std::string> onlyInX;    ///< rows of one table that the other one lacks
  std::vector<std::string> onlyInY;
  std::vector<std::string> emptyRows;  ///< left out for want of any cell in X or in Y
  NCIntegralVector<int, -99> groups;   ///< cross-validation group of each row, from 0
  int rounds = 0;
  std::vector<std::string> groupLabels;  ///< of each row, where the recipe has a column of groups; otherwise none
};

}  // namespace kalmia::analysis
