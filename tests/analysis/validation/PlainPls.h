#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/validation/Folds.h"
#include "kalmia/analysis/validation/RealMatrix.h"

/// What a PLS model of so many components, fitted to the training rows alone in double precision, says of Y in all
/// rows: both tables are scaled to unit variance by the training rows, components come by NIPALS. Plain loops over
/// complete tables, a witness for what is computed from such models.
kalmia::analysis::RealMatrix PredictedByPlainPls(const kalmia::analysis::RealMatrix& x,
                                                 const kalmia::analysis::RealMatrix& y,
                                                 const std::vector<bool>& isTraining, int components);

/// Columns of a CSV file as a matrix: those from column `first` on, `count` of them, from 0.
kalmia::analysis::RealMatrix ColumnsOfFile(const std::string& path, int first, int count);

/// The words of a column of a CSV file.
std::vector<std::string> WordsOfFile(const std::string& path, int column);

/// 150 irises of three species: R. A. Fisher, Annals of Eugenics 7 (1936) 179-188, the table of R; and the wines of
/// examples/data.
std::string PathOfIris();
std::string PathOfWine();
