#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/model/RowDiagnosis.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The classes that a model assigns to rows. Classes have the numbers of their names, from 0; -1 stands for none.
struct ClassPredictions {
  RealMatrix logOdds;          ///< rows by classes, see LogOdds; not numbers in a row without a prediction
  std::vector<int> nearest;    ///< of the largest value; -1 of a row without a prediction
  std::vector<int> assigned;   ///< the nearest one; -1 also beyond a limit of 99 %: no training row was like it
  /// What the table says itself, empty where it says nothing; no cells where it does not have the column of classes.
  std::vector<std::string> measured;
};

/// Rows whose class the table tells, by that class and by what is assigned to them.
struct ClassTally {
  std::vector<std::vector<int>> confusion;  ///< rows by their class, columns by the assigned one
  std::vector<int> unassigned;              ///< of each class: rows that are assigned to none
  int rows = 0;                             ///< of all classes of the model
  int right = 0;                            ///< of these, assigned to their own class
};

/// Assigns rows by their predicted dummies, those beyond a limit of 99 % of T2 or of the distance to no class. A model
/// without components assigns all to the largest prior, the first of equal ones. Reads the classes that the table tells
/// in the model's column of classes, and notes those that the model does not know. `model` has classes, `rows` and
/// `diagnosis` are of the rows of the table.
KALMIA_EXPORT ClassPredictions PredictClasses(const YModelInfo& model, const Table& table,
                                              const std::vector<RowPrediction>& rows, const RowDiagnosis& diagnosis,
                                              Notes* notes);

/// Counts rows by class. Rows of a class that the model does not know do not count.
KALMIA_EXPORT ClassTally TallyOf(const std::vector<std::string>& names, const ClassPredictions& predictions);

/// Predictions of Y as a matrix, rows by Y columns; not numbers where a row has none.
KALMIA_EXPORT RealMatrix PredictedMatrix(const std::vector<RowPrediction>& rows, std::size_t yColumns);

}  // namespace kalmia::analysis
