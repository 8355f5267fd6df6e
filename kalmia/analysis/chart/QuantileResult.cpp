#include "kalmia/analysis/chart/QuantileResult.h"

#include <cstdlib>
#include <iterator>

#include "kalmia/analysis/chart/internal/Distributions.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

constexpr DistributionKind kKinds[] = {{"t", "t", "T", true, 1},
                                       {"f", "F", "F", false, 2},
                                       {"chi2", "chi2", "Chi2", false, 1},
                                       {"normal", "z", "Z", true, 0}};

[[noreturn]] void Refuse(const QuantileRecipe& recipe, const char* setting, const std::string& why) {
  throw BadRequest("a quantile of " + recipe.distribution + " " + why, InSetting(setting));
}

void CheckDf(const QuantileRecipe& recipe, bool takes, const std::optional<double>& df, const char* setting,
             const std::string& what) {
  if (df && !takes) Refuse(recipe, setting, "takes no " + what);
  if (!takes || (df && *df >= kLeastDf && *df <= kMostDf)) return;
  Refuse(recipe, setting,
         "needs " + what + " from " + Shortest(kLeastDf) + " to " + Significant(kMostDf, 1) +
             (df ? ", not " + Shortest(*df) : ""));
}

void CheckRecipe(const QuantileRecipe& recipe, const DistributionKind& kind) {
  if (!(recipe.probability > 0.0 && recipe.probability < 1.0)) {
    Refuse(recipe, "probability", "needs a probability above 0 and below 1");
  }
  CheckDf(recipe, kind.dfs >= 1, recipe.df, "df", "degrees of freedom");
  CheckDf(recipe, kind.dfs >= 2, recipe.df2, "df2", "degrees of freedom of a denominator");
  if (recipe.oneSided && !kind.hasSign) Refuse(recipe, "oneSided", "has one side already");
}

/// Of the number, or of its size where it has a sign.
double PositiveQuantile(const QuantileRecipe& recipe, double share, Tail tail) {
  if (recipe.distribution == "normal") return QuantileOfAbsoluteNormal(share, tail);
  if (recipe.distribution == "t") return QuantileOfAbsoluteT(share, tail, *recipe.df);
  if (recipe.distribution == "chi2") return QuantileOfChiSquared(share, tail, *recipe.df);
  return QuantileOfF(share, tail, *recipe.df, *recipe.df2);
}

/// The smaller tail is half of what lies beyond the size on either side.
double OneSidedQuantile(const QuantileRecipe& recipe, double share, Tail tail) {
  if (share == 0.5) return 0.0;
  const bool isSmaller = share < 0.5;
  const double size = PositiveQuantile(recipe, 2.0 * (isSmaller ? share : 1.0 - share), Tail::Upper);
  return isSmaller == (tail == Tail::Upper) ? size : -size;
}

}  // namespace

const std::vector<std::string>& DistributionWords() {
  static const std::vector<std::string> words = [] {
    std::vector<std::string> all;
    for (const DistributionKind& kind : kKinds) all.emplace_back(kind.word);
    return all;
  }();
  return words;
}

const DistributionKind& DistributionOf(const std::string& word) {
  for (const DistributionKind& kind : kKinds) {
    if (word == kind.word) return kind;
  }
  throw BadRequest("a distribution is " + Either(DistributionWords()) + ", not " + Quoted(word),
                   InSetting("distribution"));
}

QuantileResult ComputeQuantile(const QuantileRecipe& recipe) {
  const DistributionKind& kind = DistributionOf(recipe.distribution);
  CheckRecipe(recipe, kind);
  const Tail tail = kind.hasSign != recipe.complement ? Tail::Lower : Tail::Upper;
  const double exact = recipe.oneSided ? OneSidedQuantile(recipe, recipe.probability, tail)
                                       : PositiveQuantile(recipe, recipe.probability, tail);
  const double rounded = std::strtod(Significant(exact, kQuantileDigits).c_str(), nullptr);
  return {recipe, kind.hasSign && !recipe.oneSided, tail, rounded};
}

}  // namespace kalmia::analysis
