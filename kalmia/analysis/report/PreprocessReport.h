#pragma once

#include <string>

#include "kalmia/analysis/steps/PreprocessedTable.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// Where a preprocessed table and its steps went.
struct PreprocessFiles {
  std::string out;
  std::string saved;  ///< the steps; empty: nowhere
};

/// The text of a report: the steps, with what they have learnt.
KALMIA_EXPORT std::string PreprocessText(const PreprocessedTable& result, const PreprocessFiles& files);

/// The same as JSON, format kalmia-preprocess.
KALMIA_EXPORT std::string PreprocessJson(const Table& table, const PreprocessedTable& result,
                                         const PreprocessFiles& files);

}  // namespace kalmia::analysis
