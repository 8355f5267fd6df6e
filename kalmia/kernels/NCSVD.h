#pragma once

#include "kalmia/containers/Missing.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"

/// A finished singular value decomposition A = U diag(W) V' of a matrix without holes: what NCDataMatrix::GetSVD and
/// TransformToSVD return. It owns its matrices; the pointers that the accessors give stay its own, and are null unless
/// the status is StatusSuccess. Instantiated for `float` and `double`. Not to be copied.
///
/// A of r rows and c columns has U of r by c, V of c by c and W of c cells, all of them not negative. Of a wide A only
/// r columns of U carry anything; the other singular values are zero up to rounding. A singular value below max(largest
/// * 1e-16, 1.1754943508222875e-38) is exactly 0, in `float` as in `double`: rounding in `float` leaves more than that,
/// so a matrix of low rank has cells of exactly 0 only where the reduction happens to be exact.
template <class T>
class KALMIA_EXPORT NCSVD {
 public:
  enum Status {
    StatusSuccess = 0,
    StatusMissingCells = 1,  ///< the matrix has missing cells; nothing was computed
    StatusNotConverged = 2   ///< the iteration failed, or the numbers are not finite
  };

  NCSVD(const NCSVD&) = delete;
  NCSVD& operator=(const NCSVD&) = delete;
  virtual ~NCSVD();

  const NCDataMatrix<T>* GetU() const { return u_; }
  const NCDataMatrix<T>* GetV() const { return v_; }
  const NCDataVector<T>* GetW() const { return w_; }  ///< in no order until Sort
  Status GetStatus() const { return status_; }
  bool IsSorted() const { return sorted_; }

  /// Orders the singular values descending, and the columns of U and V with them; equal ones keep their order. Without
  /// success nothing happens.
  void Sort();

  /// Sorts, then removes the singular values that are exactly 0 with their columns of U and V, for good. Without
  /// success nothing happens.
  void RemoveZeroSingularValues();

  /// The inverse V diag(1 / W) U' of A; of an A that is not square, or after RemoveZeroSingularValues, the
  /// pseudo-inverse over the singular values that are left. A new matrix of c by r, the caller's; null if the status is
  /// not success. With a `maxCondition` zero singular values are removed first, for good; null then also where any was
  /// removed, where there is none, or where largest / smallest is above maxCondition. With -99 nothing is tested or
  /// removed, and a zero singular value divides by zero.
  NCDataMatrix<T>* GetInverse(float maxCondition);

 protected:
  NCSVD() = default;

 private:
  friend class NCDataMatrix<T>;  // its SVD fills the members

  NCDataMatrix<T>* v_ = nullptr;
  NCDataVector<T>* w_ = nullptr;
  NCDataMatrix<T>* u_ = nullptr;
  Status status_ = StatusSuccess;
  bool sorted_ = false;
};

/// The NCSVD that can be made; NCDataMatrix::SVD is its user.
template <class T>
class KALMIA_EXPORT SVDBuilder : public NCSVD<T> {
 public:
  SVDBuilder() = default;
};

extern template class NCSVD<float>;
extern template class NCSVD<double>;
