#include "kalmia/pcapls/PCACrossValidation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "kalmia/pcapls/internal/ComponentRows.h"
#include "kalmia/pcapls/internal/CrossValidationGroups.h"
#include "kalmia/pcapls/internal/Q2.h"
#include "kalmia/support/LanguageString.h"
#include "kalmia/support/NCError.h"

namespace {

constexpr float kMissing = kalmia::kMissingCell<float>;

/// Iteration starts from the model's component and has only to get away from what was left out.
constexpr double kFirstRoundsOfIteration = 5.0;

/// Keeps the root of a square from falling below the whole number that it is.
constexpr double kRootSlack = 1e-5;

/// The cell of the round that left `group` out; missing where there was no such round.
float CellOfRound(const NCDataMatrix<float>& set, int group, int cell) {
  return group >= 0 && group < set.SizeRows() ? set[group + 1][cell] : kMissing;
}

}  // namespace

/// Sums of squares of what is predicted, of its cells and of its prediction errors.
struct PCACrossValidation::Squares {
  double ss = 0.0;
  double press = 0.0;
};

/// The half of a round in which a group of observations, or of variables, is left out.
struct PCACrossValidation::HalfRound {
  int group;
  float from;  ///< on the bar
  NCProgress* bar;

  void Announce(unsigned text, int rounds) const {
    CString line;
    line.Format(LanguageString::Get(text), group + 1, rounds);
    bar->SetText(line);
  }

  /// One component of the round's model, within the half's range of the bar.
  void Compute(NCPCA* round, const NCIntegralVector<int, -99>* groups, const NCDataVector<float>& start) const {
    bar->PushSubRange(from, from + 0.5F);
    round->NextComponent(bar, groups, groups ? group : 0, &start);
    bar->PopSubRange();
  }
};

NCIntegralVector<int, -99> GetDeafultCVGroupsVector(int count, int groups) {
  if (groups < 1) throw NCError("Cross-validation needs at least one group.");
  NCIntegralVector<int, -99> result(count);
  for (int i = 1; i <= count; ++i) result(i) = i % groups;
  return result;
}

PCACrossValidation::PCACrossValidation(NCPCA* model, int rounds, const NCIntegralVector<int, -99>* observationGroups,
                                       const NCIntegralVector<int, -99>* variableGroups)
    : PCACrossValidation(model, 0.0F, NCDataVector<float>(model->GetResiduals()->SizeColumns(), 0.0F), rounds,
                         observationGroups, variableGroups) {}

PCACrossValidation::PCACrossValidation(NCPCA* model, float q2TotCum, const NCDataVector<float>& q2XVarCum, int rounds,
                                       const NCIntegralVector<int, -99>* observationGroups,
                                       const NCIntegralVector<int, -99>* variableGroups)
    : q2XVarCum_(q2XVarCum), model_(model), q2TotCum_(q2TotCum) {
  const int observations = model->GetResiduals()->SizeRows();
  const int variables = model->GetResiduals()->SizeColumns();
  rounds_ = std::min({rounds, observations, variables});
  pSet_ = kalmia::EmptyMatrix(variables, rounds_);
  tSet_ = kalmia::EmptyMatrix(observations, rounds_);
  q2XVar_ = NCDataVector<float>(variables);
  xPredResiduals_ = NCDataMatrix<float>(observations, variables);
  observationGroups_ = kalmia::GroupsOrDefault(observationGroups, observations, rounds_);
  variableGroups_ = kalmia::GroupsOrDefault(variableGroups, variables, rounds_);
  kalmia::RequireGroupForEach(observationGroups_, observations, "observations");
  kalmia::RequireGroupForEach(variableGroups_, variables, "variables");
}

void PCACrossValidation::NextComponent(const NCDataVector<float>& ss, NCProgress* progress) {
  if (rounds_ > 0 && (model_->GetPprim()->SizeRows() == 0 || model_->GetTprim()->SizeRows() == 0))
    throw NCError("PCA cross validation: the model has no component to judge.");
  const NCDataMatrix<float>& X = *model_->GetResiduals();
  kalmia::RequireSizeOfModel(observationGroups_.Size(), X.SizeRows(), "observations");
  kalmia::RequireSizeOfModel(variableGroups_.Size(), X.SizeColumns(), "variables");
  kalmia::RequireCellPerVariable(q2XVarCum_.Size(), X.SizeColumns(), "q2XVarCum");
  kalmia::RequireCellPerVariable(ss.Size(), X.SizeColumns(), "ss");
  std::unique_ptr<NCProgress> own;
  if (!progress) own = std::make_unique<NCProgress>("", 0.0F, 1.0F, false, false, true, nullptr);
  NCProgress* bar = own ? own.get() : progress;
  bar->SetRange(0.0F, static_cast<float>(rounds_));
  pSet_ = kalmia::EmptyMatrix(pSet_.SizeColumns(), rounds_);
  tSet_ = kalmia::EmptyMatrix(tSet_.SizeColumns(), rounds_);
  for (int group = 0; group < rounds_; ++group) {
    const float from = static_cast<float>(group);
    AddLoadingWithoutObservations({group, from, bar});
    AddScoreWithoutVariables({group, from + 0.5F, bar});
  }
  Judge(ss);
}

int PCACrossValidation::RoundsOfIteration() const {
  const int before = std::max(model_->GetComponents() - 1, 0);
  return static_cast<int>(std::sqrt(static_cast<double>(before)) + kFirstRoundsOfIteration + kRootSlack);
}

void PCACrossValidation::AddLoadingWithoutObservations(const HalfRound& half) {
  half.Announce(10157, rounds_);
  const NCDataVector<float>& modelsLoading = model_->GetPprim()->back();
  const NCDataMatrix<float> rest = RowsOutsideGroup(half.group);
  NCPCA round(&rest, RoundsOfIteration());
  half.Compute(&round, nullptr, rest.SpecialNipalsRegressRowsFix(modelsLoading, nullptr, 0));
  const NCDataVector<float>& loading = (*round.GetPprim())[1];
  pSet_.InsertRow(half.group + 1, loading);
  if (loading * modelsLoading < 0.0L) pSet_.MultiplyRow(half.group + 1, -1.0F);
}

void PCACrossValidation::AddScoreWithoutVariables(const HalfRound& half) {
  half.Announce(10158, rounds_);
  const NCDataVector<float>& modelsScore = model_->GetTprim()->back();
  NCPCA round(model_->GetResiduals(), RoundsOfIteration());
  half.Compute(&round, &variableGroups_, modelsScore);
  const NCDataVector<float>& score = (*round.GetTprim())[1];
  const float scale = ScaleWithoutGroup(half.group);
  tSet_.InsertRow(half.group + 1, score);
  tSet_.MultiplyRow(half.group + 1, score * modelsScore < 0.0L ? -scale : scale);
}

NCDataMatrix<float> PCACrossValidation::RowsOutsideGroup(int group) const {
  const NCDataMatrix<float>& X = *model_->GetResiduals();
  NCDataMatrix<float> rest = kalmia::EmptyMatrix(X.SizeColumns(), X.SizeRows());
  for (int i = 1; i <= X.SizeRows(); ++i)
    if (observationGroups_[i] != group) rest.push_back(X[i]);
  return rest;
}

float PCACrossValidation::ScaleWithoutGroup(int group) const {
  const auto all = variableGroups_.Size();
  const auto leftOut = std::count(variableGroups_.begin(), variableGroups_.end(), group);
  return std::sqrt(static_cast<float>(all) / static_cast<float>(all - leftOut));
}

/// x - t p of each cell, x itself where it is not predicted; and of each variable the sums over the predicted cells.
NCDataMatrix<float> PCACrossValidation::PredictionErrors(std::vector<Squares>* squares) const {
  const NCDataMatrix<float>& X = *model_->GetResiduals();
  NCDataMatrix<float> residuals(X.SizeRows(), X.SizeColumns());
  squares->assign(static_cast<std::size_t>(X.SizeColumns()), {});
  for (int i = 1; i <= X.SizeRows(); ++i)
    for (int j = 1; j <= X.SizeColumns(); ++j) {
      const float x = X[i][j];
      const float t = CellOfRound(tSet_, variableGroups_[j], i);
      const float p = CellOfRound(pSet_, observationGroups_[i], j);
      if (t == kMissing || p == kMissing || x == kMissing) {
        residuals(i, j, x);
        continue;
      }
      const float error = static_cast<float>(x - static_cast<double>(t) * p);
      Squares& ofColumn = (*squares)[static_cast<std::size_t>(j) - 1];
      ofColumn.ss += static_cast<double>(x) * x;
      ofColumn.press += static_cast<double>(error) * error;
      residuals(i, j, error);
    }
  return residuals;
}

void PCACrossValidation::Judge(const NCDataVector<float>& ss) {
  std::vector<Squares> squares;
  const NCDataMatrix<float> residuals = PredictionErrors(&squares);
  const int variables = model_->GetResiduals()->SizeColumns();
  NCDataVector<float> q2XVar(variables);
  NCDataVector<float> q2XVarCum(variables);
  Squares total;
  for (int j = 1; j <= variables; ++j) {
    const Squares& ofColumn = squares[static_cast<std::size_t>(j) - 1];
    total.ss += ofColumn.ss;
    total.press += ofColumn.press;
    const kalmia::Q2 q2 = kalmia::JudgeVariable(ofColumn.ss, ofColumn.press, q2XVarCum_[j], ss[j]);
    q2XVar(j, q2.value);
    q2XVarCum(j, q2.cumulated);
  }
  const kalmia::Q2 q2 = kalmia::Q2OfAllVariables(total.ss, total.press, q2TotCum_);
  xPredResiduals_ = residuals;
  q2XVar_ = q2XVar;
  q2XVarCum_ = q2XVarCum;
  q2Tot_ = q2.value;
  q2TotCum_ = q2.cumulated;
}

float PCACrossValidation::GetQ2Lim(int component, bool reduceObservations) const {
  if (component < 1) return kMissing;
  const std::int64_t observations = model_->GetResiduals()->SizeRows() - std::int64_t{component} + 1;
  const std::int64_t variables = model_->GetResiduals()->SizeColumns() - std::int64_t{component} + 1;
  const float left = static_cast<float>((observations - (reduceObservations ? 1 : 0)) * variables);
  if (!(left > 0.0F)) return 1.0F;
  return static_cast<float>(1.0 - left / static_cast<double>(observations * (variables + 1)));
}
