#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/Analysis.h"
#include "app/options/TableOptions.h"
#include "kalmia/analysis/chart/ChartRecipe.h"
#include "kalmia/analysis/chart/ExactTestResult.h"
#include "kalmia/analysis/chart/HistogramResult.h"
#include "kalmia/analysis/chart/QuantileResult.h"
#include "kalmia/analysis/chart/SpectrumResult.h"
#include "kalmia/analysis/figure/PlotTexts.h"

namespace kalmia::app {

class CommandOptions;

struct ChartOptions {
  std::string table;
  ReadOptions reading;
  ChartRecipe recipe;
  std::string limitsFrom;  ///< this and those below: empty for no file
  std::string saveLimits;
  std::string csv;
  std::string svg;
  std::string size;  ///< of the drawing; empty: the usual one
  CsvMarkOptions csvMarks;
  PlotTexts texts;
  bool json = false;
};

struct HistogramOptions {
  std::string table;
  ReadOptions reading;
  HistogramRecipe recipe;
  std::string csv;  ///< this and the next: empty for no file
  std::string svg;
  std::string size;  ///< of the drawing; empty: the usual one
  CsvMarkOptions csvMarks;
  PlotTexts texts;
  bool json = false;
};

struct FisherOptions {
  std::string table;
  ReadOptions reading;
  ExactTestRecipe recipe;
  bool json = false;
};

struct QuantileOptions {
  QuantileRecipe recipe;              ///< but for the probability
  std::optional<double> probability;  ///< which is always needed
  bool json = false;
};

struct SpectrumOptions {
  std::string table;
  ReadOptions reading;
  SpectrumRecipe recipe;
  bool json = false;
  std::string csvFolder;  ///< empty: no CSV files
  CsvMarkOptions csvMarks;
  std::string svg;        ///< empty: no drawing
  std::string size;       ///< of the drawing; empty: the usual one
};

void DeclareChart(CommandOptions* command, ChartOptions* options);
void DeclareHistogram(CommandOptions* command, HistogramOptions* options);
void DeclareFisher(CommandOptions* command, FisherOptions* options);
void DeclareQuantile(CommandOptions* command, QuantileOptions* options);
void DeclareSpectrum(CommandOptions* command, SpectrumOptions* options);

}  // namespace kalmia::app
