#pragma once

#include <functional>

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

/// Whether v is one of m's own rows: the object itself, not only a share of its cells.
template <class T>
bool IsRowOf(const NCDataVector<T>& v, const NCDataMatrix<T>& m) {
  if (m.SizeRows() == 0) return false;
  return !std::less<const NCDataVector<T>*>()(&v, m.begin()) && std::less<const NCDataVector<T>*>()(&v, m.end());
}

/// A vector that an operation reads while it writes to a matrix, of which the vector may be a row. Such a row is held
/// by a share, so that its cells outlive the change (the matrix must unlink its rows before writing); any other vector
/// is only referred to, and its use count is left alone.
template <class T>
class AliasSafeRow {
 public:
  AliasSafeRow(const NCDataVector<T>& v, const NCDataMatrix<T>& written) : operand_(&v) {
    if (!IsRowOf(v, written)) return;
    share_ = v;
    operand_ = &share_;
  }
  AliasSafeRow(const AliasSafeRow&) = delete;
  AliasSafeRow& operator=(const AliasSafeRow&) = delete;
  const NCDataVector<T>& operator*() const { return *operand_; }

 private:
  const NCDataVector<T>* operand_;
  NCDataVector<T> share_;
};

}  // namespace kalmia
