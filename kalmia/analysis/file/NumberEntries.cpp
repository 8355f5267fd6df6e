// Counts and numbers in the entries of a model file.

#include "kalmia/analysis/file/internal/NumberEntries.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "kalmia/analysis/text/internal/Bytes.h"
#include "kalmia/support/VexStream.h"

namespace kalmia::analysis {

void WriteNumbers(std::vector<double> numbers, std::ostream& stream) {
  for (double& number : numbers) {
    if (std::isnan(number)) number = std::numeric_limits<double>::quiet_NaN();
  }
  WriteDoubles(numbers, stream);
}

bool ReadNumbers(std::istream& stream, std::size_t count, std::vector<double>* numbers) {
  if (!HasBytesFor(stream, static_cast<std::int64_t>(count), sizeof(double))) return false;
  numbers->resize(count);
  for (double& number : *numbers) {
    if (!ReadDouble(&number, stream)) return false;
  }
  return true;
}

bool ReadCount(std::istream& stream, int least, std::size_t* count) {
  int read = 0;
  if (!ReadInteger(&read, stream) || read < least) return false;
  *count = static_cast<std::size_t>(read);
  return true;
}

bool ReadMatrix(std::istream& stream, std::size_t rows, std::size_t columns, RealMatrix* matrix) {
  if (columns != 0 && rows > std::numeric_limits<std::uint32_t>::max() / columns) return false;
  matrix->rows = rows;
  matrix->columns = columns;
  return ReadNumbers(stream, rows * columns, &matrix->cells);
}

bool AreFinite(const std::vector<double>& numbers) {
  return std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); });
}

bool IsAtEnd(std::istream& stream) { return stream.peek() == std::istream::traits_type::eof(); }

}  // namespace kalmia::analysis
