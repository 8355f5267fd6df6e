#include <utility>

#include "kalmia/containers/NCDataMatrix.h"

template <class T>
NCDataMatrix<T> NCDataMatrix<T>::GetRegressionCoefficients(const NCDataMatrix& Y) const {
  if (numMisVal_ != 0 || Y.numMisVal_ != 0) {
    MatrixDestroyer<T> holder;
    GetReturnMatrix(holder, rows_, rows_);
    holder.matrix->SetAllValues(0);
    return *holder.matrix;
  }
  // Without a target nothing is written, and the table is copied, not shared: several threads may read it.
  NCDataMatrix* const target = matrixResultTarget_ ? std::exchange(matrixResultTarget_, nullptr) : nullptr;
  NCDataMatrix inverse;
  inverse.CopyContent(*this);
  inverse.Transpose();
  inverse.TransformToMprim_mul_M();  // X X'
  inverse.TransformToInverse();
  const NCDataMatrix inverseTimesX = inverse * *this;
  return inverseTimesX.Result(target).MatrixMultiply(Y, /*transposeThis=*/false, /*transposeOther=*/true);
}

template NCDataMatrix<float> NCDataMatrix<float>::GetRegressionCoefficients(const NCDataMatrix& Y) const;
template NCDataMatrix<double> NCDataMatrix<double>::GetRegressionCoefficients(const NCDataMatrix& Y) const;
