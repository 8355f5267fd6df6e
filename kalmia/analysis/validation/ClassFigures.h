#pragma once

#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// How well classes are found, over rows that have a class and values. A rate without a row to count is not a number.
struct ClassFigures {
  std::vector<std::vector<int>> confusion;  ///< rows by their true class, columns by the assigned one
  int unpredictedRows = 0;                  ///< that have a class but no values; they are in no other figure
  double accuracy = kNotANumber;          ///< rows that are found among all of them
  double balancedAccuracy = kNotANumber;  ///< the mean of the sensitivities of classes that have rows
  std::vector<double> sensitivity;          ///< of each class: its rows that are found among all of them
  std::vector<double> specificity;          ///< of each class: rows of others that are not taken for it
  std::vector<double> auc;  ///< of each class against all others, by the logarithm of the odds for it
};

/// From the values of a discriminant rule, N x C, preferably of rows that were left out when it was learnt; a row's
/// class is a number below C, or -1.
KALMIA_EXPORT ClassFigures JudgeClasses(const std::vector<int>& classOfRow, const RealMatrix& values);

/// The area under the ROC curve, as Mann and Whitney's statistic: the share of pairs of a positive and a negative row
/// in which the positive one scores higher; equal scores count as half. Scores that are not numbers do not count,
/// infinite ones do. Not a number without a pair. Cost: n log n.
/// Source: J. A. Hanley, B. J. McNeil, Radiology 143 (1982) 29-36.
KALMIA_EXPORT double AreaUnderCurve(const std::vector<double>& scores, const std::vector<bool>& isPositive);

}  // namespace kalmia::analysis
