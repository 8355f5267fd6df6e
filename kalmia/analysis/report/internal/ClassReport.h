#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/ClassFit.h"
#include "kalmia/analysis/model/ClassPredictions.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/internal/Json.h"
#include "kalmia/analysis/validation/RefitValidation.h"

namespace kalmia::analysis {

// What reports of models of classes say beside others. Of a model of numbers there is nothing to say.

/// How many rows of each class the model assigns to each, fitted and left out, with sensitivity, specificity and AUC.
std::string ClassText(const YModelInfo& model);

/// The field `classes`.
Json ClassJson(const YModelInfo& model);

/// The classes of the rows of a fit by number, -1 for none: their own, by the model, and by the validation while they
/// were left out; null for a fit of numbers. The latter two are empty where there is no such.
struct RowClasses {
  const YModelInfo& model;
  std::string column;  ///< of the table
  std::vector<int> own, fitted, leftOut;
};
std::optional<RowClasses> RowClassesOf(const YModelInfo& model, const std::optional<ClassFit>& fit,
                                       const RefitValidation* validation);

/// Puts `measured`, `assigned` and `assignedCv` of the rows into the field `classes`; of no classes nothing.
void AddRowClassesJson(const std::optional<RowClasses>& rows, Json* classes);

// What reports of predictions say of new rows by a model of classes.

/// How many of the rows whose class the table tells were assigned to which; "" without such rows.
std::string TallyText(const YModelInfo& model, const ClassPredictions& predictions);
/// The field `classes`.
Json TallyJson(const YModelInfo& model, const ClassPredictions& predictions);

/// The name of a class; "" for none.
std::string ClassName(const YModelInfo& model, int number);

/// The fields of a row, from 0.
void AddClassJson(const YModelInfo& model, const ClassPredictions& predictions, std::size_t i, Json* row);

/// The class that the table tells, where it has the column, the assigned and the nearest one, and all log odds.
void AddClassTitles(const YModelInfo& model, const ClassPredictions& classes, CsvText* csv);
void AddClassFields(const YModelInfo& model, const ClassPredictions& classes, std::size_t i, CsvText* csv);

}  // namespace kalmia::analysis
