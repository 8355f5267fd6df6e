#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kalmia::analysis {

/// What full refits say of models of one number of components.
struct StoredValidationEntry {
  int components = 0;
  double press = 0.0;
  double q2 = 0.0;
  std::vector<double> rmsecv;   ///< of each Y column, in its units; empty for a model of X alone
  std::vector<double> q2PerY;
};

/// The judgement that a stored model carries, as the command reported it.
struct StoredValidation {
  std::string folds;       ///< how rows were divided
  int groups = 0;
  int repeats = 1;
  std::uint64_t seed = 0;  ///< of random folds
  std::string rule;        ///< that chose the number of components; empty where it was given
  int chosen = 0;
  std::vector<StoredValidationEntry> components;  ///< by number of components, from 0 on
};

}  // namespace kalmia::analysis
