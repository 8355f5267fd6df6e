#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/table/CsvTable.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// The words that a recipe takes.
const std::vector<std::string>& WindowWords();
const std::vector<std::string>& DetrendWords();

/// What to compute, of rows that are equally far apart.
struct SpectrumRecipe {
  std::string column;
  std::string with;  ///< correlated with the column, and a spectrum of it too; empty: the column alone
  int lags = -1;     ///< at most the number of rows; negative: a quarter of the rows, at most 30
  int segment = 0;   ///< rows, a power of two below twice their number; 0: up to half of the rows, at most 128
  std::string window = "hann";   ///< one of WindowWords()
  std::string detrend = "mean";  ///< taken off first, one of DetrendWords()
};

/// Whether a segment can have so many rows: a power of two, at least 2.
bool IsSegment(int rows);
/// The largest power of two up to `most`, which is at least 1, and up to 2^30.
int PowerOfTwoUpTo(std::int64_t most);
/// The largest segment for a column of so many rows, at least 2: more than half of it has to be there.
int LargestSegment(int rows);

/// One column and its mean power in segments.
struct ColumnSpectrum {
  std::string column;
  int missing;                ///< cells that were filled along straight lines
  std::vector<double> power;  ///< at the frequencies i / segment, i = 0 to segment / 2, per row
};

/// Correlations and power spectra of a column, or of two.
struct SpectrumResult {
  std::string table;
  int rows;
  std::string detrend, window;  ///< the words of the recipe
  int lags;
  int segment;
  int segments;                       ///< so many, each half over the next
  std::vector<ColumnSpectrum> parts;  ///< the column, and the one it is correlated with if there is one
  std::vector<double> correlations;   ///< of the column with itself from lag 0, with the other one from lag -lags on

  bool IsCross() const { return parts.size() > 1; }
  int FirstLag() const { return IsCross() ? -lags : 0; }
  double CorrelationLimit() const;  ///< 1.96 / sqrt(rows): 95 % of the correlations of unrelated rows lie within
  double Frequency(int i) const { return static_cast<double>(i) / segment; }
  /// The index of the largest power apart from that at frequency 0; nothing where all others are 0.
  static std::optional<int> Peak(const ColumnSpectrum& part);
  /// The lag of the correlation furthest from 0, the first of equals; nothing where a column has no power at all: what
  /// comes out then is rounding.
  std::optional<int> PeakLag() const;
  std::string Title() const;
};

/// The correlations and spectra that the recipe asks for. Missing cells are filled along straight lines between their
/// neighbours, with a note. `progress` may be null.
/// Throws BadData as ReadMeasurements, for a column that does not vary, and for a power beyond single precision;
/// BadRequest for a recipe that makes no sense, or not for so many rows; Stopped where the bar wants to stop.
SpectrumResult ComputeSpectrum(const CsvTable& table, const SpectrumRecipe& recipe, Notes* notes,
                               NCProgress* progress);

}  // namespace kalmia::analysis
