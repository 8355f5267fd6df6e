#include "kalmia/o2pls/NCO2PLSPred.h"

#include "kalmia/pcapls/internal/ModelParts.h"
#include "kalmia/support/NCError.h"

NCO2PLSPred::NCO2PLSPred(const NCDataMatrix<float>& P, const NCDataMatrix<float>& W, const NCDataMatrix<float>& Q,
                         const NCDataMatrix<float>& Wo, const NCDataMatrix<float>& Po, const NCDataMatrix<float>& S,
                         const NCDataMatrix<float>& Lambda)
    : p_(P), w_(W), q_(Q), wo_(Wo), po_(Po), s_(S), lambda_(Lambda) {}

void NCO2PLSPred::RequireRowsOfTheModel() const {
  const int columns = residuals_.SizeColumns();
  if (residuals_.SizeRows() > 0 && !(kalmia::HasRowsOf(p_, columns) && kalmia::HasRowsOf(w_, columns) &&
                                     kalmia::HasRowsOf(po_, columns) && kalmia::HasRowsOf(wo_, columns)))
    throw NCError("O2PLS prediction: the rows are not of the model's number of columns.");
}

void NCO2PLSPred::Predict(int outputColumns) {
  RequireRowsOfTheModel();
  prediction_ = NCDataMatrix<float>(residuals_.SizeRows(), outputColumns, 0.0F);
  for (int o = 1; o <= po_.SizeRows(); ++o) AddOrthogonalComponent(o);
  for (int a = 1; a <= p_.SizeRows(); ++a) AddPredictiveComponent(a);
  if (t_.SizeRows() == 0) return;
  const NCDataMatrix<float> inner = t_.MatrixMultiply(lambda_, /*transposeThis=*/true, /*transposeOther=*/false);
  if (q_.SizeRows() > 0) prediction_ += inner * q_;
}

void NCO2PLSPred::AddOrthogonalComponent(int component) {
  NCDataMatrix<float> rest = residuals_;
  for (int a = 1; a <= p_.SizeRows(); ++a)
    rest.AddVprimV(rest.SpecialNipalsRegressRowsFix(w_[a], nullptr, 0), w_[a], -1.0F);
  const NCDataVector<float> to = rest.SpecialNipalsRegressRowsFix(wo_[component], nullptr, 0);
  to_.InsertRow(component, to);
  residuals_.AddVprimV(to, po_[component], -1.0F);
  prediction_.AddVprimV(to, s_[component], 1.0F);
}

void NCO2PLSPred::AddPredictiveComponent(int component) {
  const NCDataVector<float> t = residuals_.SpecialNipalsRegressRowsFix(w_[component], nullptr, 0);
  t_.InsertRow(component, t);
  residuals_.AddVprimV(t, p_[component], -1.0F);
}

NCO2PLSYPred::NCO2PLSYPred(const NCDataMatrix<float>* X, const NCO2PLS* model)
    : NCO2PLSYPred(*X, model->GetP(), model->GetW(), model->GetQ(), model->GetWo(), model->GetPo(), model->GetS(),
                   model->GetLambda(), model->SizeYColumns()) {}

NCO2PLSYPred::NCO2PLSYPred(const NCDataMatrix<float>& X, const NCDataMatrix<float>& P, const NCDataMatrix<float>& W,
                           const NCDataMatrix<float>& Q, const NCDataMatrix<float>& Wo, const NCDataMatrix<float>& Po,
                           const NCDataMatrix<float>& S, const NCDataMatrix<float>& Lambda, int outputColumns)
    : NCO2PLSPred(P, W, Q, Wo, Po, S, Lambda) {
  residuals_ = X;
  Predict(outputColumns);
}

NCO2PLSXPred::NCO2PLSXPred(const NCDataMatrix<float>* Y, const NCO2PLS* model)
    : NCO2PLSXPred(*Y, model->GetQ(), model->GetC(), model->GetP(), model->GetCo(), model->GetQo(), model->GetR(),
                   model->GetXLambda(), model->SizeXColumns()) {}

NCO2PLSXPred::NCO2PLSXPred(const NCDataMatrix<float>& Y, const NCDataMatrix<float>& Q, const NCDataMatrix<float>& C,
                           const NCDataMatrix<float>& P, const NCDataMatrix<float>& Co, const NCDataMatrix<float>& Qo,
                           const NCDataMatrix<float>& R, const NCDataMatrix<float>& XLambda, int outputColumns)
    : NCO2PLSPred(Q, C, P, Co, Qo, R, XLambda) {
  residuals_ = Y;
  Predict(outputColumns);
}
