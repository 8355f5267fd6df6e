#include "app/Commands.h"
#include "app/Failure.h"
#include "app/Numbers.h"
#include "kalmia/statistics/Sta.h"

namespace kalmia::app {

namespace {

constexpr int kDigits = 6;
constexpr double kNearLargestT = 63.9998, kNearLargestF = 99998.0;  ///< where the searches give up

[[noreturn]] void Refuse(const std::string& message) {
  throw Failure(ExitCode::Usage, message + "; see kalmia quantile --help");
}

std::string Given(double number) { return Shortest(number); }

std::string QuantileOfT(const QuantileOptions& options, Notes* notes) {
  if (options.df2) Refuse("--df2 goes with f, not t");
  const double p = *options.probability, df = *options.df;
  if (options.oneSided && p < 0.5) {
    Refuse("--one-sided takes probabilities from 0.5 on, not " + Given(p) + ": the quantile is that of " +
           Given(1.0 - p) + " with the sign turned");
  }
  const float t = Sta::GetStudentsT(static_cast<float>(p), static_cast<float>(df), options.oneSided);
  if (t > kNearLargestT) notes->Add("the search ends at 64: the quantile may be larger");
  return "t = " + Significant(t, kDigits) + "\n\n" + (options.oneSided ? "T" : "|T|") +
         " stays below it with probability " + Given(p) + ", T having Student's distribution with " + Given(df) +
         " degrees of freedom\n";
}

std::string QuantileOfF(const QuantileOptions& options, Notes* notes) {
  if (!options.df2) Refuse("quantile f needs --df2 X: degrees of freedom of the denominator");
  if (options.oneSided) Refuse("--one-sided goes with t, not f");
  const double p = *options.probability, df1 = *options.df, df2 = *options.df2;
  const float f = Sta::FFTest(static_cast<float>(df1), static_cast<float>(df2), static_cast<float>(p));
  if (f > kNearLargestF) notes->Add("the search ends at 99999: the quantile may be larger");
  return "F = " + Significant(f, kDigits) + "\n\nF exceeds it with probability " + Given(p) +
         ", F having the distribution of the ratio of two variances with " + Given(df1) + " and " + Given(df2) +
         " degrees of freedom\n";
}

}  // namespace

std::string RunCommand(const QuantileOptions& options, Notes* notes) {
  return options.distribution == "t" ? QuantileOfT(options, notes) : QuantileOfF(options, notes);
}

}  // namespace kalmia::app
