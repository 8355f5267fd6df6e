#include "app/StatisticsOptions.h"

#include "app/ChartTypes.h"
#include "app/CommandOptions.h"

namespace kalmia::app {

namespace {

bool IsAnything(double /*value*/) { return true; }
bool IsPositive(double value) { return value > 0.0; }
bool IsWeight(double value) { return value > 0.0 && value <= 1.0; }

}  // namespace

void DeclareChart(CommandOptions* command, ChartOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header");
  command->Text("--column", "NAME", &options->column, "column of the measurements in their order, always needed");
  command->Require("--column");
  command->Choice("--type", "TYPE", ChartTypeWords(), &options->type,
                  "always needed: individual (values, target +- 3 standard deviations), mean-range and mean-sd (means "
                  "and spreads of subgroups), cusum, ewma, or ewma-sd (the same, but the process has the standard "
                  "deviation of the values)");
  command->Require("--type");
  command->Number("--subgroup", 1, &options->subgroup,
                  "values in a subgroup (default: 1); from 2 to 25 for mean-range and mean-sd");
  command->Real("--target", &options->target, "a number", IsAnything, "centre line (default: the mean of the means)");
  command->Real("--sigma", &options->sigma, "a number above 0", IsPositive,
                "standard deviation of the process (default: estimated from the column)");
  command->Real("--lambda", &options->lambda, "a number above 0 and up to 1", IsWeight,
                "weight of ewma and ewma-sd (default: the one with the smallest forecast errors)");
  command->Text("--limits-from", "FILE", &options->limitsFrom,
                "take target and limits from this file, which --save-limits has written");
  for (const char* own : {"--target", "--sigma", "--lambda"}) command->Exclude("--limits-from", own);
  command->Text("--save-limits", "FILE", &options->saveLimits, "store target and limits");
  command->Text("--csv", "FILE", &options->csv, "write the points, their limits and signals as CSV");
  command->Text("--svg", "FILE", &options->svg, "draw the chart");
  command->Examples(
      "Examples:\n"
      "  kalmia chart drift.csv --column diameter --type mean-range --subgroup 5 --svg chart.svg\n"
      "  kalmia chart first.csv --column ph --type cusum --save-limits ph.limits\n"
      "  kalmia chart next.csv --column ph --type cusum --limits-from ph.limits");
}

void DeclareHistogram(CommandOptions* command, HistogramOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header");
  command->Text("--column", "NAME", &options->column, "column of numbers, always needed");
  command->Require("--column");
  command->Text("--csv", "FILE", &options->csv, "write the bins and the rows in each as CSV");
  command->Text("--svg", "FILE", &options->svg, "draw the histogram");
  command->Examples("Example:\n  kalmia histogram wine.csv --column alcohol --svg alcohol.svg");
}

}  // namespace kalmia::app
