#include "kalmia/analysis/report/QuantileReport.h"

#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

namespace {

std::string DistributionText(const QuantileRecipe& recipe) {
  if (recipe.distribution == "normal") return "Z having the standard normal distribution";
  const std::string freedom = Shortest(*recipe.df) + (recipe.df2 ? " and " + Shortest(*recipe.df2) : "") +
                              (!recipe.df2 && *recipe.df == 1.0 ? " degree of freedom" : " degrees of freedom");
  if (recipe.distribution == "t") return "T having Student's distribution with " + freedom;
  if (recipe.distribution == "chi2") return "Chi2 having the chi-square distribution with " + freedom;
  return "F having the distribution of the ratio of two variances with " + freedom;
}

}  // namespace

std::string QuantileText(const QuantileResult& result) {
  const DistributionKind& kind = DistributionOf(result.recipe.distribution);
  const std::string bars = result.isOfSize ? "|" : "";
  return kind.symbol + (" = " + Significant(result.value, kQuantileDigits)) + "\n\n" + bars + kind.variable + bars +
         (result.tail == Tail::Lower ? " stays below it" : " exceeds it") + " with probability " +
         Shortest(result.recipe.probability) + ", " + DistributionText(result.recipe) + "\n";
}

std::string QuantileJson(const QuantileResult& result) {
  const QuantileRecipe& recipe = result.recipe;
  Json json = JsonHeader("kalmia-quantile");
  json["distribution"] = recipe.distribution;
  json["df"] = recipe.df ? Json(*recipe.df) : Json();
  json["df2"] = recipe.df2 ? Json(*recipe.df2) : Json();
  json["probability"] = recipe.probability;
  json["twoSided"] = result.isOfSize;
  json["tail"] = result.tail == Tail::Lower ? "below" : "above";
  json["quantile"] = JsonNumber(result.value);
  json["notes"] = Json::array();  // nothing is done of its own accord
  return JsonText(json);
}

}  // namespace kalmia::analysis
