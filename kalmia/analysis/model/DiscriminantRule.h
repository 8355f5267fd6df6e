#pragma once

#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// How likely classes are before anything is measured.
enum class ClassPriors {
  Equal,
  Shares  ///< as frequent as among the rows that the rule is learnt from
};

/// Assigns classes by what a model says of their dummy columns (one of 0 and 1 for each of C classes): linear
/// discriminant analysis of the fitted dummies. With f the fitted dummies of a row, mu_g their means in class g and S
/// their pooled covariance within classes (divisor N - C), in the basis of the eigenvectors of their total covariance
/// that have more than 1e-8 of its trace, at most C - 1,
///
///   v_g = ln prior_g - (f - mu_g)' (S + 1e-8 trace(total) I)^-1 (f - mu_g) / 2.
///
/// The row's class is that of the largest v_g. The largest dummy would do for two classes of one size alone: a class
/// between others is hidden by them. The share of the trace keeps S regular where a model with more columns than rows
/// fits every dummy.
/// Sources: A. L. Pomerantsev, O. Y. Rodionova, J. Chemometrics 32 (2018) e3030; U. Indahl, H. Martens, T. Naes,
/// J. Chemometrics 21 (2007) 529-536; masking: T. Hastie, R. Tibshirani, J. Friedman, Elements of Statistical Learning,
/// 2nd ed. (2009), 4.2.
struct DiscriminantRule {
  /// D x C: f in a basis where S is the unit matrix; D = 0 where all f are alike within 1e-10.
  RealMatrix directions;
  RealMatrix centres;             ///< C x D: the means of the classes in this basis
  std::vector<double> logPriors;  ///< of each class; minus infinity of one without a row to learn from
};

/// Learns from the fitted dummies, N x C, of rows whose class is known. Rows without a class (-1) or with a cell that
/// is not a number take no part; one row takes part at least, not checked. Where all f are alike, as under no
/// component, the largest prior decides, the first of equal ones. Throws BadData where squares of f overflow.
KALMIA_EXPORT DiscriminantRule LearnDiscriminantRule(const RealMatrix& fitted, const std::vector<int>& classOfRow,
                                                     ClassPriors priors);

/// v of each row, N x C, from its fitted or predicted dummies; no numbers in a row that has none. The values of several
/// repeats' rules may be averaged: differences between classes are what counts.
KALMIA_EXPORT RealMatrix DiscriminantValues(const DiscriminantRule& rule, const RealMatrix& dummies);

/// The class of the largest value in each row, the first of equal ones; -1 for a row without values.
KALMIA_EXPORT std::vector<int> AssignedClasses(const RealMatrix& values);

/// For each row and class v_g - ln sum over the others of exp v_h, by logarithms throughout: the logarithm of the odds
/// for the class against all others. Minus infinity for a class that the rule has not seen.
KALMIA_EXPORT RealMatrix LogOdds(const RealMatrix& values);

}  // namespace kalmia::analysis
