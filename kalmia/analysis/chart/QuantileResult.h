#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/chart/DistributionTail.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The words for distributions: t, f, chi2 and normal.
KALMIA_EXPORT const std::vector<std::string>& DistributionWords();

/// A distribution that has a word: its symbols, whether its numbers can be negative, so that their size is judged, and
/// how many degrees of freedom it has.
struct DistributionKind {
  const char* word;
  const char* symbol;
  const char* variable;
  bool hasSign;
  int dfs;
};

/// Throws BadRequest for another word.
KALMIA_EXPORT const DistributionKind& DistributionOf(const std::string& word);

struct QuantileRecipe {
  std::string distribution;    ///< one of DistributionWords()
  double probability = 0.0;    ///< above 0 and below 1
  std::optional<double> df;    ///< of all but normal, from kLeastDf to kMostDf
  std::optional<double> df2;   ///< of f alone, likewise: the denominator's
  bool oneSided = false;       ///< of t and normal alone: the number itself, not its size
  bool complement = false;     ///< the probability is that of the other tail
};

struct QuantileResult {
  QuantileRecipe recipe;
  bool isOfSize;  ///< of a number that may have either sign
  Tail tail;      ///< which the probability is of
  double value;   ///< rounded to kQuantileDigits, all of which are right
};

constexpr int kQuantileDigits = 10;

/// The quantile: of t and normal, |x| stays below it with the given probability (`oneSided`: x itself); f and chi2 exceed
/// it with that probability. Throws BadRequest for a recipe that makes no sense, and where the quantile is beyond double precision.
KALMIA_EXPORT QuantileResult ComputeQuantile(const QuantileRecipe& recipe);

}  // namespace kalmia::analysis
