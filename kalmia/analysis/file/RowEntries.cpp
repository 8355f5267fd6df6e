// What a model file holds of rows.

#include "kalmia/analysis/file/internal/RowEntries.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "kalmia/analysis/file/internal/NumberEntries.h"
#include "kalmia/analysis/text/internal/Bytes.h"
#include "kalmia/support/VexStream.h"

namespace kalmia::analysis {

namespace {

constexpr double kMostDegrees = 1e300;

void WriteMoments(const ScoreMoments& moments, std::ostream& stream) {
  WriteInteger(static_cast<int>(moments.rows), stream);
  WriteInteger(static_cast<int>(moments.means.size()), stream);
  WriteNumbers(moments.means, stream);
  WriteNumbers(moments.variances, stream);
}

bool ReadMoments(std::istream& stream, std::size_t scores, ScoreMoments* moments) {
  std::size_t count = 0;
  return ReadCount(stream, 0, &moments->rows) && ReadCount(stream, 0, &count) && count == scores &&
         ReadNumbers(stream, count, &moments->means) && ReadNumbers(stream, count, &moments->variances);
}

/// No degrees stand for none.
void WriteDistances(const std::optional<DistanceMoments>& moments, std::ostream& stream) {
  const DistanceMoments written = moments.value_or(DistanceMoments{0, 0.0, 0.0});
  WriteInteger(static_cast<int>(written.rows), stream);
  WriteDoubles({written.mean, written.degrees}, stream);
}

bool ReadDistances(std::istream& stream, std::optional<DistanceMoments>* moments) {
  DistanceMoments read;
  if (!ReadCount(stream, 0, &read.rows) || !ReadDouble(&read.mean, stream) || !ReadDouble(&read.degrees, stream)) {
    return false;
  }
  if (read.rows == 0 && read.degrees == 0.0) return true;
  *moments = read;
  return std::isfinite(read.mean) && read.mean >= 0.0 && read.degrees >= 1.0 && read.degrees <= kMostDegrees;
}

/// No degrees stand for none.
void WriteInterval(const std::optional<YIntervalTerms>& terms, std::ostream& stream) {
  WriteInteger(terms ? terms->degrees : 0, stream);
  if (!terms) return;
  WriteDoubles({terms->s}, stream);
  WriteMoments(terms->scores, stream);
}

bool ReadInterval(std::istream& stream, std::size_t scores, std::optional<YIntervalTerms>* terms) {
  YIntervalTerms read;
  if (!ReadInteger(&read.degrees, stream) || read.degrees < 0) return false;
  if (read.degrees == 0) return true;
  if (!ReadDouble(&read.s, stream) || !ReadMoments(stream, scores, &read.scores)) return false;
  read.rows = read.scores.rows;
  *terms = read;
  return std::isfinite(read.s) && read.s >= 0.0 && read.rows > 1;
}

/// No rows stand for none.
void WriteMatrix(const RealMatrix& matrix, std::ostream& stream) {
  WriteInteger(static_cast<int>(matrix.rows), stream);
  WriteNumbers(matrix.cells, stream);
}

bool ReadMatrixOrNone(std::istream& stream, std::size_t rows, std::size_t columns, RealMatrix* matrix) {
  std::size_t written = 0;
  if (!ReadCount(stream, 0, &written) || (written != 0 && written != rows)) return false;
  return written == 0 || (columns > 0 && ReadMatrix(stream, rows, columns, matrix));
}

}  // namespace

void WriteRowTerms(const RowTerms& terms, std::ostream& stream) {
  WriteMoments(terms.scores, stream);
  WriteDistances(terms.distances, stream);
  WriteDistances(terms.leftOut, stream);
  for (const std::optional<YIntervalTerms>& interval : terms.intervals) WriteInterval(interval, stream);
}

bool ReadRowTerms(std::istream& stream, std::size_t scores, std::size_t yColumns, RowTerms* terms) {
  if (!ReadMoments(stream, scores, &terms->scores) || !ReadDistances(stream, &terms->distances) ||
      !ReadDistances(stream, &terms->leftOut)) {
    return false;
  }
  for (std::size_t j = 0; j < yColumns; ++j) {
    terms->intervals.emplace_back();
    if (!ReadInterval(stream, scores, &terms->intervals.back())) return false;
  }
  return IsAtEnd(stream);
}

void WriteRowStatistics(const RowStatistics& statistics, std::ostream& stream) {
  WriteNumbers(statistics.t2, stream);
  WriteNumbers(statistics.absoluteDistances, stream);
  WriteMatrix(statistics.fitted, stream);
  WriteMatrix(statistics.leftOut, stream);
}

bool ReadRowStatistics(std::istream& stream, std::size_t rows, std::size_t yColumns, RowStatistics* statistics) {
  return ReadNumbers(stream, rows, &statistics->t2) && ReadNumbers(stream, rows, &statistics->absoluteDistances) &&
         ReadMatrixOrNone(stream, rows, yColumns, &statistics->fitted) &&
         ReadMatrixOrNone(stream, rows, yColumns, &statistics->leftOut) && IsAtEnd(stream);
}

}  // namespace kalmia::analysis
