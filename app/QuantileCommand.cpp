#include <cstdlib>

#include "app/Commands.h"
#include "app/Distributions.h"
#include "app/Failure.h"
#include "app/Json.h"
#include "app/Numbers.h"

namespace kalmia::app {

namespace {

constexpr int kDigits = 10;

[[noreturn]] void Refuse(const std::string& message) { throw BadRequest(message + "; see kalmia quantile --help"); }

/// A distribution that the command knows: whether it is that of a number of either sign, of which the size is judged,
/// and its degrees of freedom.
struct Kind {
  const char* word;
  const char* symbol;
  const char* variable;
  bool hasSign;
  int dfs;
};

constexpr Kind kKinds[] = {{"t", "t", "T", true, 1},
                           {"f", "F", "F", false, 2},
                           {"chi2", "chi2", "Chi2", false, 1},
                           {"normal", "z", "Z", true, 0}};

const Kind& KindOf(const std::string& word) {
  const Kind* kind = kKinds;
  while (word != kind->word) ++kind;  // the options let only these words through
  return *kind;
}

void CheckDf(const Kind& kind, int place, const char* option, const std::optional<double>& df) {
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

void CheckOptions(const QuantileOptions& options, const Kind& kind) {
  CheckDf(kind, 1, "--df", options.df);
  CheckDf(kind, 2, "--df2", options.df2);
  if (options.oneSided && !kind.hasSign) Refuse("--one-sided goes with t and normal, not " + std::string(kind.word));
}

/// Of the number, or of its size where it has a sign.
double PositiveQuantile(const QuantileOptions& options, double share, Tail tail) {
  if (options.distribution == "normal") return QuantileOfAbsoluteNormal(share, tail);
  if (options.distribution == "t") return QuantileOfAbsoluteT(share, tail, *options.df);
  if (options.distribution == "chi2") return QuantileOfChiSquared(share, tail, *options.df);
  return QuantileOfF(share, tail, *options.df, *options.df2);
}

/// The smaller tail is half of what lies beyond the size on either side.
double OneSidedQuantile(const QuantileOptions& options, double share, Tail tail) {
  if (share == 0.5) return 0.0;
  const bool isSmaller = share < 0.5;
  const double size = PositiveQuantile(options, 2.0 * (isSmaller ? share : 1.0 - share), Tail::Upper);
  return isSmaller == (tail == Tail::Upper) ? size : -size;
}

/// Rounded to the digits that are shown, all of which are right.
double QuantileOf(const QuantileOptions& options, Tail tail) {
  const double share = *options.probability;
  const double exact =
      options.oneSided ? OneSidedQuantile(options, share, tail) : PositiveQuantile(options, share, tail);
  return std::strtod(Significant(exact, kDigits).c_str(), nullptr);
}

std::string DistributionText(const QuantileOptions& options) {
  if (options.distribution == "normal") return "Z having the standard normal distribution";
  const std::string freedom = Shortest(*options.df) + (options.df2 ? " and " + Shortest(*options.df2) : "") +
                              (!options.df2 && *options.df == 1.0 ? " degree of freedom" : " degrees of freedom");
  if (options.distribution == "t") return "T having Student's distribution with " + freedom;
  if (options.distribution == "chi2") return "Chi2 having the chi-square distribution with " + freedom;
  return "F having the distribution of the ratio of two variances with " + freedom;
}

std::string QuantileJson(const QuantileOptions& options, const Kind& kind, Tail tail, double quantile,
                         const Notes& notes) {
  Json json = JsonHeader("kalmia-quantile");
  json["distribution"] = options.distribution;
  json["df"] = options.df ? Json(*options.df) : Json();
  json["df2"] = options.df2 ? Json(*options.df2) : Json();
  json["probability"] = *options.probability;
  json["twoSided"] = kind.hasSign && !options.oneSided;
  json["tail"] = tail == Tail::Lower ? "below" : "above";
  json["quantile"] = JsonNumber(quantile);
  json["notes"] = notes.Lines();
  return JsonText(json);
}

}  // namespace

std::string RunCommand(const QuantileOptions& options, Notes* notes) {
  const Kind& kind = KindOf(options.distribution);
  CheckOptions(options, kind);
  const Tail tail = kind.hasSign != options.complement ? Tail::Lower : Tail::Upper;
  const double quantile = QuantileOf(options, tail);
  if (options.json) return QuantileJson(options, kind, tail, quantile, *notes);
  const std::string bars = kind.hasSign && !options.oneSided ? "|" : "";
  return kind.symbol + (" = " + Significant(quantile, kDigits)) + "\n\n" + bars + kind.variable + bars +
         (tail == Tail::Lower ? " stays below it" : " exceeds it") + " with probability " +
         Shortest(*options.probability) + ", " + DistributionText(options) + "\n";
}

}  // namespace kalmia::app
