#include "kalmia/o2pls/NCYOrthogonalPLS.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <optional>
#include <utility>

#include "kalmia/o2pls/OSCPLSComponentValidator.h"
#include "kalmia/o2pls/internal/FirstLoading.h"
#include "kalmia/pcapls/NCComponentValidator.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/pcapls/internal/ComponentRows.h"
#include "kalmia/pcapls/internal/ConvergenceBar.h"
#include "kalmia/support/CString.h"
#include "kalmia/support/LanguageString.h"
#include "kalmia/support/NCError.h"

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

constexpr unsigned kTitle = 10123;
constexpr unsigned kCannotGoOn = 10124;

constexpr float kBarBegins = -1.0F;
constexpr float kBarEnds = 0.0F;

/// Principal components of Y are worth having as long as more than this share of it is left.
constexpr float kShareOfY = 0.001F;

constexpr double kHalfTurnIsNinety = 90.0;

NCError CannotGoOn() { return NCError(LanguageString::Get(kCannotGoOn)); }

bool IsEmptyRow(const Matrix& table, int row) { return table[row].GetNumMisVal() == table.SizeColumns(); }

/// m = (log10(d) + 7) * 10 of the change d of a round: at or below 0 the search has converged.
double MeasureOfSearch(long double change) {
  const double d = static_cast<double>(change);
  return d < kalmia::kNoChange ? kalmia::kConverged : (std::log10(d) + 7.0) * 10.0;
}

/// One component more; false where the model can have no further one.
bool AddComponent(NCProgress* progress, NCPLS* model) try {
  model->NextComponent(progress, nullptr, /*quiet=*/false, /*strict=*/true);
  model->CalculateResiduals();
  return true;
} catch (const NCError& error) {
  if (error.GetLevel() != NCError::Level1 || model->GetComponents() == 0) throw;
  return false;
}

double RoundedToFloat(long double value) { return static_cast<double>(static_cast<float>(value)); }

}  // namespace

NCYOrthogonalPLS::NCYOrthogonalPLS() : y_(std::make_unique<Matrix>()) {}

NCYOrthogonalPLS::NCYOrthogonalPLS(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, int maxIterations,
                                   int maxPLSComponents)
    : pprim_(kalmia::EmptyMatrix(X->SizeColumns())),
      wprim_(kalmia::EmptyMatrix(X->SizeColumns())),
      tprim_(kalmia::EmptyMatrix(X->SizeRows())),
      xResiduals_(*X),
      y_(std::make_unique<Matrix>(*Y)),
      maxIterations_(maxIterations),
      maxPLSComponents_(maxPLSComponents) {
  if (X->SizeRows() != Y->SizeRows()) throw NCError("Internal error in NCYOrthogonalPLS::NCYOrthogonalPLS");
  for (int i = 1; i <= X->SizeRows(); ++i) {
    if (IsEmptyRow(*X, i)) throw NCError("The X matrix contains at least one row with only missing values.");
    if (IsEmptyRow(*Y, i)) throw NCError("The Y matrix contains at least one row with only missing values.");
  }
}

NCYOrthogonalPLS::NCYOrthogonalPLS(const NCYOrthogonalPLS& other) = default;

NCYOrthogonalPLS& NCYOrthogonalPLS::operator=(const NCYOrthogonalPLS& other) {
  NCYOrthogonalPLS copy(other);
  Swap(&copy);
  return *this;
}

NCYOrthogonalPLS::~NCYOrthogonalPLS() = default;

void NCYOrthogonalPLS::Swap(NCYOrthogonalPLS* other) {
  pprim_.swap(other->pprim_);
  wprim_.swap(other->wprim_);
  tprim_.swap(other->tprim_);
  xResiduals_.swap(other->xResiduals_);
  y_.swap(other->y_);
  yScores_.swap(other->yScores_);
  yScoresInverse_.swap(other->yScoresInverse_);
  std::swap(components_, other->components_);
  std::swap(maxIterations_, other->maxIterations_);
  std::swap(maxPLSComponents_, other->maxPLSComponents_);
}

void NCYOrthogonalPLS::SetupYPCA(NCProgress* progress) const {
  if (!y_) throw CannotGoOn();
  std::unique_ptr<Matrix> y = std::move(y_);  // a stop or a failure of its components is the end of Y
  try {
    TakeScoresOf(*y, progress);
  } catch (const std::bad_alloc&) {
    y_ = std::move(y);  // more memory may be there next time
    throw;
  }
}

void NCYOrthogonalPLS::TakeScoresOf(const NCDataMatrix<float>& Y, NCProgress* progress) const {
  PCA_SS_ComponentValidator validator(nullptr, kShareOfY);
  NCPCA model(&Y, maxIterations_);
  validator.SetPCAModel(&model);
  while (validator.IsValid()) {
    model.NextComponent(progress, nullptr, 0, nullptr);
    model.CalculateResiduals();
  }
  if (model.GetComponents() == 0) throw CannotGoOn();
  auto scores = std::make_unique<Matrix>(*model.GetTprim());
  scores->Transpose();
  auto inverse = std::make_unique<Matrix>(*scores);
  inverse->TransformToMprim_mul_M();
  inverse->TransformToInverse();
  yScores_ = std::move(scores);
  yScoresInverse_ = std::move(inverse);
}

NCDataVector<float> NCYOrthogonalPLS::OutsideOfY(const NCDataVector<float>& scores) const {
  return scores - *yScores_ * (*yScoresInverse_ * yScores_->PreMultiply(scores));
}

NCDataVector<float> NCYOrthogonalPLS::NextWeights(const NCDataVector<float>& w, NCProgress* bar,
                                                  NCProgress* ofModels) const {
  const Vector t = OutsideOfY(xResiduals_.RegressRows(w));
  NCPLS model(&xResiduals_, &t, maxIterations_);
  OSCPLSComponentValidator validator(&model, maxPLSComponents_);
  bool goesOn = true;
  while (goesOn && validator.IsValid()) {
    if (!bar->NextSpin()) throw CannotGoOn();
    goesOn = AddComponent(ofModels, &model);
  }
  bar->SpinDone();
  // Only where cells are no numbers does the validator ask for no component at all, and with such cells the search did
  // not start: no table comes here. Missing weights would have a missing change, which ends the search.
  if (model.GetComponents() == 0) return Vector(xResiduals_.SizeColumns());
  Vector next = model.GetRegressionCoefficients(-1).GetColumn(1);
  next.Normalise();
  return next;
}

NCDataVector<float> NCYOrthogonalPLS::FindWeights(bool showProgress, NCProgress* progress) const {
  Vector w = kalmia::FirstLoading(xResiduals_, maxIterations_, progress);
  if (!yScores_) SetupYPCA(progress);
  CString title;
  title.Format(LanguageString::Get(kTitle), components_ + 1);
  std::optional<NCProgress> own;
  if (!progress) own.emplace(title, kBarBegins, kBarEnds, true, showProgress, true, nullptr);
  NCProgress* bar = own ? &*own : progress;
  double measure = 0.0;
  int rounds = 0;
  do {
    const Vector next = NextWeights(w, bar, progress);
    measure = MeasureOfSearch(next.Difference(w));
    w = next;
    ++rounds;
    if (progress) progress->SetRange(kBarBegins, kBarEnds);  // the models inside have set theirs
    if (!bar->SetValue(static_cast<float>(-measure))) throw CannotGoOn();
  } while (measure > 0.0 && rounds < maxIterations_);
  return w;
}

void NCYOrthogonalPLS::NextComponent(bool showProgress) { AppendComponent(showProgress, nullptr); }

void NCYOrthogonalPLS::NextComponent(NCProgress* progress) { AppendComponent(/*showProgress=*/false, progress); }

void NCYOrthogonalPLS::AppendComponent(bool showProgress, NCProgress* progress) {
  const Vector w = FindWeights(showProgress, progress);
  const Vector t = xResiduals_.RegressRows(w);
  const Vector p = xResiduals_.RegressColumns(t);
  Matrix tprim = kalmia::WithRow(tprim_, components_ + 1, t);
  Matrix wprim = kalmia::WithRow(wprim_, components_ + 1, w);
  Matrix pprim = kalmia::WithRow(pprim_, components_ + 1, p);
  xResiduals_.AddVprimV(t, p, -1.0F);
  tprim_.swap(tprim);
  wprim_.swap(wprim);
  pprim_.swap(pprim);
  ++components_;
}

void NCYOrthogonalPLS::RemoveComponent() {
  if (components_ <= 0) return;
  Vector p = pprim_[components_];
  p *= -1.0L;
  Matrix pprim = pprim_, wprim = wprim_, tprim = tprim_;
  for (Matrix* matrix : {&pprim, &wprim, &tprim}) matrix->RemoveRows(components_, 1);
  xResiduals_.AddVprimV(tprim_[components_], p, -1.0F);
  pprim_.swap(pprim);
  wprim_.swap(wprim);
  tprim_.swap(tprim);
  --components_;
}

void NCYOrthogonalPLS::CalculateResiduals(NCDataMatrix<float>* matrix) const {
  if (matrix->SizeRows() > 0 && components_ > 0 && matrix->SizeColumns() != wprim_.SizeColumns())
    throw NCError("The filter is for a table of another number of columns.");
  for (int a = 1; a <= components_; ++a) matrix->AddVprimV(matrix->RegressRows(wprim_[a]), pprim_[a], -1.0F);
}

NCDataMatrix<float> NCYOrthogonalPLS::GetWStarPrim() const { return NCPLS::GetWStarPrim(wprim_, pprim_); }

double NCYOrthogonalPLS::GetYAngle(const NCDataVector<float>* vector) const {
  if (!yScores_) SetupYPCA(/*progress=*/nullptr);
  if (vector->Size() != yScores_->SizeRows()) throw NCError("The vector has not one cell for each observation.");
  const Vector outside = OutsideOfY(*vector);
  const double share = RoundedToFloat(*vector * outside);
  const double squares = RoundedToFloat(outside * outside) * RoundedToFloat(*vector * *vector);
  const double cosine = std::min(std::max(share / std::sqrt(squares), -1.0), 1.0);
  constexpr double kPi = 3.14159265358979323846;
  return kHalfTurnIsNinety - kHalfTurnIsNinety * std::acos(cosine) / kPi;
}
