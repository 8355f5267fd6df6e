#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/validation/ComponentChoice.h"
#include "kalmia/analysis/validation/Folds.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// How a model is judged, and its number of components chosen where it is not given.
enum class ValidationMethod {
  Refit,      ///< rows stay out of all that is learnt, see Validate
  Component,  ///< each component on what the components before it left, as Fit judges it
  None
};

/// The words for the methods, in their order: refit, component and none. Nothing for another word.
KALMIA_EXPORT const std::vector<std::string>& ValidationMethodWords();
KALMIA_EXPORT std::optional<ValidationMethod> ValidationMethodOfWord(const std::string& word);
KALMIA_EXPORT const std::string& WordOfValidationMethod(ValidationMethod method);

/// How a model is judged by rows that its models did not see. The recipe of the fit has the number of groups, or the
/// column of labels that make them.
struct ValidationRecipe {
  ValidationMethod method = ValidationMethod::Refit;  ///< Validate refits whatever it says; Analyse reads it
  FoldDealing folds;          ///< not read where the recipe of the fit has a column of groups
  SelectionRecipe selection;  ///< not read where the recipe of the fit gives the number of components
  /// Whether PLS chooses the number of components anew without the rows of each round, see NestedValidation.
  bool nested = false;
  /// Runs of the permutation test that Analyse makes of models of Y by refits, see PermuteY; 0: none.
  int permutations = 0;
};

}  // namespace kalmia::analysis
