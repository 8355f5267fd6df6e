#pragma once

#include <string>

namespace kalmia::analysis {

/// No filled cell moves by more than this, in standard deviations, in the round that ends the refitting.
constexpr double kSettled = 1e-4;

/// The model that filled cells come from.
struct FillModel {
  int components = 0;
  int rounds = 0;          ///< refits to the filled table
  double lastMove = 0.0;   ///< of any cell in the last of them, in standard deviations
  std::string endedEarly;  ///< why there are fewer components than asked for; empty if there are not

  bool Settled() const { return lastMove <= kSettled; }
};

}  // namespace kalmia::analysis
