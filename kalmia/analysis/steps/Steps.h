#pragma once

#include <string>
#include <vector>

#include "kalmia/signal/Wavelet.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// What a step of preprocessing does. The numbers stand in files.
enum class StepKind : int {
  Linear = 1,
  Log = 2,
  NegLog = 3,
  Logit = 4,
  Exp = 5,
  Power = 6,
  Snv = 7,
  Detrend = 8,
  Smooth = 9,
  Derivative = 10,
  WaveletDenoise = 11,
  WaveletCompress = 12,
  WaveletRestore = 13
};

/// One step of a chain with all its parameters, in the order in which they are written. A detrending mode and a family
/// of wavelets stand as their numbers, the order of a wavelet as its place in the family, from 1.
struct Step {
  StepKind kind;
  std::vector<double> parameters;

  int Whole(std::size_t i) const { return static_cast<int>(parameters[i]); }
  int FromEnd(std::size_t i) const { return Whole(parameters.size() - i); }
  /// The last two parameters: of smooth and derivative, and of the steps with wavelets.
  int Window() const { return FromEnd(2); }
  int Polynomial() const { return FromEnd(1); }
  Wavelet::WaveletFunctionType Family() const { return static_cast<Wavelet::WaveletFunctionType>(FromEnd(2)); }
  int Filter() const { return FromEnd(1); }
};

/// Reads "log, snv, derivative:1:15:2": steps with commas between them, or each on a line of its own; behind a step its
/// parameters, each after a colon; what is not said takes its default. Blank lines and what follows # are passed over.
/// Throws BadRequest that names the step and says what would be right; `source` is how it calls the text.
KALMIA_EXPORT std::vector<Step> ParseSteps(const std::string& text, const std::string& source);

/// The step as ParseSteps reads it, with every parameter: "derivative:1:15:2".
KALMIA_EXPORT std::string StepText(const Step& step);

/// Whether the parameters lie where ParseSteps would take them; a step from a file may be anything.
KALMIA_EXPORT bool IsValid(const Step& step);
/// Throws BadRequest where a step is not valid, or stands where it cannot; `source` is how messages call the steps.
KALMIA_EXPORT void RequireValid(const std::vector<Step>& steps, const std::string& source);

/// Every step with its parameters, their ranges and defaults, for people who ask for help.
KALMIA_EXPORT std::string StepsHelp();

}  // namespace kalmia::analysis
