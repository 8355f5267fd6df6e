#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/model/Judgement.h"
#include "kalmia/analysis/model/RealMatrix.h"

namespace kalmia::analysis {

/// Of what ClassFigures tells of rows that were left out, what is kept of each number of components.
struct ClassRates {
  double accuracy = kNotANumber;
  double balancedAccuracy = kNotANumber;
};

/// What full refits say of models of one number of components.
struct StoredValidationEntry {
  int components = 0;
  /// Of OPLS the predictive and the orthogonal ones, of O2PLS the joint ones, those unique to X, those unique to Y;
  /// nothing where all are of one kind.
  std::vector<int> kinds;
  double r2x = kNotANumber;  ///< described share of X, where the model is fitted to all rows
  double r2y = kNotANumber;
  double press = 0.0;
  double q2 = 0.0;
  std::vector<double> rmsecv;   ///< of each Y column, in its units; empty for a model of X alone
  std::vector<double> q2PerY;
  std::optional<ClassRates> classes;  ///< of left-out rows, where Y are dummies of classes
};

/// Of a permutation test what is left without its runs.
struct StoredPermutation {
  int runs = 0;
  PermutationJudgement judgement;
};

/// One kind of VIP, a number for each X column.
struct StoredImportance {
  std::vector<double> vip;
  std::vector<double> standardErrors;
};

/// Standard errors by the jack-knife, which has one degree of freedom less than there are groups. VIP stands beside its
/// own: it cannot be computed without the scores of the training rows.
struct StoredJackKnife {
  RealMatrix coefficients;  ///< Y columns by the slopes of X columns and the intercept, in the units of the table
  std::vector<StoredImportance> importances;  ///< of PLS one, of OPLS predictive and orthogonal; none if not judged
};

constexpr auto kFoldsOfLabels = "group-column";  ///< how folds by labels are called, beside the words of FoldScheme

/// The judgement that a stored model carries, as the command reported it.
struct StoredValidation {
  std::string folds;       ///< how rows were divided: a word of FoldScheme, or group-column
  int groups = 0;
  int repeats = 1;
  std::uint64_t seed = 0;  ///< of random folds
  std::string rule;        ///< that chose the number of components; empty where it was given
  int chosen = 0;
  std::vector<StoredValidationEntry> components;  ///< by number of components, from 0 on
  std::vector<StoredValidationEntry> xFromY;      ///< of O2PLS: the same of X as it is predicted from Y

  // Of the chosen number.
  std::vector<std::optional<CvAnova>> cvAnova;  ///< of each Y column; empty of classes, and of a model of X alone
  std::optional<StoredPermutation> permutation;
  std::optional<StoredJackKnife> jackKnife;

  /// The place of the chosen number among `components`; their number where it is none of them.
  std::size_t Model() const {
    std::size_t model = 0;
    while (model < components.size() && components[model].components != chosen) ++model;
    return model;
  }
};

}  // namespace kalmia::analysis
