#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"

namespace kalmia::analysis {

/// What the models of a series, from 0 on, say of rows that they were not fitted to.
struct LeftOutRows {
  std::vector<RealMatrix> predicted;  ///< rows by Y columns, in the units of the table; not a number where none
  RealMatrix distances;               ///< rows by models: normalised, see DistanceToModel
};

/// Kinds of VIP: that of PLS; or those of OPLS, by the predictive and by the orthogonal components.
enum class ImportanceKinds { OfPLS, OfOPLS };

/// What is asked of a round beside its left-out rows.
struct RoundQuestions {
  bool fitted = false;          ///< its fitted rows too
  int firstOfCoefficients = 0;  ///< coefficients (and VIP) of the models from this one, or else the last one, on
  ImportanceKinds importances = ImportanceKinds::OfPLS;
};

/// What a round of a validation tells of its models, from 0 on, however they were fitted.
struct RoundFigures {
  int lastModel = 0;
  int block = 1;                 ///< components of model 1
  std::vector<double> r2x, r2y;  ///< shares of the sums of squares of X and of Y that each model describes
  std::vector<std::string> columnsWithoutSpread;  ///< of X
  LeftOutRows leftOut;
  LeftOutRows fitted;  ///< the same of the rows that the models were fitted to; where they were asked for
  /// Of each model and Y column the slopes of the X columns in the units of the table, and the intercept behind them.
  /// Nothing of models for which it was not asked.
  std::vector<std::vector<std::vector<double>>> coefficients;
  std::vector<std::vector<std::vector<double>>> importances;  ///< VIP of each model and kind, likewise
};

}  // namespace kalmia::analysis
