#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/steps/Step.h"

namespace kalmia::analysis {

// The list of steps, and how their parameters are written.

/// How the word of a parameter is read.
enum class Reading { Real, Whole, OddWhole, Mode, Family, WaveletOrder };

struct Parameter {
  const char* name;
  Reading reading;
  double lowest;
  double highest;
  const char* otherwise;  ///< its default; null for none
};

struct Kind {
  StepKind kind;
  const char* name;
  const char* whatItDoes;
  std::vector<Parameter> parameters;
};

/// All kinds of steps, in the order of their numbers.
const std::vector<Kind>& Kinds();
/// The kind of that name or number; null without one.
const Kind* FindKind(const std::string& name);
const Kind* FindKind(StepKind number);

/// "smooth:WINDOW[:POLYNOMIAL]", defaults in square brackets.
std::string Form(const Kind& kind);

// Below, `before` are the values of the parameters before this one: a filter depends on its family.

/// The value of a word, nothing if the parameter does not take it; and the word for a value.
std::optional<double> ValueOf(const Parameter& parameter, const std::string& word, bool isDefault,
                              const std::vector<double>& before);
std::string WordOf(const Parameter& parameter, double value, const std::vector<double>& before);
/// Whether some word gives the value.
bool IsValueOf(const Parameter& parameter, double value, const std::vector<double>& before);

/// The range of a parameter: "an odd number from 3 to 100001".
std::string RangeText(const Parameter& parameter, const std::vector<double>& before);
/// "window: an odd number from 3 to 100001 (11)", its default in brackets; empty for a filter.
std::string RangeHelp(const Parameter& parameter);
/// The families with the names of their filters, each on a line.
std::string FamiliesHelp();

/// Why parameters that are each in range do not go together; empty if they do.
std::string Disagreement(const Step& step);

}  // namespace kalmia::analysis
