#include "kalmia/o2pls/O2PLSPredictiveComponentEstimator.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "kalmia/o2pls/internal/FirstLoading.h"
#include "kalmia/o2pls/internal/GroupSplit.h"
#include "kalmia/o2pls/internal/Q2Limit.h"
#include "kalmia/pcapls/internal/ComponentRows.h"
#include "kalmia/pcapls/internal/CrossValidationGroups.h"
#include "kalmia/support/NCError.h"

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

constexpr int kMaxIterations = 200;

/// Fewer observations than this above the number of components say nothing.
constexpr int kObservationsToSpare = 3;

/// A block of which no more than this share is left has no further component.
constexpr double kNothingLeft = 1e-6;

kalmia::Q2Limit& LimitOfGain() {
  static kalmia::Q2Limit limit;
  return limit;
}

Matrix CrossProduct(const Matrix& Y, const Matrix& X) {
  return Y.MatrixMultiply(X, /*transposeThis=*/true, /*transposeOther=*/false);
}

/// One component of two blocks: the direction that covaries most, and the Y direction and the scores that go with it.
struct Component {
  Component(const Matrix& X, const Matrix& Y, const Matrix& crossProduct, NCProgress* progress)
      : w(kalmia::FirstLoading(crossProduct, kMaxIterations, progress)),
        t(X.SpecialNipalsRegressRowsFix(w, nullptr, 0)),
        c(Y.SpecialNipalsRegressColumnsFix(t)) {
    c.Normalise();
    u = Y.SpecialNipalsRegressRowsFix(c, nullptr, 0);
  }

  Vector w;
  Vector t;
  Vector c;
  Vector u;
};

/// Sum of the absolute values of all cells.
double AbsoluteSum(const Matrix& table) {
  double sum = 0.0;
  for (const Vector& row : table)
    for (const float cell : row) sum += std::fabs(static_cast<double>(cell));
  return sum;
}

/// The same of a - b, each difference rounded to float; tables of one shape.
double AbsoluteDifference(const Matrix& a, const Matrix& b) {
  double sum = 0.0;
  for (int i = 1; i <= a.SizeRows(); ++i)
    for (int j = 1; j <= a.SizeColumns(); ++j) {
      const float difference = a[i][j] - b[i][j];
      sum += std::fabs(static_cast<double>(difference));
    }
  return sum;
}

/// What the training rows gave in one round, and the scores of the held-out rows with it.
struct RoundComponent {
  Component trained;
  Vector tHeldOut;
  Vector uHeldOut;
};

}  // namespace

struct O2PLSPredictiveComponentEstimator::Blocks {
  Blocks(const Matrix& xBlock, const Matrix& yBlock)
      : X(xBlock),
        Y(yBlock),
        crossProduct(CrossProduct(Y, X)),
        absoluteSum(AbsoluteSum(crossProduct)),
        ssX(static_cast<double>(X.GetSS())),
        ssY(static_cast<double>(Y.GetSS())) {}

  Matrix X;
  Matrix Y;
  Matrix crossProduct;  ///< of X and Y as they came
  double absoluteSum;
  double ssX;
  double ssY;
};

/// The rounds of the cross-validation with their components so far.
class O2PLSPredictiveComponentEstimator::Rounds {
 public:
  Rounds(const Blocks& blocks, const NCIntegralVector<int, -99>& groups, NCProgress* progress)
      : blocks_(blocks), groups_(groups), progress_(progress), rounds_(kalmia::CountRounds(groups)) {}

  /// One component more in every round.
  void AddComponent();
  /// What the held-out scores of all rounds make of the cross product.
  Matrix Prediction() const;

  double PressX() const { return pressX_; }  ///< sum of squares left in the held-out rows by the newest component
  double PressY() const { return pressY_; }

 private:
  void AddComponentToRound(int group);

  const Blocks& blocks_;
  const NCIntegralVector<int, -99>& groups_;
  NCProgress* progress_;
  std::vector<std::vector<RoundComponent>> rounds_;
  double pressX_ = 0.0;
  double pressY_ = 0.0;
};

void O2PLSPredictiveComponentEstimator::Rounds::AddComponent() {
  pressX_ = 0.0;
  pressY_ = 0.0;
  for (std::size_t group = 0; group < rounds_.size(); ++group) AddComponentToRound(static_cast<int>(group));
}

void O2PLSPredictiveComponentEstimator::Rounds::AddComponentToRound(int group) {
  std::vector<RoundComponent>& components = rounds_[static_cast<std::size_t>(group)];
  kalmia::GroupSplit X = kalmia::SplitByGroup(blocks_.X, groups_, group);
  kalmia::GroupSplit Y = kalmia::SplitByGroup(blocks_.Y, groups_, group);
  for (const RoundComponent& earlier : components) {
    X.training.AddVprimV(earlier.trained.t, earlier.trained.w, -1.0F);
    X.heldOut.AddVprimV(earlier.tHeldOut, earlier.trained.w, -1.0F);
    Y.training.AddVprimV(earlier.trained.u, earlier.trained.c, -1.0F);
    Y.heldOut.AddVprimV(earlier.uHeldOut, earlier.trained.c, -1.0F);
  }
  const Component trained(X.training, Y.training, CrossProduct(Y.training, X.training), progress_);
  const Vector t = X.heldOut.SpecialNipalsRegressRowsFix(trained.w, nullptr, 0);
  const Vector u = Y.heldOut.SpecialNipalsRegressRowsFix(trained.c, nullptr, 0);
  components.push_back({trained, t, u});
  X.heldOut.TransformToSub_V_x_Vt(t, trained.w);
  pressX_ += static_cast<double>(X.heldOut.GetSS());
  Y.heldOut.TransformToSub_V_x_Vt(u, trained.c);
  pressY_ += static_cast<double>(Y.heldOut.GetSS());
}

NCDataMatrix<float> O2PLSPredictiveComponentEstimator::Rounds::Prediction() const {
  Matrix prediction(blocks_.Y.SizeColumns(), blocks_.X.SizeColumns(), 0.0F);
  for (const std::vector<RoundComponent>& components : rounds_) {
    Matrix t, u, c, w;
    for (const RoundComponent& component : components) {
      t.push_back(component.tHeldOut);
      u.push_back(component.uHeldOut);
      c.push_back(component.trained.c);
      w.push_back(component.trained.w);
    }
    const Matrix products = u.MatrixMultiply(t, /*transposeThis=*/false, /*transposeOther=*/true);
    prediction += c.MatrixMultiply(products, /*transposeThis=*/true, /*transposeOther=*/false) * w;
  }
  return prediction;
}

O2PLSPredictiveComponentEstimator::O2PLSPredictiveComponentEstimator(const NCDataMatrix<float>* X,
                                                                     const NCDataMatrix<float>* Y, int cvGroups,
                                                                     const NCIntegralVector<int, -99>* groups,
                                                                     int fixedComponents, NCProgress* progress) {
  if (!groups && cvGroups < 1) return;  // no groups, no components
  DoCalulations(*X, *Y, kalmia::GroupsOrDefault(groups, Y->SizeRows(), cvGroups), fixedComponents, progress);
}

void O2PLSPredictiveComponentEstimator::DoCalulations(NCDataMatrix<float> X, NCDataMatrix<float> Y,
                                                      const NCIntegralVector<int, -99>& groups, int fixedComponents,
                                                      NCProgress* progress) {
  if (fixedComponents == 0) return;
  try {
    if (X.SizeRows() != Y.SizeRows() || X.SizeColumns() == 0 || Y.SizeColumns() == 0 ||
        groups.Size() < Y.SizeRows() || kalmia::AreTooManyRounds(groups))
      throw NCError("Internal error in O2PLSPredictiveComponentEstimator");  // for the handler below
    Blocks blocks(X, Y);
    TryComponents(blocks, groups, fixedComponents, progress);
    numberOfPredictiveComponents_ = SizeTried();
    if (fixedComponents < 0 && !LastIsSignificant()) --numberOfPredictiveComponents_;
    FitToAll(&blocks, progress);
  } catch (const NCError&) {
    CutToCompleteComponents();
  }
}

bool O2PLSPredictiveComponentEstimator::LastIsSignificant() const {
  return significance_[significance_.Size()] == SignificanceE::R1;
}

void O2PLSPredictiveComponentEstimator::TryComponents(const Blocks& blocks, const NCIntegralVector<int, -99>& groups,
                                                      int fixedComponents, NCProgress* progress) {
  const int most = std::min(blocks.Y.SizeColumns(), blocks.X.SizeColumns());
  const auto isLeft = [](double press, double ss) { return std::fabs(1.0 - press / ss - 1.0) > kNothingLeft; };
  Rounds rounds(blocks, groups, progress);
  bool goesOn = true;
  while (goesOn) {
    rounds.AddComponent();
    Judge(blocks, rounds);
    if (fixedComponents > 0) {
      goesOn = fixedComponents > SizeTried();
    } else {
      goesOn = SizeTried() < most && LastIsSignificant() && isLeft(rounds.PressX(), blocks.ssX) &&
               isLeft(rounds.PressY(), blocks.ssY);
    }
  }
}

void O2PLSPredictiveComponentEstimator::Judge(const Blocks& blocks, const Rounds& rounds) {
  const float previous = SizeTried() > 0 ? q2_.back() : 0.0F;
  const double q2 = 1.0 - AbsoluteDifference(blocks.crossProduct, rounds.Prediction()) / blocks.absoluteSum;
  q2X_.push_back(static_cast<float>(1.0 - rounds.PressX() / blocks.ssX));
  q2Y_.push_back(static_cast<float>(1.0 - rounds.PressY() / blocks.ssY));
  q2_.push_back(static_cast<float>(q2));
  const double gain = q2 - static_cast<double>(previous);
  if (blocks.Y.SizeRows() - kObservationsToSpare <= SizeTried()) {
    significance_.push_back(SignificanceE::N3);
  } else {
    significance_.push_back(gain > static_cast<double>(LimitOfGain().Get()) ? SignificanceE::R1 : SignificanceE::NS);
  }
}

void O2PLSPredictiveComponentEstimator::FitToAll(Blocks* blocks, NCProgress* progress) {
  auto& [X, Y, crossProduct, absoluteSum, ssX, ssY] = *blocks;
  Matrix prediction(Y.SizeColumns(), X.SizeColumns(), 0.0F);
  for (int a = 0; a < numberOfPredictiveComponents_; ++a) {
    const Component component(X, Y, a == 0 ? crossProduct : CrossProduct(Y, X), progress);
    const auto& [w, t, c, u] = component;
    X.TransformToSub_V_x_Vt(t, w);
    Y.TransformToSub_V_x_Vt(u, c);
    prediction.AddVprimV(c * (t * u), w, 1.0F);
    r2_.push_back(static_cast<float>(1.0 - AbsoluteDifference(crossProduct, prediction) / absoluteSum));
    r2Y_.push_back(static_cast<float>(1.0 - static_cast<double>(Y.GetSS()) / ssY));
    r2X_.push_back(static_cast<float>(1.0 - static_cast<double>(X.GetSS()) / ssX));
  }
}

void O2PLSPredictiveComponentEstimator::CutToCompleteComponents() {
  Vector* const series[] = {&q2_, &q2X_, &q2Y_, &r2_, &r2X_, &r2Y_};
  numberOfPredictiveComponents_ = std::min(numberOfPredictiveComponents_, significance_.Size());
  for (const Vector* values : series)
    numberOfPredictiveComponents_ = std::min(numberOfPredictiveComponents_, values->Size());
  for (Vector* values : series) values->Resize(numberOfPredictiveComponents_);
  significance_.Resize(numberOfPredictiveComponents_);
}

void SetO2PLSPredictiveQ2Limit(float limit) { LimitOfGain().Set(limit); }
