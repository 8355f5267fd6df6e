#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/o2pls/NCO2PLS.h"
#include "kalmia/support/Export.h"

/// Applies an O2PLS model to new observations of one block and predicts the other block. The constructors of the
/// derived classes do all the work; the object keeps no link to the model. New rows must be scaled as the model's;
/// NCError for rows of another number of columns. Other shapes are not checked. The getters return shares of the
/// results, so an object belongs to one thread at a time.
///
/// In the names of the X block, for N' new rows: for each orthogonal component, to is the score by Wo of the rows
/// without their predictive directions (removed by W); to po' is taken out of the rows, and to s' is added to the
/// prediction. Then each predictive component gives t = Xw and takes t p' out, and T' Lambda Q is added to the
/// prediction.
/// Missing: the regressions use the present cells. A row without a score in a component is missing from there on, and
/// so is its prediction.
class KALMIA_EXPORT NCO2PLSPred {
 protected:
  /// The matrices of the input block (Q and S of the output block) in the names of X; one component per row.
  NCO2PLSPred(const NCDataMatrix<float>& P, const NCDataMatrix<float>& W, const NCDataMatrix<float>& Q,
              const NCDataMatrix<float>& Wo, const NCDataMatrix<float>& Po, const NCDataMatrix<float>& S,
              const NCDataMatrix<float>& Lambda);
  NCO2PLSPred(const NCO2PLSPred&) = default;
  NCO2PLSPred& operator=(const NCO2PLSPred&) = default;
  ~NCO2PLSPred() = default;

  void Predict(int outputColumns);  ///< from residuals_, the new rows; the other results are still empty

  NCDataMatrix<float> p_;
  NCDataMatrix<float> w_;
  NCDataMatrix<float> q_;
  NCDataMatrix<float> wo_;
  NCDataMatrix<float> po_;
  NCDataMatrix<float> s_;
  NCDataMatrix<float> lambda_;
  NCDataMatrix<float> t_;
  NCDataMatrix<float> to_;
  NCDataMatrix<float> residuals_;   ///< the new rows; at the end what no component explains
  NCDataMatrix<float> prediction_;

 private:
  void RequireRowsOfTheModel() const;
  void AddOrthogonalComponent(int component);
  void AddPredictiveComponent(int component);
};

/// Predicts Y from rows of X.
class KALMIA_EXPORT NCO2PLSYPred : public NCO2PLSPred {
 public:
  NCO2PLSYPred(const NCDataMatrix<float>* X, const NCO2PLS* model);  ///< X N' x K
  /// The same from stored matrices of the model; `outputColumns` is M.
  NCO2PLSYPred(const NCDataMatrix<float>& X, const NCDataMatrix<float>& P, const NCDataMatrix<float>& W,
               const NCDataMatrix<float>& Q, const NCDataMatrix<float>& Wo, const NCDataMatrix<float>& Po,
               const NCDataMatrix<float>& S, const NCDataMatrix<float>& Lambda, int outputColumns);

  NCDataMatrix<float> GetYPred() const { return prediction_; }  ///< N' x M
  NCDataMatrix<float> GetT() const { return t_; }               ///< A x N'
  NCDataMatrix<float> GetTo() const { return to_; }             ///< one row per X-side orthogonal component, N' columns
};

/// Predicts X from rows of Y.
class KALMIA_EXPORT NCO2PLSXPred : public NCO2PLSPred {
 public:
  NCO2PLSXPred(const NCDataMatrix<float>* Y, const NCO2PLS* model);  ///< Y N' x M
  /// The same from stored matrices of the model; `outputColumns` is K.
  NCO2PLSXPred(const NCDataMatrix<float>& Y, const NCDataMatrix<float>& Q, const NCDataMatrix<float>& C,
               const NCDataMatrix<float>& P, const NCDataMatrix<float>& Co, const NCDataMatrix<float>& Qo,
               const NCDataMatrix<float>& R, const NCDataMatrix<float>& XLambda, int outputColumns);

  NCDataMatrix<float> GetXPred() const { return prediction_; }  ///< N' x K
  NCDataMatrix<float> GetU() const { return t_; }               ///< A x N'
  NCDataMatrix<float> GetUo() const { return to_; }             ///< one row per Y-side orthogonal component, N' columns
};
