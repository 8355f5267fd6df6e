#pragma once

#include <cstddef>
#include <string>

#include "kalmia/analysis/model/ClassPredictions.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

// What reports of models of classes say beside others. Of a model of numbers there is nothing to say.

/// How many rows of each class the model assigns to each, fitted and left out, with sensitivity, specificity and AUC.
std::string ClassText(const YModelInfo& model);

/// The field `classes`.
Json ClassJson(const YModelInfo& model);

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
