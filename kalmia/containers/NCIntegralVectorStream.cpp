#include <algorithm>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/containers/internal/OldLayout.h"

// The stream form. Version 4: a directory whose one entry holds the size and the cells. Versions 1 and 3: the same two
// straight on the stream; version 2: a text before them.

namespace {

/// A cell on the stream: a byte for a bool, four bytes for a number, however wide it is in memory.
template <class T>
using StoredCell = std::conditional_t<std::is_same_v<T, bool>, unsigned char,
                                      std::conditional_t<std::is_signed_v<T>, std::int32_t, std::uint32_t>>;

template <class T>
bool Fits(T cell) {
  if constexpr (sizeof(T) > sizeof(StoredCell<T>)) return cell <= std::numeric_limits<StoredCell<T>>::max();
  return true;
}

}  // namespace

template <class T, int M>
bool NCIntegralVector<T, M>::CanBeStored() const {
  return std::all_of(begin(), end(), Fits<T>);
}

template <class T, int M>
bool NCIntegralVector<T, M>::VexStreamableStartWrite(std::ostream& stream) {
  return (this->streamVisited || CanBeStored()) && Persistence::VexStreamableStartWrite(stream);
}

template <class T, int M>
bool NCIntegralVector<T, M>::VexStreamableWrite(std::ostream& stream) {
  if (!CanBeStored()) return false;
  OutputStreamDirectory directory(stream, 1);
  std::ostream& entry = directory.GetOutput(0);
  WriteFourBytes(&size_, 1, entry);
  const std::vector<StoredCell<T>> cells(begin(), end());
  if (size_ > 0) WriteArray(cells.data(), size_, sizeof(StoredCell<T>), entry);
  directory.Close();
  return stream.good();
}

template <class T, int M>
bool NCIntegralVector<T, M>::VexStreamableRead(std::istream& stream) {
  const short version = this->GetVexStreamVersionNumber();
  Clear();
  bool good = this->VexStreamableReadBases(stream);
  if (good) good = version == 4 ? ReadDirectory(stream) : ReadOldLayout(stream, version);
  if (!good) Clear();
  return good;
}

template <class T, int M>
bool NCIntegralVector<T, M>::ReadDirectory(std::istream& stream) {
  InputStreamDirectory directory(stream);
  std::istream* entry = directory.GetInput(0);
  // Exactly the cells and no more: other bytes are cells of another type under the same magic.
  const bool good = entry && ReadSizeAndCells(*entry) && kalmia::BytesLeft(*entry) == 0;
  directory.Close();
  return good && !stream.fail();
}

template <class T, int M>
bool NCIntegralVector<T, M>::ReadOldLayout(std::istream& stream, short version) {
  return kalmia::BeginOldLayout(stream, version) && ReadSizeAndCells(stream);
}

template <class T, int M>
bool NCIntegralVector<T, M>::ReadSizeAndCells(std::istream& stream) {
  int size = 0;
  std::vector<StoredCell<T>> cells;
  if (!ReadFourBytes(&size, 1, stream) || !kalmia::ReadCells(stream, size, cells)) return false;
  SetNumValues(size, T());
  for (int i = 1; i <= size; ++i) storage_[i] = static_cast<T>(cells[static_cast<std::size_t>(i) - 1]);
  return true;
}

#define KALMIA_INSTANTIATE(T, M)                                                   \
  template bool NCIntegralVector<T, M>::CanBeStored() const;                       \
  template bool NCIntegralVector<T, M>::VexStreamableStartWrite(std::ostream&);    \
  template bool NCIntegralVector<T, M>::VexStreamableWrite(std::ostream&);         \
  template bool NCIntegralVector<T, M>::VexStreamableRead(std::istream&);          \
  template bool NCIntegralVector<T, M>::ReadDirectory(std::istream&);              \
  template bool NCIntegralVector<T, M>::ReadOldLayout(std::istream&, short);       \
  template bool NCIntegralVector<T, M>::ReadSizeAndCells(std::istream&);
KALMIA_INSTANTIATE(int, -99)
KALMIA_INSTANTIATE(bool, 0)
KALMIA_INSTANTIATE(unsigned long, 0)
#undef KALMIA_INSTANTIATE
