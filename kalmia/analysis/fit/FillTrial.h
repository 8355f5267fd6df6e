#pragma once

#include <string>
#include <vector>

namespace kalmia::analysis {

/// How filling does on cells whose values are known: of one column, or of all in standard deviations.
struct FillError {
  std::string name;       ///< of the column
  int cells = 0;          ///< hidden ones that were filled again
  double filled = 0.0;    ///< root mean square error of what was filled in
  double means = 0.0;     ///< the same of the column's mean
  double Ratio() const { return filled / means; }
};

/// How the number of components was chosen: by hiding cells, and filling them again with 0, 1, 2, ... components.
struct FillChoice {
  std::vector<double> errors;  ///< with so many components, in standard deviations; empty where nothing was chosen
  int components = 0;          ///< the last number that made the error smaller by more than 1 %
  int trials = 0;
  int hiddenCells = 0;         ///< in all trials
};

/// A trial of filling: a tenth of the present cells is hidden, and filled again.
struct FillTrial {
  FillError all;                   ///< errors over the standard deviations of the columns
  std::vector<FillError> columns;  ///< in the units of the columns; those without a hidden cell are left out
  int components = 0;
  FillChoice choice;  ///< of their number, from the cells that were not hidden; empty where a number was asked for
};

}  // namespace kalmia::analysis
