#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/model/RowDiagnosis.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/report/CsvFile.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

// What models say of rows, told alike by all kinds of fits and by predictions. Models have row statistics where they
// were just fitted with it; without any the JSON has null and texts are empty.

/// "T2 7.495 (95 %), 10.56 (99 %); distance 1.79 (95 %), 2.05 (99 %)"; what there is of it.
std::string LimitsText(const RowLimits& limits);
/// {"t2": {"0.95": ..., "0.99": ...}, "distance": {...}}, null for what is not there.
Json LimitsJson(const RowLimits& limits);
/// {"training": ..., "new": ...} of a model of `components` components; null where the model has no terms of rows.
Json LimitsJson(const ModelInfo& model, int components);

/// The limits of the training rows and how many rows pass them; "" without any.
std::string RowsText(const ModelInfo& model);
/// The fields rowStatistics, of each training row, and limits.
void AddRowsJson(const ModelInfo& model, int components, Json* json);
/// rows.csv: T2, distances and flags of each training row.
CsvFile RowsCsv(const ModelInfo& model, const CsvMarks& marks);

/// The digest of a model that was fitted to the end; null for another.
template <class Model>
Json DigestJson(const Model& model) {
  return model.rowTerms ? Json(ModelDigest(model)) : Json(nullptr);
}

/// The flags of a row in one cell.
std::string FlagsText(const std::vector<std::string>& flags);

}  // namespace kalmia::analysis
