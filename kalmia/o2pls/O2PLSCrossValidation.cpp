#include "kalmia/o2pls/O2PLSCrossValidation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <vector>

#include "kalmia/o2pls/O2PLSPredictiveComponentEstimator.h"
#include "kalmia/o2pls/SignificanceE.h"
#include "kalmia/o2pls/internal/FlipRows.h"
#include "kalmia/o2pls/internal/GroupSplit.h"
#include "kalmia/o2pls/internal/O2PLSRounds.h"
#include "kalmia/o2pls/internal/Q2Limit.h"
#include "kalmia/pcapls/internal/CrossValidationGroups.h"
#include "kalmia/support/CString.h"
#include "kalmia/support/NCError.h"

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

/// The caller's bar, which may be absent. What it answers when it is moved is passed over.
class Bar {
 public:
  explicit Bar(NCProgress* bar) : bar_(bar) {}

  void SetRange(float from, float to) const {
    if (bar_) bar_->SetRange(from, to);
  }
  void SetText(const char* text) const {
    if (bar_) bar_->SetText(text);
  }
  void SetValue(float value) const {
    if (bar_) bar_->SetValue(value);
  }
  void PushSubRange(float from, float to) const {
    if (bar_) bar_->PushSubRange(from, to);
  }
  void PopSubRange() const {
    if (bar_) bar_->PopSubRange();
  }
  bool IsStopped() const { return bar_ && bar_->IsBreakPressed(); }
  void ThrowIfStopped() const {
    if (IsStopped()) throw NCError("Computations aborted.");
  }

 private:
  NCProgress* bar_;
};

/// One side's search for orthogonal components: what it may do, and what it finds.
struct SideSearch {
  bool xSide;
  bool isSearch;        ///< false: all of `most` are taken
  int most;
  float totalSS;        ///< of the block whose prediction is judged
  double q2;            ///< of the models as they stand
  int* found;
  Vector* q2Series;
  Groups* significance;
};

/// Takes the models of the first rounds back to where they were.
void Restore(std::vector<NCO2PLS>* backup, std::vector<O2PLSRound>* rounds) {
  for (std::size_t g = 0; g < backup->size(); ++g) (*rounds)[g].model.swap((*backup)[g]);
}

/// One more orthogonal component in the model; false where it cannot be computed.
bool AddOrthogonalComponent(bool xSide, NCProgress* progress, NCO2PLS* model) try {
  model->NextOrthogonalComponent(xSide, model->SizePredComps(), progress);
  model->CalculatePredictiveComps(model->SizePredComps(), progress);
  model->Finalise();
  model->EndFit();
  return true;
} catch (const NCError&) {
  return false;
}

}  // namespace

void O2PLSCVResults::FlipPredictiveModel(const std::vector<bool>& xFlips, const std::vector<bool>& yFlips) {
  for (std::size_t i = 0; i < TSet.size(); ++i) {
    const bool anyX = kalmia::FlipRows(xFlips, {&TSet[i], &PSet[i], &WSet[i]});
    const bool anyY = kalmia::FlipRows(yFlips, {&USet[i], &CSet[i], &QSet[i]});
    if (!anyX && !anyY) continue;
    LambdaSet[i] = TSet[i].GetRegressionCoefficients(USet[i]);
    XLambdaSet[i] = USet[i].GetRegressionCoefficients(TSet[i]);
  }
}

/// The whole search, stage by stage.
class O2PLSCrossValidation::Calculation {
 public:
  Calculation(const Matrix& X, const Matrix& Y, const Groups& groups, NCProgress* progress, NCProgress* ofModels,
              O2PLSCVResults* results)
      : X_(X), Y_(Y), groups_(groups), bar_(progress), ofModels_(ofModels), results_(*results) {}

  void Run(int maxIterations, int predictive, int xOrthogonal, int yOrthogonal);

 private:
  bool EstimatePredictiveComponents(int wanted);
  void MakeRounds(int maxIterations);
  double Q2OfY(int ySideComponents);  ///< of new models without X-side components
  void SearchXSide(int wanted, double q2);
  void SearchYSide(int wanted);
  int MostComponents(int wanted, int variables) const;
  void AddOrthogonalComponents(SideSearch* search);
  bool TryOneMore(SideSearch* search);
  void JudgePredictiveComponents();
  void JudgePredictiveComponent(int component, std::size_t round, Vector* press);
  bool EnoughVariablesGain(int component) const;
  void ChoosePredictiveComponents(bool isSearch);

  const Matrix& X_;
  const Matrix& Y_;
  const Groups& groups_;
  Bar bar_;
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
  bar_.ThrowIfStopped();
  bar_.SetValue(1.0F);
  bar_.SetText("Calculating initial Q2");
  MakeRounds(maxIterations);
  const double q2 = Q2OfY(/*ySideComponents=*/0);
  // A denormal would say nothing either, but 1 - r is 0 or, next to it, at least 2^-53.
  if (!std::isfinite(q2)) throw NCError("There is no correlation between X and Y");

  bar_.ThrowIfStopped();
  bar_.PushSubRange(2.0F, 3.0F);
  bar_.SetText("Estimating Y-orthogonal components");
  SearchXSide(xOrthogonal, q2);

  bar_.ThrowIfStopped();
  bar_.PopSubRange();
  bar_.PushSubRange(3.0F, 4.0F);
  bar_.SetText("Estimating X-orthogonal components");
  SearchYSide(yOrthogonal);
  bar_.ThrowIfStopped();
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
  bar_.ThrowIfStopped();
  bar_.SetValue(6.0F);
  bar_.SetText("Saving CV results");
  kalmia::SaveRounds(rounds_, groups_, &results_);
  bar_.ThrowIfStopped();
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
  SideSearch search{/*xSide=*/true,
                    wanted < 0,
                    MostComponents(wanted, X_.SizeColumns()),
                    static_cast<float>(totalSSY_),
                    q2,
                    &results_.XSideComponents,
                    &results_.Q2XSide,
                    &results_.XSideSignificance};
  AddOrthogonalComponents(&search);
}

void O2PLSCrossValidation::Calculation::SearchYSide(int wanted) {
  double press = 0.0;
  for (const O2PLSRound& round : rounds_) press += SquaresOf(kalmia::ErrorsOfX(round));
  SideSearch search{/*xSide=*/false,
                    wanted < 0,
                    MostComponents(wanted, Y_.SizeColumns()),
                    static_cast<float>(totalSSX_),
                    1.0 - press / totalSSX_,
                    &results_.YSideComponents,
                    &results_.Q2YSide,
                    &results_.YSideSignificance};
  AddOrthogonalComponents(&search);
}

void O2PLSCrossValidation::Calculation::AddOrthogonalComponents(SideSearch* search) try {
  *search->found = 0;
  if (search->most < 1) return;
  bar_.SetRange(0.0F, static_cast<float>(rounds_.size() - 1));
  while (*search->found < search->most && TryOneMore(search)) ++*search->found;
} catch (const CString& text) {
  throw NCError(text);
} catch (const NCError&) {
  throw NCError(
      "Cross validation could not be computed.\nThis can be due to low variance/missing values in the X and/or Y "
      "matrices.");
}

bool O2PLSCrossValidation::Calculation::TryOneMore(SideSearch* search) {
  double press = 0.0;
  std::vector<NCO2PLS> backup;
  backup.reserve(rounds_.size());
  for (O2PLSRound& round : rounds_) {
    backup.push_back(round.model.SharingBlocks());
    if (!AddOrthogonalComponent(search->xSide, ofModels_, &round.model)) {
      Restore(&backup, &rounds_);
      return false;
    }
    press += SquaresOf(search->xSide ? kalmia::ErrorsOfY(round) : kalmia::ErrorsOfX(round));
    if (bar_.IsStopped()) throw CString("Computations aborted");
    bar_.SetValue(static_cast<float>(backup.size()));
  }
  const double q2 = 1.0 - press / static_cast<double>(search->totalSS);
  const double gain = q2 - search->q2;
  const double limit = static_cast<double>(GetQ2Lim(X_.SizeRows(), *search->found + 1 + results_.PredictiveComponents));
  search->q2Series->push_back(static_cast<float>(q2));
  search->significance->push_back(gain > limit ? SignificanceE::R1 : SignificanceE::NS);
  if (search->isSearch && gain < limit) {  // a gain that equals the limit is kept, though not significant
    Restore(&backup, &rounds_);
    return false;
  }
  search->q2 = q2;
  return true;
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
