#pragma once

#include <cstddef>
#include <istream>
#include <ostream>
#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"

namespace kalmia::analysis {

// Counts and numbers in the entries of a file. Readers return false, before they take memory, where bytes are missing.

/// Every NaN is written as the same bytes, so that equal models have equal files.
void WriteNumbers(std::vector<double> numbers, std::ostream& stream);
bool ReadNumbers(std::istream& stream, std::size_t count, std::vector<double>* numbers);

/// A count, from `least` on.
bool ReadCount(std::istream& stream, int least, std::size_t* count);

/// The cells of a matrix whose shape the reader knows, row after row.
bool ReadMatrix(std::istream& stream, std::size_t rows, std::size_t columns, RealMatrix* matrix);

bool AreFinite(const std::vector<double>& numbers);

bool IsAtEnd(std::istream& stream);

}  // namespace kalmia::analysis
