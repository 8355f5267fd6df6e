#include "kalmia/containers/NCDataMatrix.h"

template <class T>
NCDataMatrix<T> NCDataMatrix<T>::GetRegressionCoefficients(const NCDataMatrix& Y) const {
  NCDataMatrix* const target = matrixResultTarget_;
  if (numMisVal_ != 0 || Y.numMisVal_ != 0) {
    MatrixDestroyer<T> holder;
    GetReturnMatrix(holder, rows_, rows_);
    holder.matrix->SetAllValues(0);
    return *holder.matrix;
  }
  matrixResultTarget_ = nullptr;
  NCDataMatrix inverse(*this);
  inverse.Transpose();
  inverse.TransformToMprim_mul_M();  // X X'
  inverse.TransformToInverse();
  const NCDataMatrix inverseTimesX = inverse * *this;
  return inverseTimesX.Result(target).MatrixMultiply(Y, /*transposeThis=*/false, /*transposeOther=*/true);
}

template NCDataMatrix<float> NCDataMatrix<float>::GetRegressionCoefficients(const NCDataMatrix& Y) const;
template NCDataMatrix<double> NCDataMatrix<double>::GetRegressionCoefficients(const NCDataMatrix& Y) const;
