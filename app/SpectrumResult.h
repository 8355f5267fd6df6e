#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/CsvText.h"
#include "app/Notes.h"

namespace kalmia::app {

/// One column and its mean power in segments.
struct ColumnSpectrum {
  std::string column;
  int missing;                ///< cells that were filled along straight lines
  std::vector<double> power;  ///< at the frequencies i / segment, i = 0 to segment / 2, per row
};

/// What `kalmia spectrum` found.
struct SpectrumResult {
  std::string table;
  int rows;
  std::string detrend, window;  ///< the words of the options
  int lags;
  int segment;
  int segments;                       ///< so many, each half over the next
  std::vector<ColumnSpectrum> parts;  ///< the column, and the one of --with if there is one
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

std::string SpectrumText(const SpectrumResult& result);
std::string SpectrumJson(const SpectrumResult& result, const Notes& notes);
/// correlation.csv and power.csv.
std::vector<CsvFile> SpectrumCsvFiles(const SpectrumResult& result, const CsvMarks& marks);
/// The correlations, and below them the power of each column.
std::string SpectrumSvg(const SpectrumResult& result);

}  // namespace kalmia::app
