#include "kalmia/o2pls/O2PLSCrossValidation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <vector>

#include "kalmia/o2pls/O2PLSPredictiveComponentEstimator.h"
#include "kalmia/o2pls/SignificanceE.h"
#include "kalmia/o2pls/internal/GroupSplit.h"
#include "kalmia/o2pls/internal/O2PLSRounds.h"
#include "kalmia/o2pls/internal/OrthogonalSearch.h"
#include "kalmia/o2pls/internal/Q2Limit.h"
#include "kalmia/pcapls/internal/CrossValidationGroups.h"
#include "kalmia/support/NCError.h"
#include "kalmia/support/internal/OptionalProgress.h"

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;
using Groups = NCIntegralVector<int, -99>;
using kalmia::O2PLSRound;

constexpr float kMissing = kalmia::kMissingCell<float>;

constexpr const char* kBadGroups = "Internal error in O2PLSCrossValidation::O2PLSCrossValidation";

constexpr float kStages = 7.0F;

/// Up to fewer variables than this a significant component has to gain in about the square root of their number ...
constexpr int kManyVariables = 25;
/// ... and from there on in this share of them.
constexpr double kShareOfManyVariables = 0.2;

kalmia::Q2Limit& LimitOfQ2() {
  static kalmia::Q2Limit limit;
  return limit;
}

double SquaresOf(const Matrix& table) { return static_cast<double>(table.GetSS()); }

}  // namespace

/// The whole search, stage by stage.
class O2PLSCrossValidation::Calculation {
 public:
  Calculation(const Matrix& X, const Matrix& Y, const Groups& groups, NCProgress* progress, NCProgress* ofModels,
              O2PLSCVResults* results)
      : X_(X), Y_(Y), groups_(groups), bar_(progress), ofModels_(ofModels), results_(*results) {}

  void Run(int maxIterations, int predictive, int xOrthogonal, int yOrthogonal);

 private:
  void ThrowIfStopped() const {
    if (!bar_.GoesOn()) throw NCError("Computations aborted.");
  }
  bool EstimatePredictiveComponents(int wanted);
  void MakeRounds(int maxIterations);
  double Q2OfY(int ySideComponents);  ///< of new models without X-side components
  void SearchXSide(int wanted, double q2);
  void SearchYSide(int wanted);
  int MostComponents(int wanted, int variables) const;
  double LeastGain() const { return static_cast<double>(GetQ2Lim(X_.SizeRows(), results_.PredictiveComponents)); }
  void JudgePredictiveComponents();
  void JudgePredictiveComponent(int component, std::size_t round, Vector* press);
  bool EnoughVariablesGain(int component) const;
  void ChoosePredictiveComponents(bool isSearch);

  const Matrix& X_;
  const Matrix& Y_;
  const Groups& groups_;
  kalmia::OptionalProgress bar_;
  NCProgress* ofModels_;
  O2PLSCVResults& results_;
  std::vector<O2PLSRound> rounds_;
  Vector ssY_;            ///< of the variables of Y
  double totalSSY_ = 0.0;
  double totalSSX_ = 0.0;
  int leastTraining_ = 0;  ///< rows of the smallest training set
};

void O2PLSCrossValidation::Calculation::Run(int maxIterations, int predictive, int xOrthogonal, int yOrthogonal) {
  if (!EstimatePredictiveComponents(predictive)) return;
  ThrowIfStopped();
  bar_.SetValue(1.0F);
  bar_.SetText("Calculating initial Q2");
  MakeRounds(maxIterations);
  const double q2 = Q2OfY(/*ySideComponents=*/0);
  // A denormal would say nothing either, but 1 - r is 0 or, next to it, at least 2^-53.
  if (!std::isfinite(q2)) throw NCError("There is no correlation between X and Y");

  ThrowIfStopped();
  bar_.PushSubRange(2.0F, 3.0F);
  bar_.SetText("Estimating Y-orthogonal components");
  SearchXSide(xOrthogonal, q2);

  ThrowIfStopped();
  bar_.PopSubRange();
  bar_.PushSubRange(3.0F, 4.0F);
  bar_.SetText("Estimating X-orthogonal components");
  SearchYSide(yOrthogonal);
  ThrowIfStopped();
  bar_.PopSubRange();
  bar_.SetValue(4.0F);

  if (results_.YSideComponents != 0) {
    bar_.SetText("Final estimation of components");
    bar_.PushSubRange(4.0F, 5.0F);
    const double withYSide = Q2OfY(results_.YSideComponents);
    results_.Q2XSide = Vector();
    results_.XSideSignificance.Clear();
    SearchXSide(xOrthogonal, withYSide);
    bar_.PopSubRange();
  }

  bar_.SetValue(5.0F);
  bar_.SetText("Calculating CV results");
  JudgePredictiveComponents();
  ChoosePredictiveComponents(/*isSearch=*/predictive < 0);
  kalmia::AlignRounds(&rounds_);
  ThrowIfStopped();
  bar_.SetValue(6.0F);
  bar_.SetText("Saving CV results");
  kalmia::SaveRounds(rounds_, groups_, &results_);
  ThrowIfStopped();
  bar_.SetValue(kStages);
}

bool O2PLSCrossValidation::Calculation::EstimatePredictiveComponents(int wanted) {
  bar_.SetRange(0.0F, kStages);
  bar_.SetText("Estimating predictive components");
  const O2PLSPredictiveComponentEstimator estimator(&X_, &Y_, -1, &groups_, wanted, ofModels_);
  results_.PredictiveComponents = estimator.GetNumberOfPredictiveComponents();
  results_.PredictiveSignificance = estimator.GetSignificance();
  return results_.PredictiveComponents != 0;
}

void O2PLSCrossValidation::Calculation::MakeRounds(int maxIterations) {
  ssY_ = Vector(Y_.SizeColumns());
  for (int j = 1; j <= Y_.SizeColumns(); ++j) ssY_(j, static_cast<float>(Y_.GetColumnSS(j, 0.0L)));
  totalSSY_ = static_cast<double>(ssY_.GetSum());
  totalSSX_ = SquaresOf(X_);
  leastTraining_ = X_.SizeRows();
  const std::size_t rounds = kalmia::CountRounds(groups_);
  results_.SSTable.Resize(1, static_cast<int>(rounds));
  results_.Q2Cum.Reserve(results_.PredictiveComponents);
  rounds_.reserve(rounds);
  for (int g = 0; g < static_cast<int>(rounds); ++g) {
    const kalmia::GroupSplit x = kalmia::SplitByGroup(X_, groups_, g), y = kalmia::SplitByGroup(Y_, groups_, g);
    results_.SSTable(1, g + 1, static_cast<float>(y.heldOut.GetSS()));
    rounds_.push_back({NCO2PLS(x.training, y.training, /*checkDimensions=*/false, maxIterations), x.heldOut, y.heldOut,
                       std::nullopt, std::nullopt});
    leastTraining_ = std::min(leastTraining_, x.training.SizeRows());
  }
}

double O2PLSCrossValidation::Calculation::Q2OfY(int ySideComponents) {
  double press = 0.0;
  for (O2PLSRound& round : rounds_) {
    round.model.Fit(results_.PredictiveComponents, 0, ySideComponents, ofModels_);
    press += SquaresOf(kalmia::ErrorsOfY(round));
  }
  return 1.0 - press / totalSSY_;
}

int O2PLSCrossValidation::Calculation::MostComponents(int wanted, int variables) const {
  return wanted >= 0 ? wanted : std::min(variables, leastTraining_) - results_.PredictiveComponents;
}

void O2PLSCrossValidation::Calculation::SearchXSide(int wanted, double q2) {
  kalmia::OrthogonalSearch search(&rounds_, bar_, ofModels_);
  search.xSide = true;
  search.isSearch = wanted < 0;
  search.most = MostComponents(wanted, X_.SizeColumns());
  search.totalSS = static_cast<float>(totalSSY_);
  search.q2 = q2;
  search.leastGain = LeastGain();
  search.Run(&results_.XSideComponents, &results_.Q2XSide, &results_.XSideSignificance);
}

void O2PLSCrossValidation::Calculation::SearchYSide(int wanted) {
  double press = 0.0;
  for (const O2PLSRound& round : rounds_) press += SquaresOf(kalmia::ErrorsOfX(round));
  kalmia::OrthogonalSearch search(&rounds_, bar_, ofModels_);
  search.xSide = false;
  search.isSearch = wanted < 0;
  search.most = MostComponents(wanted, Y_.SizeColumns());
  search.totalSS = static_cast<float>(totalSSX_);
  search.q2 = 1.0 - press / totalSSX_;
  search.leastGain = LeastGain();
  search.Run(&results_.YSideComponents, &results_.Q2YSide, &results_.YSideSignificance);
}

void O2PLSCrossValidation::Calculation::JudgePredictiveComponents() {
  const int components = results_.PredictiveComponents;
  results_.SSTable.Resize(components + 1, static_cast<int>(rounds_.size()));
  std::vector<Vector> press(static_cast<std::size_t>(components), Vector(Y_.SizeColumns(), 0.0F));
  for (std::size_t g = 0; g < rounds_.size(); ++g) {
    rounds_[g].model.InitPredCompCalculation();
    for (int a = 1; a <= components; ++a) JudgePredictiveComponent(a, g, &press[static_cast<std::size_t>(a) - 1]);
    rounds_[g].model.EndFit();  // the working blocks of one round at a time
  }
  for (const Vector& ofComponent : press) {
    results_.Q2Cum.push_back(static_cast<float>(1.0 - static_cast<double>(ofComponent.GetSum()) / totalSSY_));
    results_.Q2Var.push_back((ssY_ - ofComponent).DotDivide(ssY_));
  }
}

/// One component more in the model of a round, whose errors are added to `press`.
void O2PLSCrossValidation::Calculation::JudgePredictiveComponent(int component, std::size_t g, Vector* press) {
  const bool isLast = component == results_.PredictiveComponents;
  O2PLSRound& round = rounds_[g];
  round.model.NextPredictiveComp(ofModels_);
  if (!isLast) round.model.SubtractLastPredictiveComp();
  round.model.Finalise();
  const NCO2PLSYPred prediction(&round.heldOutX, &round.model);
  const Matrix errors = prediction.GetYPred() - round.heldOutY;
  double sum = 0.0;
  for (int j = 1; j <= errors.SizeColumns(); ++j) {  // there are none where no row was held out
    const double ofVariable = static_cast<double>(errors.GetColumnSS(j, 0.0L));
    sum += ofVariable;
    const float soFar = (*press)[j];
    const bool isUnknown = ofVariable == kalmia::kMissing || soFar == kMissing;
    (*press)(j, isUnknown ? kMissing : static_cast<float>(static_cast<double>(soFar) + ofVariable));
  }
  results_.SSTable(component + 1, static_cast<int>(g) + 1, static_cast<float>(sum));
  if (isLast) round.ofY = prediction;
}

bool O2PLSCrossValidation::Calculation::EnoughVariablesGain(int component) const {
  const int variables = Y_.SizeColumns();
  const float root = variables < kManyVariables ? std::sqrt(static_cast<float>(variables))
                                                : static_cast<float>(variables * kShareOfManyVariables);
  const int needed = static_cast<int>(static_cast<double>(root) + 0.5);
  const double limit = static_cast<double>(GetQ2Lim(X_.SizeRows(), component));
  int gaining = 0;
  for (int j = 1; j <= variables; ++j) {
    const float before = component > 1 ? results_.Q2Var[component - 1][j] : 0.0F;
    const double gain = static_cast<double>(results_.Q2Var[component][j]) - static_cast<double>(before);
    if (gain > limit) ++gaining;
  }
  return gaining >= needed;
}

void O2PLSCrossValidation::Calculation::ChoosePredictiveComponents(bool isSearch) {
  const auto best = std::max_element(results_.Q2Cum.begin(), results_.Q2Cum.end());
  int chosen = static_cast<int>(best - results_.Q2Cum.begin()) + 1;
  const int first = chosen + 1;
  const int tried = results_.PredictiveSignificance.Size();
  for (int k = first; k <= tried; ++k) {
    if (results_.PredictiveSignificance[k] != SignificanceE::R1) continue;
    const bool isKept = k == chosen + 1 && EnoughVariablesGain(k);
    if (isKept) ++chosen;
    results_.PredictiveSignificance(k) = isKept ? SignificanceE::R2 : SignificanceE::NS;
  }
  if (!isSearch || first > tried) return;
  results_.PredictiveComponents = chosen;
  for (O2PLSRound& round : rounds_) {
    round.model.Fit(chosen, results_.XSideComponents, results_.YSideComponents, ofModels_);
    round.ofY.reset();
    round.ofX.reset();
  }
}

O2PLSCrossValidation::O2PLSCrossValidation(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, int cvGroups,
                                           NCProgress* progress, NCIntegralVector<int, -99>* groups,
                                           int maxIterations, int predictive, int xOrthogonal, int yOrthogonal,
                                           NCProgress* ofModels) {
  results_.PredictiveComponents = 0;
  const bool isSearch = predictive < 0;
  if ((xOrthogonal < 0) != isSearch || (yOrthogonal < 0) != isSearch)
    throw NCError("O2PLSCrossValidation, all or none of the number of components must be fixed");
  if (X->GetNumMisVal() > 0 || Y->GetNumMisVal() > 0)
    throw NCError("X and Y can not contain missing values in O2PLSCrossValidation::O2PLSCrossValidation");
  if (groups ? groups->Size() != X->SizeRows() || kalmia::AreTooManyRounds(*groups) : cvGroups < 1)
    throw NCError(kBadGroups);
  if (X->SizeRows() != Y->SizeRows())
    throw NCError("Internal error in NCO2PLS\nX and Y matrices have different number of rows.");
  const Groups used = kalmia::GroupsOrDefault(groups, X->SizeRows(), cvGroups);
  if (predictive > 0 && kalmia::CountRounds(used) == 0) throw NCError(kBadGroups);  // a search finds no component
  NCO2PLS::RequireColumns(*X, *Y);
  Calculation(*X, *Y, used, progress, ofModels, &results_).Run(maxIterations, predictive, xOrthogonal, yOrthogonal);
}

float O2PLSCrossValidation::GetQ2Lim(int /*observations*/, int /*components*/) { return LimitOfQ2().Get(); }

void SetO2PLSQ2Limit(float limit) { LimitOfQ2().Set(limit); }
