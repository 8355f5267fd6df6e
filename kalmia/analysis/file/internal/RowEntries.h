#pragma once

#include <istream>
#include <ostream>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/model/RowTerms.h"

namespace kalmia::analysis {

// Entries of plain numbers, as docs/model-file.md lists them. What is read can be worked with: moments of as many
// components as `scores` says, of Y as many columns as `yColumns`, rows as many as `rows`.

void WriteRowTerms(const RowTerms& terms, std::ostream& stream);
bool ReadRowTerms(std::istream& stream, std::size_t scores, std::size_t yColumns, RowTerms* terms);

void WriteRowStatistics(const RowStatistics& statistics, std::ostream& stream);
bool ReadRowStatistics(std::istream& stream, std::size_t rows, std::size_t yColumns, RowStatistics* statistics);

}  // namespace kalmia::analysis
