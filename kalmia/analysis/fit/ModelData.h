#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/Classes.h"
#include "kalmia/analysis/steps/StepChain.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCIntegralVector.h"

namespace kalmia::analysis {

/// The tables that a model is fitted to, with the names of their rows and columns.
struct ModelData {
  StepChain chain;  ///< what made X of the columns of the table, if the recipe has steps
  std::vector<std::string> xNames;
  std::vector<std::string> yNames;
  std::vector<std::string> rowNames;
  std::vector<int> rows;              ///< of the table, from 0, that the model sees
  NCDataMatrix<float> x;              ///< rows by X columns, as the chain has made them, less their shifts
  NCDataMatrix<float> y;              ///< rows by Y columns, less their shifts; a model of X alone has none
  std::vector<double> xShifts;        ///< in the units of the table, as in ColumnScaling
  std::vector<double> yShifts;
  std::optional<Classes> classes;     ///< of these rows, where y has their dummies
  std::string classColumn;            ///< of the table, that has them; empty for another Y
  std::vector<std::vector<double>> measuredY;  ///< the cells of y, column by column, in the units of the table
  NCIntegralVector<int, -99> groups;  ///< cross-validation group of each row, from 0
  int rounds = 0;                     ///< number of groups

  // What the table has but the model does not see.
  std::vector<std::string> textColumns;
  std::vector<std::string> constantColumns;
  std::vector<std::string> emptyColumns;
  std::vector<std::string> leftOutRows;  ///< rows without any cell of X
};

}  // namespace kalmia::analysis
