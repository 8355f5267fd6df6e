#include "app/options/ValidationOptions.h"

#include <initializer_list>

#include "app/options/CommandOptions.h"
#include "kalmia/analysis/validation/PermutationTest.h"

namespace kalmia::app {

namespace {

/// The first of the options that was given; empty for none.
std::string FirstGiven(const CommandOptions& command, std::initializer_list<const char*> names) {
  for (const char* name : names) {
    if (command.IsGiven(name)) return name;
  }
  return "";
}

std::string RefuseWithNone(const CommandOptions& command, const ValidatedFit& fit) {
  if (!fit.isNumberGiven()) {
    return "--validation none cannot choose the number of components: give " + fit.given + " with it";
  }
  const std::string given = FirstGiven(
      command, {"--groups", "--group-column", "--folds", "--repeats", "--seed", "--select", "--alpha"});
  return given.empty() ? "" : given + " has nothing to do with --validation none, which leaves no row out";
}

/// Of --select beside a number.
std::string RefuseChoiceOfGiven(const ValidationOptions& options, const ValidatedFit& fit) {
  if (options.rule.empty() || !fit.isNumberGiven()) return "";
  return "--select has nothing to choose where " + fit.number + " gives the number of components";
}

std::string RefuseWithComponent(const CommandOptions& command, const ValidationOptions& options,
                                const ValidatedFit& fit) {
  if (!options.rule.empty() && options.rule != WordOfSelectionRule(SelectionRule::Q2)) {
    return "--select " + options.rule +
           " chooses among refitted models; --validation component goes by the Q2 of each component alone";
  }
  const std::string given = FirstGiven(command, {"--folds", "--repeats", "--seed", "--alpha"});
  if (given.empty()) return RefuseChoiceOfGiven(options, fit);
  return given + " is for refits; --validation component takes every n-th row, or --group-column";
}

std::string RefuseWithRefit(const CommandOptions& command, const ValidationOptions& options,
                            const ValidatedFit& fit) {
  const FoldScheme scheme = RecipeOf(options).folds.scheme;
  if (options.repeats && scheme != FoldScheme::Random) {
    return "--repeats is for --folds random: other groups are the same in each repeat";
  }
  if (scheme == FoldScheme::LeaveOneOut && command.IsGiven("--groups")) {
    return "--groups has nothing to do with --folds leave-one-out, where each row is a group";
  }
  const std::string choice = RefuseChoiceOfGiven(options, fit);
  if (!choice.empty()) return choice;
  if (options.alpha && RecipeOf(options).selection.rule != SelectionRule::Randomisation) {
    return "--alpha is for --select randomisation";
  }
  return "";
}

void DeclareChoice(CommandOptions* command, ValidationOptions* options) {
  command->Choice("--select", "RULE", SelectionRuleWords(), &options->rule,
                  "rule that chooses the number of components, 0 among them, by errors of left-out rows: one-se "
                  "(default): the fewest within one standard error of the least; randomisation: the fewest that are "
                  "not worse than the least, by a test; min: the least; q2: as long as each one lowers it by 5 %");
  command->Real("--alpha", &options->alpha, "a number above 0 and below 1",
                [](double alpha) { return alpha > 0.0 && alpha < 1.0; },
                "level of the test of --select randomisation (default: 0.05)");
}

}  // namespace

void DeclareValidation(CommandOptions* command, ValidationOptions* options, const ValidatedFit& fit) {
  if (fit.hasMethods) {
    command->Choice("--validation", "HOW", ValidationMethodWords(), &options->method,
                    "what judges the model: refit (default), where left-out rows have no say in anything; component, "
                    "where each component is judged on what those before it left; or none");
  }
  command->Number("--groups", 2, fit.groups, "number of groups of rows, each of which is left out once (default: "
                  "7)");
  command->Choice("--folds", "HOW", FoldSchemeWords(), &options->folds,
                  "how rows are dealt to groups: interleaved (default), blocks of neighbours, random or leave-one-out");
  command->Text("--group-column", "NAME", fit.groupColumn,
                "column whose values are the groups; not with --groups or --folds");
  command->Exclude("--groups", "--group-column");
  command->Exclude("--folds", "--group-column");
  command->Number("--repeats", 1, &options->repeats, "how often random groups are dealt anew (default: 1)");
  command->Number("--seed", &options->seed,
                  "number that random groups, permutations and sign flips come from, below 2^64 (default: 1)");
  if (fit.isChosen) DeclareChoice(command, options);
  command->Check([=]() -> std::string {
    switch (RecipeOf(*options).method) {
      case ValidationMethod::None: return RefuseWithNone(*command, fit);
      case ValidationMethod::Component: return RefuseWithComponent(*command, *options, fit);
      case ValidationMethod::Refit: break;
    }
    return RefuseWithRefit(*command, *options, fit);
  });
}

void DeclareNested(CommandOptions* command, ValidationOptions* options, const FitRecipe* recipe,
                   const std::string& number) {
  command->Flag("--nested", &options->nested,
                "also validate the choice of the number of components: each round chooses its own, by the other rows");
  command->Check([=]() -> std::string {
    if (!options->nested) return "";
    if (RecipeOf(*options).method != ValidationMethod::Refit) return "--nested goes with --validation refit alone";
    if (recipe->components) return "--nested validates a choice, and " + number + " leaves none";
    return "";
  });
}

void DeclarePermutations(CommandOptions* command, ValidationOptions* options) {
  command->Number("--permutations", 1, &options->permutations,
                  "also fit and validate so many models of Y in random order, and tell how many are as good; 999 for "
                  "small p");
  command->Check([=]() -> std::string {
    if (!options->permutations) return "";
    if (RecipeOf(*options).method != ValidationMethod::Refit) {
      return "--permutations refits models and goes with --validation refit alone";
    }
    if (*options->permutations <= kMostPermutations) return "";
    return "--permutations takes at most " + std::to_string(kMostPermutations);
  });
}

void DeclareValidation(CommandOptions* command, ValidationOptions* options, FitRecipe* recipe,
                       const std::string& number) {
  DeclareValidation(command, options, {&recipe->groups, &recipe->groupColumn,
                                       [recipe] { return recipe->components.has_value(); }, number, number + " N"});
}

ValidationRecipe RecipeOf(const ValidationOptions& options) {
  ValidationRecipe recipe;
  if (!options.method.empty()) recipe.method = *ValidationMethodOfWord(options.method);
  if (!options.folds.empty()) recipe.folds.scheme = *FoldSchemeOfWord(options.folds);
  recipe.folds.repeats = options.repeats.value_or(1);
  recipe.folds.seed = recipe.selection.seed = options.seed.value_or(1);
  if (!options.rule.empty()) recipe.selection.rule = *SelectionRuleOfWord(options.rule);
  recipe.selection.alpha = options.alpha.value_or(recipe.selection.alpha);
  recipe.nested = options.nested;
  recipe.permutations = options.permutations.value_or(0);
  return recipe;
}

}  // namespace kalmia::app
