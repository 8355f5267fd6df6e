#pragma once

#include <istream>
#include <ostream>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/model/RowTerms.h"

namespace kalmia::analysis {

// Entries of plain numbers, as docs/model-file.md lists them. Readers return false unless there are moments of `scores`
// components, and as many Y columns and rows as the arguments say.

void WriteRowTerms(const RowTerms& terms, std::ostream& stream);
bool ReadRowTerms(std::istream& stream, std::size_t scores, std::size_t yColumns, RowTerms* terms);

void WriteRowStatistics(const RowStatistics& statistics, std::ostream& stream);
bool ReadRowStatistics(std::istream& stream, std::size_t rows, std::size_t yColumns, RowStatistics* statistics);

}  // namespace kalmia::analysis
