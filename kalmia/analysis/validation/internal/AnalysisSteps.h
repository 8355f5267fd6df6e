#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/model/TrainingRows.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/ClassFigures.h"
#include "kalmia/analysis/validation/RefitValidation.h"
#include "kalmia/analysis/validation/StoredJudgement.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"
#include "kalmia/analysis/validation/YPermutations.h"
#include "kalmia/analysis/validation/internal/RowNotes.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

// What the analyses of all families do beside validation and fit.

/// Throws BadRequest for None without given numbers of components and for Component with rows dealt otherwise than
/// interleaved.
void CheckMethod(const ValidationRecipe& validation, bool isNumberGiven);

/// Gives a fitted model the errors of left-out rows of its number of components.
void TakeErrors(const RefitValidation& validation, YModelInfo* model);

/// Gives the fit of the model that was chosen or given what the refits say of it and of its rows.
template <class Analysis>
void TakeJudgement(Analysis* analysis) {
  const auto& validation = *analysis->validation;
  auto& fit = analysis->fit;
  fit.notes.Add(validation.notes);
  fit.notes.Add(validation.jackKnifeNotes);
  NoteEqualRows(fit.data.x, fit.data.measuredY, validation.folds, &fit.notes);
  if (validation.IsJudged() && validation.model > 0 && !fit.data.classes) {
    NoteFarErrors(fit.data.rowNames, validation.yNames, validation.errors.squaredErrors[validation.model], &fit.notes);
  }
  TakeErrors(validation, &fit.model);
  DescribeRows(fit.fitted, fit.data.measuredY, LeftOutFiguresOf(validation), &fit.model);
  fit.model.validation = JudgementOf(validation, analysis->recipe);
}

/// Puts VIP of the model, kind by kind, beside the standard errors that are stored of it.
template <class Model, class ImportancesOf>
void StoreImportances(Model* model, const ImportancesOf& importancesOf) {
  if (!model->validation->jackKnife || model->validation->jackKnife->importances.empty()) return;
  std::vector<std::vector<double>> kinds = importancesOf(*model);
  for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
    model->validation->jackKnife->importances[kind].vip = std::move(kinds[kind]);
  }
}

/// Tests the model that was chosen or given, where all rounds can have it, by the permutations that are asked for;
/// notes why there is no test.
template <class Recipe, class Analysis>
void Permute(const Recipe& recipe, const Table& table, Analysis* analysis, NCProgress* progress) {
  const RefitValidation& validation = *analysis->validation;
  if (analysis->recipe.permutations < 1) return;
  if (validation.model < 1 || !validation.IsJudged()) {
    analysis->fit.notes.Add(std::string("no permutation test: ") +
                            (validation.model < 1 ? "the model has no component"
                                                  : "the validation does not judge so many components"));
    return;
  }
  analysis->permutation = PermuteY(recipe, table, validation.folds, static_cast<int>(validation.model),
                                   {analysis->recipe.permutations, analysis->recipe.folds.seed}, progress);
  analysis->fit.notes.Add(analysis->permutation->notes);
  analysis->fit.model.validation->permutation =
      StoredPermutation{static_cast<int>(analysis->permutation->runs.size()), analysis->permutation->judgement};
}

/// Whether a model of numbers was judged by component, so that it has no CV-ANOVA.
template <class Analysis>
bool LacksCvAnova(const Analysis& analysis) {
  return analysis.recipe.method == ValidationMethod::Component && !analysis.fit.classes &&
         analysis.fit.model.Components() > 0;
}

/// Tells a fitted model of classes how well it finds its rows, and found them while they were left out.
template <class Analysis>
void JudgeClassesOf(Analysis* analysis) {
  if (!analysis->fit.classes) return;
  StoredClasses& classes = *analysis->fit.model.classes;
  classes.fitted = JudgeClasses(analysis->fit.classes->classes.classOfRow, analysis->fit.classes->values);
  if (analysis->fit.model.Components() == 0) WithoutAuc(&*classes.fitted);
  if (analysis->validation && analysis->validation->classes) classes.leftOut = analysis->validation->classes->figures;
}

/// Says of a model that was judged by groups of several rows that limits and degrees of freedom take each row for one
/// of its own.
void NoteDependentRows(const ModelInfo& model, Notes* notes);

/// Whatever judged the model of Y.
template <class Analysis>
void Conclude(Analysis* analysis) {
  if (analysis->recipe.method == ValidationMethod::None) analysis->fit.model.groups = 0;
  JudgeClassesOf(analysis);
  NoteLimits(analysis->fit.model, analysis->fit.model.Components(), &analysis->fit.notes,
             LacksCvAnova(*analysis) ? "CV-ANOVA" : "");
  NoteDependentRows(analysis->fit.model, &analysis->fit.notes);
}

}  // namespace kalmia::analysis
