#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/fit/ModelData.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/report/WrittenFiles.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

// What the reports of fits have in common.

/// "401 columns of gasoline.csv, 60 rows", then a line with the scaling and the missing cells, then an empty line.
std::string DataText(const ModelData& data, const ModelInfo& model);

/// "cross-validated in 7 groups", with the group column if there is one.
std::string GroupsText(const ModelInfo& model);

/// The fields of the JSON output on what was fitted: the table, scaling, X, rows, what was left out.
void AddDataJson(const Table& table, const ModelData& data, const ModelInfo& model, Json* json);

/// The groups of a cross-validation by component.
void AddGroupsJson(const ModelInfo& model, Json* json);

/// A share, with the decimals of all reports.
std::string ShareText(double share);

/// "Q2 above limit", "Q2 not above limit", with ", not kept" behind it.
std::string Verdict(bool significant, bool kept);

/// The Y columns that texts have a line for. The dummies of two classes have the same figures, and one line.
std::vector<std::string> ShownYNames(const YModelInfo& model);

/// RMSEE and RMSECV of each Y column.
std::string QualityText(const YModelInfo& model);
Json QualityJson(const YModelInfo& model);

/// The last fields: the files written, and the notes.
void AddFilesJson(const FitFiles& files, const Notes& notes, Json* json);

}  // namespace kalmia::analysis
