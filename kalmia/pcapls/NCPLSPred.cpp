#include "kalmia/pcapls/NCPLSPred.h"

#include <algorithm>
#include <utility>

#include "kalmia/pcapls/internal/ModelParts.h"
#include "kalmia/pcapls/internal/ScoredRows.h"
#include "kalmia/support/NCError.h"

namespace {

constexpr float kNoScore = kalmia::kMissingCell<float>;

/// Weights or loadings, which are as wide as X.
const NCDataMatrix<float>& ForVariablesOf(const NCDataMatrix<float>& X, const NCDataMatrix<float>& part) {
  if (X.SizeRows() > 0 && !kalmia::HasRowsOf(part, X.SizeColumns()))
    throw NCError("PLS prediction: the table has not the variables of the model.");
  return part;
}

/// A model that was restored may lack some of its matrices.
const NCDataMatrix<float>& WithComponentsOf(const NCDataMatrix<float>& P, const NCDataMatrix<float>& part) {
  if (part.SizeRows() < P.SizeRows()) throw NCError("PLS prediction: the model lacks weights of its components.");
  return part;
}

}  // namespace

NCPLSResiduals::NCPLSResiduals(NCDataMatrix<float>* X, const NCDataMatrix<float>& W, const NCDataMatrix<float>& P,
                               float tolerance)
    : NCDataVector<float>(X->SizeRows()),
      xResiduals_(X),
      w_(ForVariablesOf(*X, WithComponentsOf(P, W))),
      p_(ForVariablesOf(*X, P)),
      missingTolerance_(tolerance) {}

void NCPLSResiduals::CalcNextComponent() {
  CalcScores();
  kalmia::AddOuterProductWhereScored(xResiduals_, *this, p_[compComputed_], -1.0F);
}

int NCPLSResiduals::MissingLimit() const {
  const int variables = xResiduals_->SizeColumns();
  const int limit = variables - compComputed_ - 1;
  const float tolerated = static_cast<float>(variables) * missingTolerance_;
  // Below -1, where no row qualifies either, a cut to a whole number might not fit one.
  return tolerated < static_cast<float>(limit) ? static_cast<int>(std::max(tolerated, -1.0F)) : limit;
}

void NCPLSResiduals::CalcScores() {
  const int limit = MissingLimit();
  ++compComputed_;
  xResiduals_->Result(this).SpecialNipalsRegressRowsFix(w_[compComputed_], nullptr, 0);
  for (int i = 1; i <= Size(); ++i)
    if ((*xResiduals_)[i].GetNumMisVal() > limit) (*this)(i, kNoScore);
}

NCPLSPred::NCPLSPred(const NCDataMatrix<float>* X, const NCDataMatrix<float>* W, const NCDataMatrix<float>* P,
                     const NCDataMatrix<float>* C, float tolerance)
    : NCPLSPred(*X, *W, *P, *C, tolerance) {}

NCPLSPred::NCPLSPred(const NCDataMatrix<float>& X, const NCDataMatrix<float>& W, const NCDataMatrix<float>& P,
                     const NCDataMatrix<float>& C, float tolerance)
    : NCPLSPred(std::make_unique<NCDataMatrix<float>>(X),
                std::make_unique<NCDataMatrix<float>>(X.SizeRows(), C.SizeColumns(), 0.0F), W, P, C, tolerance) {}

NCPLSPred::NCPLSPred(bool, NCDataMatrix<float>* X, NCDataMatrix<float>* yPred, const NCDataMatrix<float>& W,
                     const NCDataMatrix<float>& P, const NCDataMatrix<float>& C, float tolerance)
    : NCPLSResiduals(X, W, P, tolerance), c_(WithComponentsOf(P, C)), yPred_(yPred) {
  yPred_->SetAllValues(0.0F);
}

NCPLSPred::NCPLSPred(OwnedMatrix X, OwnedMatrix yPred, const NCDataMatrix<float>& W, const NCDataMatrix<float>& P,
                     const NCDataMatrix<float>& C, float tolerance)
    : NCPLSResiduals(X.get(), W, P, tolerance),
      ownedX_(std::move(X)),
      ownedYPred_(std::move(yPred)),
      c_(WithComponentsOf(P, C)),
      yPred_(ownedYPred_.get()) {}

void NCPLSPred::CalcNextComponent() {
  NCPLSResiduals::CalcNextComponent();
  AddToPrediction();
}

void NCPLSPred::CalcLastComponent() {
  CalcScores();
  AddToPrediction();
}

void NCPLSPred::AddToPrediction() { kalmia::AddOuterProductWhereScored(yPred_, *this, c_[GetCompComputed()], 1.0F); }
