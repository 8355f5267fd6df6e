#include "app/command/Commands.h"
#include "kalmia/analysis/chart/Quantile.h"
#include "kalmia/analysis/report/QuantileReport.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::app {

using namespace analysis;

namespace {

[[noreturn]] void Refuse(const std::string& message) { throw BadRequest(message + "; see kalmia quantile --help"); }

void CheckDf(const DistributionKind& kind, int place, const char* option, const std::optional<double>& df) {
  const std::string word = kind.word, name = option;
  if (df && place > kind.dfs) Refuse(name + " goes with " + (place == 1 ? "t, f and chi2" : "f") + ", not " + word);
  if (!df && place <= kind.dfs) {
    Refuse("quantile " + word + " needs " + name + " X: degrees of freedom" +
           (place == 2 ? " of the denominator" : ""));
  }
  if (!df || (*df >= kLeastDf && *df <= kMostDf)) return;
  Refuse(name + " takes degrees of freedom from " + Shortest(kLeastDf) + " to " + Significant(kMostDf, 1) + ", not " +
         Shortest(*df));
}

void CheckOptions(const QuantileOptions& options, const DistributionKind& kind) {
  CheckDf(kind, 1, "--df", options.df);
  CheckDf(kind, 2, "--df2", options.df2);
  if (options.oneSided && !kind.hasSign) Refuse("--one-sided goes with t and normal, not " + std::string(kind.word));
}

QuantileResult Compute(const QuantileOptions& options) {
  QuantileRecipe recipe;
  recipe.distribution = options.distribution;
  recipe.probability = *options.probability;  // which the command line has to give
  recipe.df = options.df;
  recipe.df2 = options.df2;
  recipe.oneSided = options.oneSided;
  recipe.complement = options.complement;
  try {
    return ComputeQuantile(recipe);
  } catch (const BadRequest& failure) {
    Refuse(failure.what());
  }
}

}  // namespace

std::string RunCommand(const QuantileOptions& options, Notes* notes) {
  CheckOptions(options, DistributionOf(options.distribution));
  const QuantileResult result = Compute(options);
  return options.json ? QuantileJson(result, *notes) : QuantileText(result);
}

}  // namespace kalmia::app
