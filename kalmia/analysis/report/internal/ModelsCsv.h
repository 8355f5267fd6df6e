#pragma once

#include "kalmia/analysis/report/CsvFile.h"
#include "kalmia/analysis/report/internal/ValidationReport.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/table/internal/CsvText.h"

namespace kalmia::analysis {

/// components.csv of models that refits have judged, from 0 on: what counts their components, R2X, PRESS and Q2, and
/// which one is kept. Of models of Y also R2Y, and for each Y column a line with its Q2 and RMSECV, which the line of
/// all has not.
/// Of classes the line of all has their accuracies.
CsvFile ModelsCsv(const RefittedModels& models, const CsvMarks& marks);

/// The columns of such a file on classes; none of models of numbers. `entry` is the model, null in the line of one Y.
void RateTitles(const RefittedModels& models, CsvText* csv);
void RateFields(const RefittedModels& models, const StoredValidationEntry* entry, CsvText* csv);

}  // namespace kalmia::analysis
