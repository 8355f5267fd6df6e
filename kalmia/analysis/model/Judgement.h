#pragma once

#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"

namespace kalmia::analysis {

// What tests and rows that were left out say of a model, in the numbers that it carries with it. The room of validation
// computes them.

/// Analysis of variance of the errors of left-out rows: whether a model predicts a Y column better than its mean does.
struct CvAnova {
  double f = 0.0;    ///< infinite where PRESS is 0
  int df1 = 0;       ///< 2 A
  int df2 = 0;       ///< N - 1 - 2 A
  double p = 1.0;    ///< P(F > f)
};

/// What models of Y in random order say of the one of the true Y.
struct PermutationJudgement {
  // Each is (1 + runs as good, within 1e-9, or better) / (n + 1), and so never 0; not a number where the original has
  // no such figure.
  double pR2 = kNotANumber;
  double pQ2 = kNotANumber;
  double pAccuracy = kNotANumber;
  // Where the least-squares lines of R2 and Q2 on |correlation|, through the runs alone, meet 0. Not a number where all
  // runs have one correlation.
  double interceptR2 = kNotANumber;
  double interceptQ2 = kNotANumber;
};

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

}  // namespace kalmia::analysis
