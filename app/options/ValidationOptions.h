#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "app/Analysis.h"
#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"

namespace kalmia::app {

class CommandOptions;

/// How a fit is to be judged, as words of a command line.
struct ValidationOptions {
  std::string method;  ///< empty: by refits
  std::string folds;   ///< empty: interleaved
  std::optional<int> repeats;
  std::optional<std::uint64_t> seed;
  std::string rule;  ///< empty: one-se
  std::optional<double> alpha;
  bool nested = false;
  std::optional<int> permutations;  ///< nothing: no test
};

/// What of a fit is validated, and where its groups go.
struct ValidatedFit {
  int* groups;
  std::string* groupColumn;
  std::function<bool()> isNumberGiven;  ///< whether the number of components is, once the options are taken
  std::string number;                   ///< the option that gives it: "--components"
  std::string given;                    ///< how it is given: "--components N"
  bool isChosen = true;                 ///< whether --select and --alpha choose it otherwise
  bool hasMethods = true;               ///< whether --validation says how; otherwise refits alone judge it
};

/// Declares --validation and what goes with it: --groups, --group-column, --folds, --repeats, --seed, and --select and
/// --alpha where a rule chooses the number of components. Nothing is to be chosen where it was given.
void DeclareValidation(CommandOptions* command, ValidationOptions* options, const ValidatedFit& fit);

/// The same of a fit whose recipe takes the groups. `number` is the option that gives the number of components,
/// declared before.
void DeclareValidation(CommandOptions* command, ValidationOptions* options, FitRecipe* recipe,
                       const std::string& number);

/// Declares --nested, for refits where `number` does not give the number of components.
void DeclareNested(CommandOptions* command, ValidationOptions* options, const FitRecipe* recipe,
                   const std::string& number);

/// Declares --permutations, which takes refits.
void DeclarePermutations(CommandOptions* command, ValidationOptions* options);

ValidationRecipe RecipeOf(const ValidationOptions& options);

}  // namespace kalmia::app
