#pragma once

#include <boost/function.hpp>
#include <utility>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/Export.h"

namespace NCMultiThreading {

/// Cuts the columns `first` to `last`, both included, into slices of ceil(n / processors) columns; the last one may be
/// smaller, and there may be fewer slices than processors (9 columns on 4 processors: three slices of 3). No columns
/// give no slices. Fewer than one processor counts as one.
struct KALMIA_EXPORT ColumnSliceRange {
  ColumnSliceRange(int first, int last, int processors);  ///< first is at least 1, which is not checked

  bool Empty() const { return current > last; }  ///< all slices are handed out
  /// The next slice as a half-open range: its first column, and one past its last. Must not be called if Empty().
  std::pair<int, int> Next();
  int GetSliceSize() const { return sliceSize; }
  int GetNumSlices() const { return numSlices; }

  int current;    ///< first column of the next slice
  int last;       ///< last column of all
  int sliceSize;  ///< columns of a slice; 0 when there are no columns
  int numSlices;  ///< ceil(n / sliceSize); 0 when there are no columns
};

/// The work of one thread on one slice of columns: calls an operation such as
/// NCDataMatrix::SpecialNipalsRegressOneColumnFix for each column. Several may run at the same time on one output,
/// because slices are disjoint, inputs are only read, and each has its own count. Columns and pointers are not checked.
template <class T>
struct KALMIA_EXPORT MatrixColumnVectorOperationThread {
  using Operation = boost::function<void(T* out, int c, const NCDataMatrix<T>& X, const NCDataVector<T>& v,
                                         long double ss, int misValMode, int& numMisVal)>;

  MatrixColumnVectorOperationThread(T* output, int firstColumn, int endColumn, const NCDataMatrix<T>* matrix,
                                    const NCDataVector<T>* vector, long double sumOfSquares, int misValMode,
                                    int* numMisVal, const Operation& operation);
  void operator()();

  T* output;                      ///< 1-based cells of the result
  int firstColumn;                ///< first column of the slice
  int endColumn;                  ///< one past the last column of the slice
  const NCDataMatrix<T>* matrix;
  const NCDataVector<T>* vector;  ///< the projecting vector
  long double sumOfSquares;       ///< vector->GetSS()
  int misValMode;                 ///< bit 0: the matrix has holes, bit 1: the vector has
  int* numMisVal;                 ///< this slice's change of the result's missing count
  Operation operation;            ///< what to do with each column
};

extern template struct MatrixColumnVectorOperationThread<float>;
extern template struct MatrixColumnVectorOperationThread<double>;

}  // namespace NCMultiThreading
