#include <algorithm>

#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/InputFile.h"
#include "app/console/OutputPlaces.h"
#include "app/console/ReadSteps.h"
#include "app/console/ReadTable.h"
#include "app/console/Remedies.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/fit/StoredRecipe.h"
#include "kalmia/analysis/report/ComparisonReport.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/Comparison.h"

namespace kalmia::app {

namespace {

using AnyRecipe = std::variant<PLSRecipe, OPLSRecipe>;

template <class Kind>
AnyRecipe RecipeOfKind(const Kind& /*model*/, const std::string& file) {
  throw BadRequest(InputName(file) + " holds no PLS or OPLS model: compare takes these");
}

AnyRecipe RecipeOfKind(const StoredPLS& model, const std::string& /*file*/) { return RecipeOf(model); }
AnyRecipe RecipeOfKind(const StoredOPLS& model, const std::string& /*file*/) { return RecipeOf(model); }

/// A stored model, or the recipe that the text is.
Candidate CandidateOf(const std::string& text) {
  std::optional<RecipeText> read = ReadRecipe(text);
  if (!read) {
    const StoredModel model = ReadModelFile(ReadInput(text), InputName(text));
    return {text, std::visit([&text](const auto& own) { return RecipeOfKind(own, text); }, model)};
  }
  if (!read->steps.empty() || !read->stepsFile.empty()) {
    const GivenSteps steps = ReadSteps(read->steps, read->stepsFile);
    std::visit([&steps](auto& recipe) { recipe.steps = steps; }, read->recipe);
  }
  return {text, std::move(read->recipe)};
}

const YRecipe& YOf(const Candidate& candidate) {
  return std::visit([](const auto& recipe) -> const YRecipe& { return recipe; }, candidate.recipe);
}

/// What all model: as the options say, or as the first stored model does. A column of Y that is one of classes for a
/// stored model is one for all.
YRecipe CommonY(const CompareOptions& options, const std::vector<Candidate>& candidates) {
  YRecipe common;
  common.y = options.y;
  common.classes = options.classes;
  for (const Candidate& candidate : candidates) {
    const YRecipe& own = YOf(candidate);
    if (common.y.empty() && common.classes.empty()) common = own;
    if (common.y != std::vector<std::string>{own.classes}) continue;
    common.y.clear();
    common.classes = own.classes;
  }
  if (common.y.empty() && common.classes.empty()) {
    throw BadRequest("compare needs --y NAME: no stored model says what is modelled; see kalmia compare --help");
  }
  return common;
}

/// What all have in common; a stored model brings its Y and the column of its row names where nothing else is said.
void TakeCommon(const CompareOptions& options, std::vector<Candidate>* candidates) {
  const YRecipe common = CommonY(options, *candidates);
  std::string id = options.common.id;
  for (const Candidate& candidate : *candidates) {
    if (id.empty()) id = YOf(candidate).id;
  }
  for (Candidate& candidate : *candidates) {
    std::visit([&](auto& recipe) {
      if (recipe.y.empty() && recipe.classes.empty()) {
        recipe.y = common.y;
        recipe.classes = common.classes;
      }
      recipe.id = id;
      recipe.groups = options.common.groups;
      recipe.groupColumn = options.common.groupColumn;
    }, candidate.recipe);
  }
}

}  // namespace

std::string RunCommand(const CompareOptions& options, Notes* notes) {
  std::vector<Candidate> candidates;
  for (const std::string& text : options.models) candidates.push_back(CandidateOf(text));
  TakeCommon(options, &candidates);
  const Table table = ReadTable(options.table, options.reading);
  const ValidationRecipe validation = RecipeOf(options.validation);
  TerminalBar bar;
  const Comparison comparison = Compare(candidates, table, validation, bar.Get());
  notes->Add(WithRemedies(comparison.notes));
  return options.json ? ComparisonJson(table, comparison, validation, *notes) : ComparisonText(table, comparison);
}

}  // namespace kalmia::app
