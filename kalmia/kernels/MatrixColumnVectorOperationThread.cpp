#include "kalmia/kernels/MatrixColumnVectorOperationThread.h"

#include <algorithm>

namespace NCMultiThreading {
namespace {

int DivideRoundingUp(int n, int parts) { return n / parts + (n % parts != 0); }

}  // namespace

ColumnSliceRange::ColumnSliceRange(int first, int last, int processors)
    : current(first), last(last), sliceSize(0), numSlices(0) {
  const int columns = last - first + 1;
  if (columns <= 0) return;
  sliceSize = DivideRoundingUp(columns, std::max(1, processors));
  numSlices = DivideRoundingUp(columns, sliceSize);
}

std::pair<int, int> ColumnSliceRange::Next() {
  const int start = current;
  current += std::min(sliceSize, last + 1 - current);
  return {start, current};
}

template <class T>
MatrixColumnVectorOperationThread<T>::MatrixColumnVectorOperationThread(
    T* output, int firstColumn, int endColumn, const NCDataMatrix<T>* matrix, const NCDataVector<T>* vector,
    long double sumOfSquares, int misValMode, int* numMisVal, const Operation& operation)
    : output(output),
      firstColumn(firstColumn),
      endColumn(endColumn),
      matrix(matrix),
      vector(vector),
      sumOfSquares(sumOfSquares),
      misValMode(misValMode),
      numMisVal(numMisVal),
      operation(operation) {}

template <class T>
void MatrixColumnVectorOperationThread<T>::operator()() {
  for (int c = firstColumn; c < endColumn; ++c)
    operation(output, c, *matrix, *vector, sumOfSquares, misValMode, *numMisVal);
}

template struct MatrixColumnVectorOperationThread<float>;
template struct MatrixColumnVectorOperationThread<double>;

}  // namespace NCMultiThreading
