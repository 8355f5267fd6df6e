#include "kalmia/opls/OPLSCrossValidation.h"

#include <algorithm>

#include "kalmia/opls/NCOPLS.h"
#include "kalmia/opls/NCOPLSPred.h"
#include "kalmia/opls/internal/OPLSCrossValidationRound.h"
#include "kalmia/pcapls/internal/CrossValidationGroups.h"
#include "kalmia/pcapls/internal/Q2.h"
#include "kalmia/support/NCError.h"
#include "kalmia/support/internal/OptionalProgress.h"

namespace {

constexpr const char* kStopped = "OPLS cross validation aborted.";
constexpr int kMaxIterations = 200;
constexpr float kShareOfTheModel = 0.95F;  ///< of a round's stretch of the bar

/// Up to so many observations Q2 should gain kQ2LimitOfFew, beyond them more than 0.
constexpr int kFewObservations = 100;
constexpr float kQ2LimitOfFew = 0.05F;

using Matrices = std::vector<NCDataMatrix<float>>;

void RequireMatchingTables(const NCDataMatrix<float>& X, const NCDataMatrix<float>& Y,
                           const NCIntegralVector<int, -99>* groups) {
  if (X.SizeRows() != Y.SizeRows()) throw NCError("OPLS cross validation: X and Y have not the same observations.");
  if (groups) kalmia::RequireGroupForEach(*groups, X.SizeRows(), "observations");
}

void Require(bool matches) {
  if (!matches) throw NCError("OPLS cross validation: the stored data do not belong to these tables.");
}

/// `rows` by `columns`; the number of columns of a matrix without rows means nothing.
void RequireShape(const NCDataMatrix<float>& matrix, int rows, int columns) {
  Require(matrix.SizeRows() == rows && (rows == 0 || matrix.SizeColumns() == columns));
}

}  // namespace

OPLSCrossValidation::OPLSCrossValidation(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y,
                                         int predictiveComponents, int rounds, NCProgress* progress,
                                         NCIntegralVector<int, -99>* groups, NCProgress* ofModels)
    : rounds_(std::max(0, std::min(rounds, X->SizeRows()))), predictiveComponents_(predictiveComponents) {
  RequireMatchingTables(*X, *Y, groups);
  TakeTables(*X, *Y, groups);
  data_ = OPLSCrossvalidationData(rounds_, y_);
  const kalmia::StoppableProgress bar(progress, kStopped, NCError::Level2);
  bar.SetRange(0.0F, static_cast<float>(rounds_));
  for (int group = 0; group < rounds_; ++group) {
    bar.PushSubRange(static_cast<float>(group), static_cast<float>(group) + kShareOfTheModel);
    const kalmia::OPLSRound round = kalmia::DivideByGroup(x_, y_, groups_, group);
    NCOPLS model(&round.trainX, &round.trainY, predictiveComponents_, kMaxIterations);
    model.NextComponent(progress, ofModels);
    bar.PopSubRange();
    ssYcvOriginal_(group + 1, static_cast<float>(round.trainY.GetSS()));
    kalmia::StoreModel(&model, group, &data_);
    SaveGroupResults(&model, round);
  }
  CalculateQ2();
  bar.SetValue(static_cast<float>(rounds_));
}

OPLSCrossValidation::OPLSCrossValidation(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y,
                                         const OPLSCrossvalidationData* data, NCIntegralVector<int, -99>* groups)
    : rounds_(static_cast<int>(data->WMatricesPerRound.size())), predictiveComponents_(0) {
  RequireMatchingTables(*X, *Y, groups);
  RequireMatchingData(*data, *X, *Y);
  data_ = *data;
  if (SizeOComponents() >= 0) predictiveComponents_ = data_.WMatricesPerRound.front().front().SizeRows();
  TakeTables(*X, *Y, groups);
  MakeRoomForScores(predictiveComponents_);
}

OPLSCrossValidation::OPLSCrossValidation(const OPLSCrossValidation& other) = default;

OPLSCrossValidation& OPLSCrossValidation::operator=(const OPLSCrossValidation& other) {
  if (this == &other) return *this;
  OPLSCrossValidation copy(other);
  data_ = copy.data_;  // the only one that may lack memory goes first, so that all is assigned or nothing
  x_.swap(copy.x_);
  y_.swap(copy.y_);
  rounds_ = copy.rounds_;
  yPred_.swap(copy.yPred_);
  predictiveComponents_ = copy.predictiveComponents_;
  ssYcv_ = copy.ssYcv_.AsValue();
  tPred_.swap(copy.tPred_);
  toPred_ = copy.toPred_.AsValue();
  tSets_.swap(copy.tSets_);
  toSet_.swap(copy.toSet_);
  ssYcvOriginal_ = copy.ssYcvOriginal_.AsValue();
  q2TotCum_ = copy.q2TotCum_;
  q2YVarCum_ = copy.q2YVarCum_.AsValue();
  groups_ = copy.groups_.AsValue();
  return *this;
}

OPLSCrossValidation::~OPLSCrossValidation() = default;

/// Copies of the tables and the groups, and results of their size without values.
void OPLSCrossValidation::TakeTables(const NCDataMatrix<float>& X, const NCDataMatrix<float>& Y,
                                     const NCIntegralVector<int, -99>* groups) {
  x_.CopyContent(X);
  y_.CopyContent(Y);
  groups_ = kalmia::GroupsOrDefault(groups, X.SizeRows(), rounds_);
  yPred_ = NCDataMatrix<float>(Y.SizeRows(), Y.SizeColumns());
  ssYcv_ = NCDataVector<float>(rounds_);
  ssYcvOriginal_ = NCDataVector<float>(rounds_);
  toPred_ = NCDataVector<float>(Y.SizeRows());
  toSet_ = NCDataMatrix<float>(rounds_, Y.SizeRows());
  q2YVarCum_ = NCDataVector<float>(Y.SizeColumns());
}

void OPLSCrossValidation::RequireMatchingData(const OPLSCrossvalidationData& data, const NCDataMatrix<float>& X,
                                              const NCDataMatrix<float>& Y) {
  const std::size_t rounds = data.WMatricesPerRound.size();
  Require(rounds <= static_cast<std::size_t>(X.SizeRows()) && data.SSY.Size() == Y.SizeColumns());
  Require(data.PMatricesPerRound.size() == rounds && data.CMatricesPerRound.size() == rounds);
  Require(data.WOPerRound.size() == rounds && data.POPerRound.size() == rounds && data.COPerRound.size() == rounds);
  for (std::size_t g = 0; g < rounds; ++g) {
    const Matrices &W = data.WMatricesPerRound[g], &P = data.PMatricesPerRound[g], &C = data.CMatricesPerRound[g];
    const std::size_t blocks = data.WMatricesPerRound.front().size();
    Require(W.size() == blocks && P.size() == blocks && C.size() == blocks);
    for (std::size_t o = 0; o < blocks; ++o) {
      const int components = W.front().SizeRows();
      Require(components > 0);
      RequireShape(W[o], components, X.SizeColumns());
      RequireShape(P[o], components, X.SizeColumns());
      RequireShape(C[o], components, Y.SizeColumns());
    }
    const int orthogonal = std::max(0, static_cast<int>(blocks) - 1);
    RequireShape(data.WOPerRound[g], orthogonal, X.SizeColumns());
    RequireShape(data.POPerRound[g], orthogonal, X.SizeColumns());
    RequireShape(data.COPerRound[g], orthogonal, Y.SizeColumns());
  }
}

void OPLSCrossValidation::NextComponent(NCProgress* progress, NCProgress* ofModels) {
  const kalmia::StoppableProgress bar(progress, kStopped, NCError::Level2);
  bar.SetRange(0.0F, static_cast<float>(rounds_));
  for (int group = 0; group < rounds_; ++group) {
    bar.PushSubRange(static_cast<float>(group), static_cast<float>(group) + kShareOfTheModel);
    const kalmia::OPLSRound round = kalmia::DivideByGroup(x_, y_, groups_, group);
    const auto g = static_cast<std::size_t>(group);
    NCOPLS model(&round.trainX, &round.trainY, &data_.WMatricesPerRound[g], &data_.PMatricesPerRound[g],
                 &data_.CMatricesPerRound[g], &data_.WOPerRound[g], &data_.POPerRound[g], &data_.COPerRound[g],
                 predictiveComponents_, kMaxIterations);
    model.NextComponent(nullptr, ofModels);
    bar.PopSubRange();
    kalmia::StoreModel(&model, group, &data_);
    SaveGroupResults(&model, round);
  }
  CalculateQ2();
  bar.SetValue(static_cast<float>(rounds_));
}

/// The sums run on from variable to variable, and it is the sum so far that decides whether there is anything to judge.
void OPLSCrossValidation::CalculateQ2() {
  const NCDataMatrix<float> residuals = GetYPredResiduals();
  double press = 0.0, ss = 0.0;
  for (int j = 1; j <= y_.SizeColumns(); ++j) {
    const double pressOfColumn = static_cast<double>(residuals.GetColumnSS(j, 0.0L));
    if (pressOfColumn != kalmia::kMissing) press += pressOfColumn;
    const double ssOfColumn = data_.SSY[j];
    if (ssOfColumn != kalmia::kMissing) ss += ssOfColumn;
    const bool judged = press >= kalmia::kSmallestVariance;
    q2YVarCum_(j, judged ? static_cast<float>((ssOfColumn - pressOfColumn) / ssOfColumn) : 1.0F);
  }
  q2TotCum_ = ss >= kalmia::kSmallestVariance ? static_cast<float>((ss - press) / ss) : 1.0F;
}

float OPLSCrossValidation::GetQ2Lim() const { return x_.SizeRows() <= kFewObservations ? kQ2LimitOfFew : 0.0F; }

int OPLSCrossValidation::SizeOComponents() {
  return data_.WMatricesPerRound.empty() ? -1 : static_cast<int>(data_.WMatricesPerRound.front().size()) - 1;
}

NCDataMatrix<float> OPLSCrossValidation::GetYPredResiduals() { return y_ - yPred_; }

void OPLSCrossValidation::SaveGroupResults(NCOPLS* model, const kalmia::OPLSRound& round) {
  const int row = round.group + 1;
  MakeRoomForScores(model->SizeComponents());
  NCOPLSPred prediction(&round.testX, model);
  ssYcv_(row, static_cast<float>(model->GetYResiduals().GetSS()));
  const int orthogonal = model->SizeOrthogonalComponents();
  for (int o = 1; o <= orthogonal; ++o) prediction.CalcNextComponent();

  int k = 0;
  for (const int i : round.trainIndex) {
    ++k;
    for (int a = 1; a <= model->SizeComponents(); ++a) ScoresOf(a)(row, i, (*model->GetTprim())[a][k]);
    if (orthogonal > 0) toSet_(row, i, (*model->GetTOprim())[orthogonal][k]);
  }
  k = 0;
  for (const int i : round.testIndex) {
    ++k;
    for (int a = 1; a <= model->SizeComponents(); ++a) {
      const float score = (*prediction.GetTPred())[a][k];
      ScoresOf(a)(row, i, score);
      tPred_(a, i, score);
    }
    if (orthogonal > 0) {
      const float score = (*prediction.GetTOPred())[orthogonal][k];
      toSet_(row, i, score);
      toPred_(i, score);
    }
    for (int j = 1; j <= y_.SizeColumns(); ++j) yPred_(i, j, (*prediction.GetYPred())[k][j]);
  }
}

/// Scores of so many predictive components at least; new ones are missing.
void OPLSCrossValidation::MakeRoomForScores(int predictiveComponents) {
  while (static_cast<int>(tSets_.size()) < predictiveComponents) {
    tSets_.emplace_back(rounds_, x_.SizeRows());
    tPred_.InsertRow(tPred_.SizeRows() + 1, NCDataVector<float>(x_.SizeRows()));
  }
}
