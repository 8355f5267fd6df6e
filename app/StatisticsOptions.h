#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kalmia::app {

class CommandOptions;

struct ChartOptions {
  std::string table;
  std::string column;
  std::string type;    ///< one of ChartTypeWords()
  int subgroup = 0;    ///< 0: that of the limits read, otherwise 1
  std::optional<double> target, sigma, lambda;
  std::string limitsFrom;  ///< this and those below: empty for no file
  std::string saveLimits;
  std::string csv;
  std::string svg;
};

struct HistogramOptions {
  std::string table;
  std::string column;
  std::string csv;  ///< this and the next: empty for no file
  std::string svg;
};

struct FisherOptions {
  std::string table;
  std::string alternative = "two-sided";  ///< or less or greater
  bool hybrid = false;
};

struct QuantileOptions {
  std::string distribution;  ///< t or f
  std::optional<double> probability, df;
  std::optional<double> df2;  ///< of f alone
  bool oneSided = false;      ///< of t alone
};

void DeclareChart(CommandOptions* command, ChartOptions* options);
void DeclareHistogram(CommandOptions* command, HistogramOptions* options);
void DeclareFisher(CommandOptions* command, FisherOptions* options);
void DeclareQuantile(CommandOptions* command, QuantileOptions* options);

}  // namespace kalmia::app
