#pragma once

#include <cstddef>
#include <vector>

#include "kalmia/signal/Wavelet.h"

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

}  // namespace kalmia::analysis
