#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "kalmia/analysis/steps/GivenSteps.h"
#include "kalmia/analysis/table/CsvTable.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia::analysis {

/// A column of numbers with its name.
struct NumberColumn {
  std::string name;
  std::vector<float> cells;

  std::size_t Present() const;
  bool IsConstant() const;  ///< no two present cells differ
};

/// The columns as a matrix of so many rows, and their names behind those that are there.
void FillMatrix(const std::vector<NumberColumn>& columns, int rows, NCDataMatrix<float>* matrix,
                std::vector<std::string>* names);

/// What steps have made of the columns of X.
struct PreprocessedX {
  StepChain chain;
  std::vector<NumberColumn> columns;      ///< those with a cell, at least one
  std::vector<std::string> emptyColumns;  ///< names of the others
};

/// Applies a saved chain to the columns of the table that it takes, noting others, or lets steps learn of all. Rows are
/// named by the column `idColumn`, -1 for none; `textColumns` are those of X that hold no numbers. `progress` may
/// be null.
/// Throws BadData: a column of the chain that is not there; what LearnChain throws; no cell left.
PreprocessedX PreprocessX(const CsvTable& table, int idColumn, const GivenSteps& given,
                          const std::vector<NumberColumn>& x, const std::vector<std::string>& textColumns,
                          Notes* notes, NCProgress* progress);

}  // namespace kalmia::analysis
