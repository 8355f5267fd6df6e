#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/validation/Folds.h"
#include "kalmia/analysis/validation/LeftOutErrors.h"

/// What a PLS model says of all rows of complete tables when it is fitted to the training rows alone.
struct PlainPls {
  std::vector<kalmia::analysis::RealMatrix> predicted;  ///< Y under 0, 1, ... components, in the units of the table
  kalmia::analysis::RealMatrix scores;                  ///< N x A
  std::vector<double> xResiduals;                       ///< sum of squares of each row after A components, scaled
};

/// Both tables are scaled to unit variance by the training rows, a column without spread there to 0; components come by
/// NIPALS in double precision. Plain loops, a witness for what is computed from such models.
PlainPls FitPlainPls(const kalmia::analysis::RealMatrix& x, const kalmia::analysis::RealMatrix& y,
                     const std::vector<bool>& isTraining, int components);

/// Models of the rounds of a validation: `use(model, rows)` is called for each with the rows that it was not fitted to.
void ForRounds(const kalmia::analysis::RealMatrix& x, const kalmia::analysis::RealMatrix& y,
               const kalmia::analysis::Folds& folds, int components,
               const std::function<void(const PlainPls&, const std::vector<std::size_t>&)>& use);

/// The errors of left-out rows under 0 to A components.
kalmia::analysis::LeftOutErrors LeftOutErrorsOfPlainPls(const kalmia::analysis::RealMatrix& x,
                                                        const kalmia::analysis::RealMatrix& y,
                                                        const kalmia::analysis::Folds& folds, int components);

/// Columns of a CSV file as a matrix: those from column `first` on, `count` of them, from 0.
kalmia::analysis::RealMatrix ColumnsOfFile(const std::string& path, int first, int count);

/// The words of a column of a CSV file.
std::vector<std::string> WordsOfFile(const std::string& path, int column);

/// 150 irises of three species: R. A. Fisher, Annals of Eugenics 7 (1936) 179-188, the table of R; and the wines of
/// examples/data.
std::string PathOfIris();
std::string PathOfWine();
