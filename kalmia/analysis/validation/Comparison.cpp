#include "kalmia/analysis/validation/Comparison.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include "kalmia/analysis/fit/internal/SelectData.h"
#include "kalmia/analysis/table/ColumnMoments.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/OPLSValidation.h"
#include "kalmia/analysis/validation/PLSValidation.h"
#include "kalmia/analysis/validation/PairedTest.h"

namespace kalmia::analysis {

namespace {

const FitRecipe& FitOf(const Candidate& candidate) {
  return std::visit([](const auto& recipe) -> const FitRecipe& { return recipe; }, candidate.recipe);
}

const YRecipe& YOf(const Candidate& candidate) {
  return std::visit([](const auto& recipe) -> const YRecipe& { return recipe; }, candidate.recipe);
}

bool HaveSameY(const YRecipe& one, const YRecipe& other) { return one.y == other.y && one.classes == other.classes; }

void CheckCandidates(const std::vector<Candidate>& candidates) {
  if (candidates.size() < 2) throw BadRequest("a comparison needs two models at least");
  std::set<std::string> names;
  const Candidate& first = candidates.front();
  for (const Candidate& candidate : candidates) {
    if (!names.insert(candidate.name).second) {
      throw BadRequest("two of the models are called " + Quoted(candidate.name));
    }
    if (!HaveSameY(YOf(candidate), YOf(first))) {
      throw BadRequest(Quoted(candidate.name) + " models another Y than " + Quoted(first.name));
    }
    if (FitOf(candidate).groups != FitOf(first).groups || FitOf(candidate).groupColumn != FitOf(first).groupColumn) {
      throw BadRequest(Quoted(candidate.name) + " has other groups than " + Quoted(first.name));
    }
  }
}

/// What is compared of one candidate.
struct Judged {
  RefitValidation validation;
  int orthogonal = 0;
  Notes notes;  ///< on the columns that mislead, and on the validation
};

Judged Judge(const PLSRecipe& recipe, const Table& table, const ValidationRecipe& validation, NCProgress* progress) {
  return {Validate(recipe, table, validation, progress), 0, {}};
}

Judged Judge(const OPLSRecipe& recipe, const Table& table, const ValidationRecipe& validation, NCProgress* progress) {
  OPLSValidation judged = Validate(recipe, table, validation, progress);
  const int orthogonal = OPLSValidation::OrthogonalOf(judged.model);
  return {std::move(judged), orthogonal, {}};
}

/// Says which columns of X copy Y. What else the selection notes is told by a fit.
void NoteColumnsToLeaveOut(const YRecipe& recipe, const Table& table, Notes* notes, NCProgress* progress) {
  Notes said;
  SelectData(table, recipe, &said, progress);
  for (std::size_t i = 0; i < said.Lines().size(); ++i) {
    if (said.Remedies()[i] == Remedy::LeaveOutColumn) notes->Add(said.Lines()[i], said.Remedies()[i]);
  }
}

Judged Judge(const Candidate& candidate, const Table& table, const ValidationRecipe& validation,
             NCProgress* progress) try {
  Judged judged = std::visit([&](const auto& recipe) { return Judge(recipe, table, validation, progress); },
                             candidate.recipe);
  NoteColumnsToLeaveOut(YOf(candidate), table, &judged.notes, progress);
  judged.notes.Add(judged.validation.notes);
  return judged;
} catch (const BadData& failure) {
  throw BadData(Quoted(candidate.name) + ": " + failure.what(), failure.WhatHelps(), failure.Place());
} catch (const BadRequest& failure) {
  throw BadRequest(Quoted(candidate.name) + ": " + failure.what(), failure.WhatHelps(), failure.Place());
}

void RequireComparable(const Candidate& candidate, const RefitValidation& validation, const Candidate& first,
                       const RefitValidation& ofFirst) {
  if (!validation.IsJudged()) {
    throw BadData(Quoted(candidate.name) + ": the rounds cannot have " +
                  Counted(static_cast<std::size_t>(validation.components), "component"));
  }
  if (validation.rowNames != ofFirst.rowNames) {
    throw BadData(Quoted(candidate.name) + " sees other rows of the table than " + Quoted(first.name) + ": " +
                  std::to_string(validation.rowNames.size()) + " beside " + std::to_string(ofFirst.rowNames.size()) +
                  "; rows without a cell of X are in no model");
  }
}

bool HasLine(const Notes& notes, const std::string& line) {
  return std::find(notes.Lines().begin(), notes.Lines().end(), line) != notes.Lines().end();
}

/// What is noted of every candidate is said once, all else with the name of the candidate.
Notes NotesOf(const std::vector<Candidate>& candidates, const std::vector<Judged>& judged) {
  Notes notes;
  for (std::size_t m = 0; m < candidates.size(); ++m) {
    const Notes& own = judged[m].notes;
    for (std::size_t i = 0; i < own.Lines().size(); ++i) {
      const std::string& line = own.Lines()[i];
      const bool isOfAll = std::all_of(judged.begin(), judged.end(),
                                       [&line](const Judged& other) { return HasLine(other.notes, line); });
      if (isOfAll && m > 0) continue;
      notes.Add(isOfAll ? line : candidates[m].name + ": " + line, own.Remedies()[i]);
    }
  }
  return notes;
}

std::vector<double> ErrorsOf(const RefitValidation& validation) {
  std::vector<double> errors;
  for (std::size_t i = 0; i < validation.errors.rowErrors.rows; ++i) {
    errors.push_back(validation.errors.rowErrors(i, validation.model));
  }
  return errors;
}

/// Takes the errors of rows that one of the models has none for out of all.
void KeepCommonRows(std::vector<std::vector<double>>* errors) {
  for (std::size_t i = 0; i < errors->front().size(); ++i) {
    const bool isCommon = std::all_of(errors->begin(), errors->end(),
                                      [i](const std::vector<double>& ofModel) { return !std::isnan(ofModel[i]); });
    if (isCommon) continue;
    for (std::vector<double>& ofModel : *errors) ofModel[i] = kNotANumber;
  }
}

/// How well classes are found, over these rows.
ClassRates RatesOf(const ClassValidation& classes, const std::vector<double>& common) {
  std::vector<int> classOfRow = classes.classes.classOfRow;
  for (std::size_t i = 0; i < common.size(); ++i) {
    if (std::isnan(common[i])) classOfRow[i] = -1;
  }
  const ClassFigures figures = JudgeClasses(classOfRow, classes.values);
  return {figures.accuracy, figures.balancedAccuracy};
}

/// Q2 and RMSECV over the rows that have an error under all models, and of classes how well they are found.
void TakeFigures(const RefitValidation& validation, const std::vector<double>& common, ComparedModel* model) {
  const LeftOutErrors& errors = validation.errors;
  double press = 0.0, pressOfMeans = 0.0;
  for (std::size_t i = 0; i < common.size(); ++i) {
    if (std::isnan(common[i])) continue;
    press += errors.rowErrors(i, validation.model);
    pressOfMeans += errors.rowErrors(i, 0);
  }
  model->q2 = 1.0 - press / pressOfMeans;
  for (std::size_t j = 0; j < validation.yNames.size(); ++j) {
    double sum = 0.0, measured = 0.0;
    for (std::size_t i = 0; i < common.size(); ++i) {
      const double square = errors.squaredErrors[validation.model](i, j);
      if (std::isnan(common[i]) || std::isnan(square)) continue;
      sum += square;
      measured += 1.0;
    }
    model->rmsecv.push_back(std::sqrt(sum / measured));
  }
  if (validation.classes) model->classes = RatesOf(*validation.classes, common);
}

}  // namespace

Comparison Compare(const std::vector<Candidate>& candidates, const Table& table, const ValidationRecipe& validation,
                   NCProgress* progress) {
  CheckCandidates(candidates);
  std::vector<Judged> judged;
  std::vector<std::vector<double>> errors;
  Comparison comparison;
  for (const Candidate& candidate : candidates) {
    judged.push_back(Judge(candidate, table, validation, progress));
    RequireComparable(candidate, judged.back().validation, candidates.front(), judged.front().validation);
    errors.push_back(ErrorsOf(judged.back().validation));
  }
  comparison.notes = NotesOf(candidates, judged);
  comparison.yNames = judged.front().validation.yNames;
  comparison.folds = judged.front().validation.folds;
  KeepCommonRows(&errors);
  comparison.rows = static_cast<std::size_t>(MomentsOf(errors.front()).n);
  if (comparison.rows == 0) throw BadData("no row is predicted by all of the models");
  for (std::size_t m = 0; m < candidates.size(); ++m) {
    const RefitValidation& of = judged[m].validation;
    ComparedModel model;
    model.name = candidates[m].name;
    model.components = of.components;
    model.orthogonal = judged[m].orthogonal;
    model.isChosen = of.choice.has_value();
    model.meanError = MomentsOf(errors[m]).mean;
    TakeFigures(of, errors[m], &model);
    comparison.models.push_back(std::move(model));
    if (comparison.models[m].meanError < comparison.models[comparison.best].meanError) comparison.best = m;
  }
  const bool hasGroups = !comparison.folds.names.empty();
  const std::vector<int>* groups = hasGroups ? &comparison.folds.groupOfRow.front() : nullptr;
  comparison.p = RealMatrix(candidates.size(), candidates.size(), 1.0);
  for (std::size_t m = 0; m < candidates.size(); ++m) {
    for (std::size_t other = 0; other < m; ++other) {
      const PairedTest test = ComparePaired(errors[m], errors[other], groups, validation.selection.flips,
                                            validation.selection.seed, progress);
      comparison.p(m, other) = comparison.p(other, m) = test.p;
    }
  }
  return comparison;
}

}  // namespace kalmia::analysis
