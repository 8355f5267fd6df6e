#pragma once

#include "kalmia/containers/Missing.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"

/// A finished singular value decomposition A = U diag(W) V' of a matrix without holes: what NCDataMatrix::GetSVD and
/// TransformToSVD return. It owns its matrices; the pointers that the accessors give stay its own, and are null unless
/// the status is StatusSuccess. Instantiated for `float` and `double`. Not to be copied.
///
/// For A of r rows and c columns: U is r by c, V is c by c, W has c cells, none negative. If A is wide, only r columns
/// of U mean anything, and the other singular values are zero up to rounding. A singular value below max(largest *
/// 1e-16, 1.1754943508222875e-38) is set to exactly 0, for `float` and `double` alike. Rounding in `float` usually
/// leaves more, so a matrix of low rank may have no singular value of exactly 0.
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

  /// Sorts the singular values descending, with the columns of U and V; equal ones keep their order. Does nothing
  /// unless the status is success.
  void Sort();

  /// Sorts, then removes the singular values that are exactly 0 with their columns of U and V, for good. Does nothing
  /// unless the status is success.
  void RemoveZeroSingularValues();

  /// The inverse V diag(1 / W) U' of A; the pseudo-inverse if A is not square or singular values were removed. A new
  /// matrix of c by r that the caller owns; null unless the status is success. With a `maxCondition`, zero singular
  /// values are removed first, for good, and the result is null if one was removed, if none is left, or if largest /
  /// smallest exceeds maxCondition. With -99 nothing is tested or removed; a zero singular value then divides by zero.
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

/// An NCSVD that can be constructed; NCDataMatrix::SVD does so.
template <class T>
class KALMIA_EXPORT SVDBuilder : public NCSVD<T> {
 public:
  SVDBuilder() = default;
};

extern template class NCSVD<float>;
extern template class NCSVD<double>;
