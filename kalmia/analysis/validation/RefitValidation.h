#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/Classes.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/analysis/validation/ClassFigures.h"
#include "kalmia/analysis/validation/ComponentChoice.h"
#include "kalmia/analysis/validation/CvAnova.h"
#include "kalmia/analysis/validation/Folds.h"
#include "kalmia/analysis/validation/JackKnife.h"
#include "kalmia/analysis/validation/LeftOutErrors.h"

namespace kalmia::analysis {

/// How well classes are found in rows that were left out, by the model that was chosen or given.
struct ClassValidation {
  Classes classes;
  /// N x C, of the discriminant rules that the rounds learnt, a mean over the repeats; not numbers where a row could
  /// not be predicted.
  RealMatrix values;
  ClassFigures figures;
};

/// Double cross-validation. Errors of left-out rows by which a number of components was chosen are a little too good
/// for that number. So each round chooses its own one, by the same rule and as many groups of the rows that stay in,
/// and predicts its left-out rows with it, at most the last model that all rounds can have. Rows count that all these
/// models predict. The rows that stay in are two or more, and of two groups or more of a column.
/// Source: P. Filzmoser, B. Liebmann, K. Varmuza, J. Chemometrics 23 (2009) 160-171.
struct NestedValidation {
  std::vector<std::size_t> models;  ///< that the rounds chose, repeat after repeat
  double q2 = 0.0;
  std::vector<double> rmsecv, q2PerY;  ///< of each Y column, as LeftOutErrors has them
  std::optional<ClassFigures> classes;  ///< where Y are their dummies
};

/// What full refits say of models of N rows, K columns of X and M of Y, whatever their family. Rows and columns are
/// those of the fit. Model 0 is the mean, model 1 has `block` components, and each further model has one more.
struct RefitValidation {
  std::vector<std::string> rowNames;
  std::vector<std::string> xNames;
  std::vector<std::string> yNames;
  Folds folds;
  int block = 1;
  LeftOutErrors errors;                   ///< of model 0 to the last one that all rounds can have
  std::vector<double> r2x, r2y;  ///< of these models, fitted to all rows: shares of the sums of squares of X and of Y
  /// Of these models where Y are dummies of classes, by rules that the rounds learnt, over the rows that all of them
  /// predict.
  std::vector<ClassFigures> classFigures;
  std::optional<ComponentChoice> choice;  ///< among these models; nothing where the number was given
  std::size_t model = 0;                  ///< that was chosen, or given
  int components = 0;                     ///< that it has

  // Of this model; empty where the rounds cannot have it.
  RealMatrix predicted;  ///< N x M: each row while it was left out; not a number where it could not be predicted
  std::vector<std::optional<CvAnova>> cvAnova;  ///< M; nothing where Y are dummies of classes
  /// Of the coefficients in the units of the table, M: cells are the slopes of X in their order, then the intercept.
  std::vector<JackKnifeResult> coefficients;
  /// Of VIP, K cells each, intervals cut at 0: of PLS one, of OPLS those of its predictive and of its orthogonal
  /// components. Nothing of model 0.
  std::vector<JackKnifeResult> importances;
  /// Of the rows while they were left out, as DistanceToModel has them, those of all repeats: not a number where a row
  /// has none.
  std::vector<double> distances;
  std::optional<NestedValidation> nested;   ///< where it was asked for and the number was not given
  std::optional<ClassValidation> classes;  ///< where Y are their dummies

  Notes notes;           ///< on the validation; Fit has those on the table
  Notes jackKnifeNotes;  ///< on the intervals of coefficients and VIP

  /// Whether the figures of `model` are there.
  bool IsJudged() const { return model <= errors.MostComponents(); }
  /// Components of a model, all kinds of them.
  int ComponentsOf(std::size_t ofModel) const { return ofModel == 0 ? 0 : block + static_cast<int>(ofModel) - 1; }
};

}  // namespace kalmia::analysis
