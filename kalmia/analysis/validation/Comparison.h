#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/model/StoredValidation.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/analysis/validation/Folds.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// A recipe that is compared with others. All have the same Y and groups.
struct Candidate {
  std::string name;  ///< of its own
  std::variant<PLSRecipe, OPLSRecipe> recipe;
};

/// How well the models of a recipe predicted left-out rows.
struct ComparedModel {
  std::string name;
  int components = 0;      ///< chosen by the rule, or given; of OPLS predictive and orthogonal ones
  int orthogonal = 0;      ///< of these, of OPLS
  bool isChosen = false;
  double q2 = kNotANumber;
  std::vector<double> rmsecv;  ///< of each Y column, in its units
  std::optional<ClassRates> classes;  ///< where Y are dummies of classes
  double meanError = kNotANumber;  ///< of the rows' E, see LeftOutErrors: what the models are compared by
};

/// Recipes side by side: of the same rows in the same groups, over the rows that all of them predicted.
struct Comparison {
  std::vector<std::string> yNames;
  Folds folds;
  std::size_t rows = 0;  ///< that have an error under all models
  std::vector<ComparedModel> models;  ///< in the order of the candidates
  std::size_t best = 0;  ///< the first one with the least mean error
  /// Models by models: p of the paired test that one predicts as well as the other; 1 of a model with itself.
  RealMatrix p;
  Notes notes;  ///< on columns that copy Y and on the validations; what is not of all begins with a candidate's name
};

/// Validates each candidate, see Validate, and compares the errors of their rows in pairs, see ComparePaired; under a
/// column of groups those of the groups. Figures are of the number of components that is given or that the rule chose.
/// A row that one of the models has no error for counts for none.
///
/// p tells whether a difference may be chance; it does not count how many pairs were looked at.
/// Throws Failure as Validate does, naming the candidate; BadRequest for fewer than two candidates, for names that come
/// twice, or other Y or groups; BadData where one sees other rows than the first, where the rounds cannot have the
/// given number of components, or where no row has an error under all. Stopped where `progress`, which may be null,
/// wants to stop.
/// Source of the test: H. van der Voet, Chemom. Intell. Lab. Syst. 25 (1994) 313-323.
KALMIA_EXPORT Comparison Compare(const std::vector<Candidate>& candidates, const Table& table,
                                 const ValidationRecipe& validation = {}, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
