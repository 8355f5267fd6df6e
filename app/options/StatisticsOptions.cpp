#include "app/options/StatisticsOptions.h"

#include <utility>

#include "app/options/CommandOptions.h"
#include "app/options/FigureOptions.h"
#include "kalmia/analysis/chart/ChartTypes.h"
#include "kalmia/analysis/chart/QuantileResult.h"
#include "kalmia/analysis/chart/RunRules.h"

namespace kalmia::app {

namespace {

bool IsAnything(double /*value*/) { return true; }
bool IsPositive(double value) { return value > 0.0; }
bool IsWeight(double value) { return value > 0.0 && value <= 1.0; }

bool IsInsideZeroToOne(double value) { return value > 0.0 && value < 1.0; }

/// The texts of the drawing that `svg` names.
void DeclareTexts(CommandOptions* command, PlotTexts* texts, const std::string& yMeaning, const std::string* svg) {
  command->Text("--title", "TEXT", &texts->title, "title of the drawing");
  command->Text("--x-label", "TEXT", &texts->xLabel, "label below the drawing");
  command->Text("--y-label", "TEXT", &texts->yLabel, yMeaning);
  command->Check([texts, svg]() -> std::string {
    if (!svg->empty()) return "";
    const std::pair<const char*, const std::string*> given[] = {
        {"--title", &texts->title}, {"--x-label", &texts->xLabel}, {"--y-label", &texts->yLabel}};
    for (const auto& [name, text] : given) {
      if (!text->empty()) return std::string(name) + " is a text of the drawing: give --svg too";
    }
    return "";
  });
}

}  // namespace

void DeclareChart(CommandOptions* command, ChartOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header, also as .gz");
  command->Text("--column", "NAME", &options->recipe.column,
                "column of the measurements in their order, always needed");
  command->Require("--column");
  command->Choice("--type", "TYPE", ChartTypeWords(), &options->recipe.type,
                  "always needed: individual (values, target +- 3 standard deviations), mean-range and mean-sd (means "
                  "and spreads of subgroups), cusum, ewma, or ewma-sd (the same, but the process has the standard "
                  "deviation of the values)");
  command->Require("--type");
  command->Number("--subgroup", 1, &options->recipe.subgroup,
                  "values in a subgroup (default: 1); from 2 to 25 for mean-range and mean-sd");
  command->Real("--target", &options->recipe.target, "a number", IsAnything,
                "centre line (default: the mean of the means)");
  command->Real("--sigma", &options->recipe.sigma, "a number above 0", IsPositive,
                "standard deviation of the process (default: estimated from the column)");
  command->Choice("--sigma-from", "HOW", SigmaFromWords(), &options->recipe.sigmaFrom,
                  "for subgroups of 1: take the standard deviation from the mean moving-range (of neighbours, / 1.128; "
                  "default of individual and ewma) or from the values (default of cusum and ewma-sd)");
  command->Real("--lambda", &options->recipe.lambda, "a number above 0 and up to 1", IsWeight,
                "weight of ewma and ewma-sd (default: the one with the smallest forecast errors)");
  command->Input("--limits-from", &options->limitsFrom,
                 "take target and limits from this file, which --save-limits has written");
  for (const char* own : {"--target", "--sigma", "--sigma-from", "--lambda"}) command->Exclude("--limits-from", own);
  command->Exclude("--sigma", "--sigma-from");
  command->Choice("--rules", "NAME", RunRuleWords(), &options->recipe.rules,
                  "also look for runs, in charts of type individual, mean-range and mean-sd: by the 4 rules of "
                  "western-electric or the 8 of nelson");
  command->Text("--save-limits", "FILE", &options->saveLimits, "store target and limits");
  command->Text("--csv", "FILE", &options->csv, "write the points, their limits and signals as CSV");
  DeclareCsvMarks(command, &options->csvMarks, {{"--csv", &options->csv}});
  command->Text("--svg", "FILE", &options->svg, "draw the chart");
  DeclareSize(command, &options->size, &options->svg);
  DeclareTexts(command, &options->texts, "label of the measurements in the drawing (default: the name of the column)",
               &options->svg);
  command->Flag("--json", &options->json, "print JSON");
  DeclareReading(command, &options->reading);
  command->Examples(
      "Examples:\n"
      "  kalmia chart drift.csv --column diameter --type mean-range --subgroup 5 --svg chart.svg\n"
      "  kalmia chart first.csv --column ph --type individual --rules nelson\n"
      "  kalmia chart first.csv --column ph --type cusum --save-limits ph.limits\n"
      "  kalmia chart next.csv --column ph --type cusum --limits-from ph.limits");
}

void DeclareHistogram(CommandOptions* command, HistogramOptions* options) {
  command->File("TABLE", &options->table, "CSV table with a header, also as .gz");
  command->Text("--column", "NAME", &options->recipe.column, "column of numbers, always needed");
  command->Require("--column");
  command->Text("--csv", "FILE", &options->csv, "write the bins and the rows in each as CSV");
  DeclareCsvMarks(command, &options->csvMarks, {{"--csv", &options->csv}});
  command->Text("--svg", "FILE", &options->svg, "draw the histogram");
  DeclareSize(command, &options->size, &options->svg);
  DeclareTexts(command, &options->texts, "label beside the drawing (default: count)", &options->svg);
  command->Flag("--json", &options->json, "print JSON");
  DeclareReading(command, &options->reading);
  command->Examples("Example:\n  kalmia histogram wine.csv --column alcohol --svg alcohol.svg");
}

void DeclareFisher(CommandOptions* command, FisherOptions* options) {
  command->File("COUNTS", &options->table,
                "CSV table of counts with a header, also as .gz; columns of text are left out");
  command->Choice("--alternative", "A", AlternativeWords(), &options->recipe.alternative,
                  "of a 2 x 2 table: less (smaller first cells), greater, or two-sided (default: all tables that are "
                  "not more probable)");
  command->Flag("--hybrid", &options->recipe.hybrid,
                "larger tables: take chi-square for parts whose expected counts are large enough");
  command->Flag("--json", &options->json, "print JSON");
  DeclareReading(command, &options->reading);
  command->Examples("Example:\n  kalmia fisher counts.csv --alternative greater");
}

void DeclareQuantile(CommandOptions* command, QuantileOptions* options) {
  command->Word(
      "DISTRIBUTION", DistributionWords(), &options->recipe.distribution,
      "t, normal: find the number that |T| or |Z| stays below with the given probability; f, chi2: the number "
      "that F or Chi2 exceeds with it");
  const char* const inside = "a number above 0 and below 1";
  command->Real("--probability", &options->probability, inside, IsInsideZeroToOne, "always needed");
  command->Require("--probability");
  command->Real("--df", &options->recipe.df, "a number above 0", IsPositive,
                "degrees of freedom, of f those of the numerator; t, f and chi2 need it");
  command->Real("--df2", &options->recipe.df2, "a number above 0", IsPositive,
                "degrees of freedom of the denominator; f needs it");
  command->Flag("--one-sided", &options->recipe.oneSided, "t, normal: find the number that T or Z itself stays below");
  command->Flag(
      "--complement", &options->recipe.complement,
      "the probability is that of the other tail: of exceeding for t and normal, of staying below for f and chi2");
  command->Flag("--json", &options->json, "print JSON");
  command->Examples(
      "Examples:\n"
      "  kalmia quantile t --probability 0.95 --df 10\n"
      "  kalmia quantile f --probability 0.05 --df 3 --df2 20\n"
      "  kalmia quantile normal --one-sided --complement --probability 1e-9");
}

void DeclareSpectrum(CommandOptions* command, SpectrumOptions* options) {
  command->File("TABLE", &options->table,
                "CSV table with a header, also as .gz; its rows are equally far apart in time");
  command->Text("--column", "NAME", &options->recipe.column,
                "column of numbers, in the order of the rows, always needed");
  command->Require("--column");
  command->Text("--with", "NAME", &options->recipe.with,
                "correlate the column with this one instead of itself, and compute the spectra of both");
  command->Number("--lags", 0, &options->recipe.lags,
                  "correlations up to so many rows apart, at most the number of rows (default: a quarter of the rows, "
                  "at most 30)");
  command->Number("--segment", 2, &options->recipe.segment,
                  "rows in a segment of the power spectrum: a power of two below twice the number of rows (default: "
                  "the largest up to half of the rows, at most 128)");
  command->Choice("--window", "NAME", WindowWords(), &options->recipe.window,
                  "weights of the rows of a segment: hann (default, a raised cosine), welch (a parabola), bartlett (a "
                  "triangle)");
  command->Choice("--detrend", "NAME", DetrendWords(), &options->recipe.detrend,
                  "trend to subtract first: none, mean (default) or linear, a straight line");
  command->Flag("--json", &options->json, "print JSON");
  command->Text("--csv", "DIR", &options->csvFolder, "write correlation.csv and power.csv");
  DeclareCsvMarks(command, &options->csvMarks, {{"--csv", &options->csvFolder}});
  command->Text("--svg", "FILE", &options->svg, "draw correlations and spectra");
  DeclareSize(command, &options->size, &options->svg);
  DeclareReading(command, &options->reading);
  command->Examples(
      "Examples:\n"
      "  kalmia spectrum tank.csv --column level --lags 48 --svg level.svg\n"
      "  kalmia spectrum tank.csv --column level --with inflow --detrend linear --segment 64");
}

}  // namespace kalmia::app
