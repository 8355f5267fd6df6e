#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "kalmia/analysis/report/CsvFile.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/text/internal/Json.h"
#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia::analysis {

constexpr std::size_t kLinesShown = 20;  ///< of loadings and of scores, in texts

/// Components, and the symbol before their numbers: t, po.
struct NamedComponents {
  std::string symbol;
  NCDataMatrix<float> prim;  ///< components in rows
};

// Matrices with components in rows, turned: a line for each name, a column for each component, under its symbol and its
// number.

/// At most kLinesShown lines, then one that says how many more there are. `what` is the title of the names.
std::string NamedComponentsText(const std::string& what, const std::vector<std::string>& names,
                                const std::vector<NamedComponents>& parts);
/// A list of objects {"name": ..., symbol: [one number for each component], ...}, null for what is missing.
Json NamedComponentsJson(const std::vector<std::string>& names, const std::vector<NamedComponents>& parts);
CsvFile NamedComponentsCsv(const std::string& file, const std::string& what, const std::vector<std::string>& names,
                           const std::vector<NamedComponents>& parts, const CsvMarks& marks);

}  // namespace kalmia::analysis
