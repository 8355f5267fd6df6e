#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/Export.h"

namespace kalmia {

// Copies that share no storage with their originals. Share counts are not atomic, so two threads must not use shares of
// one table or vector.

template <class Container>
Container DeepCopyOfCells(const Container& original) {
  Container copy;
  copy.CopyContent(original);
  return copy;
}

template <class T>
NCDataMatrix<T> DeepCopy(const NCDataMatrix<T>& matrix) {
  return DeepCopyOfCells(matrix);
}

template <class T>
NCDataVector<T> DeepCopy(const NCDataVector<T>& vector) {
  return DeepCopyOfCells(vector);
}

template <class T, int M>
NCIntegralVector<T, M> DeepCopy(const NCIntegralVector<T, M>& vector) {
  return DeepCopyOfCells(vector);
}

/// A copy of what is there; null for null.
template <class T>
std::unique_ptr<T> DeepCopy(const std::unique_ptr<T>& original) {
  return original ? std::make_unique<T>(DeepCopy(*original)) : nullptr;
}

/// A copy of each element.
template <class Item>
std::vector<Item> DeepCopy(const std::vector<Item>& items) {
  std::vector<Item> copies;
  copies.reserve(items.size());
  for (const Item& item : items) copies.push_back(DeepCopy(item));
  return copies;
}

/// A member that is a Value whose copies are deep: a class with such members has deep copies by default. Taking in a
/// Value, and giving itself out as one, copies as Value does: tables are shared.
template <class Value>
class KALMIA_EXPORT DeepCopied : public Value {
 public:
  DeepCopied() = default;
  explicit DeepCopied(Value value) : Value(std::move(value)) {}
  /// The copy is made before it is taken over: as an initialiser, one that fails is destroyed by g++ 12 unmade.
  DeepCopied(const DeepCopied& other) : Value() {
    Value copy = DeepCopy(other.AsValue());
    Value::operator=(std::move(copy));
  }
  DeepCopied& operator=(const DeepCopied& other) { return *this = DeepCopy(other.AsValue()); }
  DeepCopied& operator=(Value value) {
    Value::operator=(std::move(value));
    return *this;
  }

  const Value& AsValue() const { return *this; }  ///< to share it rather than to copy it
};

}  // namespace kalmia
