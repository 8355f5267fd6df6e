#pragma once

#include <string>
#include <vector>

#include "app/CsvText.h"
#include "app/PCAOutcome.h"

namespace kalmia::app {

/// The files of `kalmia pca --csv`, for a model that kept components: one line for each row or column of the table,
/// under its name.
std::vector<CsvFile> PCACsvFiles(const PCAOutcome& outcome, const CsvMarks& marks);

/// The names of these files, before there is a model.
std::vector<std::string> PCACsvFileNames();

}  // namespace kalmia::app
