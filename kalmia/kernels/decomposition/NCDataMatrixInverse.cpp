#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/decomposition/LUDecomposition.h"
#include "kalmia/kernels/rows/RowPointers.h"

template <class T>
bool NCDataMatrix<T>::TransformToInverse() {
  if (rows_ != columns_) return false;
  ForceUnlink();
  NCDataMatrix inverse(rows_, rows_, T(0));
  {
    const kalmia::RowPointers<T> a(*this), x(inverse);
    std::vector<int> order;
    if (!kalmia::DecomposeLU(a.Get(), rows_, order)) return false;
    kalmia::InvertLU<T>(a.Get(), rows_, order, x.Get());
  }
  *this = inverse;
  return true;
}

template bool NCDataMatrix<float>::TransformToInverse();
template bool NCDataMatrix<double>::TransformToInverse();
