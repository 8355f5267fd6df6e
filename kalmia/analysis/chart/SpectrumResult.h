#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// The words that a recipe takes.
KALMIA_EXPORT const std::vector<std::string>& WindowWords();
KALMIA_EXPORT const std::vector<std::string>& DetrendWords();

/// What to compute, of rows that are equally far apart.
struct SpectrumRecipe {
  std::string column;
  std::string with;  ///< correlated with the column, and a spectrum of it too; empty: the column alone
  int lags = -1;     ///< at most the number of rows; negative: a quarter of the rows, at most 30
  int segment = 0;   ///< rows, a power of two below twice their number; 0: up to half of the rows, at most 128
  std::string window = "hann";   ///< one of WindowWords()
  std::string detrend = "mean";  ///< taken off first, one of DetrendWords()
};

/// One column and its mean power in segments.
struct ColumnSpectrum {
  std::string column;
  int missing;                ///< cells that were filled along straight lines
  std::vector<double> power;  ///< at the frequencies i / segment, i = 0 to segment / 2, per row
};

/// Correlations and power spectra of a column, or of two.
struct KALMIA_EXPORT SpectrumResult {
  std::string table;
  int rows;
  std::string detrend, window;  ///< the words of the recipe
  int lags;
  int segment;
  int segments;                       ///< so many, each half over the next
  std::vector<ColumnSpectrum> parts;  ///< the column, and the one it is correlated with if there is one
  std::vector<double> correlations;   ///< of the column with itself from lag 0, with the other one from lag -lags on
  Notes notes;                        ///< what was done of its own accord

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

/// Throws BadRequest where the recipe makes no sense, whatever the data.
KALMIA_EXPORT void CheckSpectrum(const SpectrumRecipe& recipe);

/// The correlations and spectra that the recipe asks for. Missing cells are filled along straight lines between their
/// neighbours, with a note. `progress` may be null.
/// Throws as CheckSpectrum and ReadMeasurements do; BadData for a column that does not vary, for more lags or a longer
/// segment than its rows give, and for a power beyond single precision; Stopped where the bar wants to stop.
KALMIA_EXPORT SpectrumResult ComputeSpectrum(const SpectrumRecipe& recipe, const Table& table,
                                             NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
