#include <vector>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/internal/AlignedBlock.h"
#include "kalmia/containers/internal/OldLayout.h"

// The stream form. Version 4: a directory with the size, the count of missing cells, the cells. Versions 1 and 3: the
// same three straight on the stream; version 2: a text before them.

template <class T>
bool NCDataVector<T>::VexStreamableWrite(std::ostream& stream) {
  return kalmia::WriteDirectory(
      stream, {{&size_, 1, 4}, {&numMisVal_, 1, 4}, {size_ > 0 ? data_ + 1 : nullptr, size_, sizeof(T)}});
}

template <class T>
bool NCDataVector<T>::VexStreamableRead(std::istream& stream) {
  const short version = this->GetVexStreamVersionNumber();
  Clear();
  bool good = this->VexStreamableReadBases(stream);
  if (good) good = version == 4 ? ReadDirectory(stream) : ReadOldLayout(stream, version);
  if (!good) Clear();
  return good;
}

template <class T>
bool NCDataVector<T>::ReadDirectory(std::istream& stream) {
  InputStreamDirectory directory(stream);
  int size = 0, count = 0;  // the count on the stream may lawfully be low: the cells are counted instead
  bool good = ReadFromStreamDir(size, directory, 0, false) && ReadFromStreamDir(count, directory, 1, false);
  if (good) {
    // Exactly the cells: half or double the bytes are cells of the other type under the same magic.
    std::istream* cells = directory.GetInput(2);
    const std::int64_t bytes = cells ? kalmia::BytesLeft(*cells) : 0;
    good = bytes == static_cast<std::int64_t>(size) * static_cast<int>(sizeof(T));
    if (good && size > 0) good = ReadCells(*cells, size);
  }
  directory.Close();
  return good && !stream.fail();
}

template <class T>
bool NCDataVector<T>::ReadOldLayout(std::istream& stream, short version) {
  if (!kalmia::BeginOldLayout(stream, version)) return false;
  int size = 0, count = 0;
  return ReadFourBytes(&size, 1, stream) && ReadFourBytes(&count, 1, stream) && ReadCells(stream, size);
}

template <class T>
bool NCDataVector<T>::ReadCells(std::istream& stream, int size) {
  std::vector<T> cells;
  if (!kalmia::ReadCells(stream, size, cells)) return false;
  if (size == 0) return true;
  kalmia::AlignedBlock<T> block(size);
  ReplaceBlock(block, size);
  CopyZeroBasedVector(cells.data(), size);
  return true;
}

#define KALMIA_INSTANTIATE(T)                                               \
  template bool NCDataVector<T>::VexStreamableWrite(std::ostream&);         \
  template bool NCDataVector<T>::VexStreamableRead(std::istream&);          \
  template bool NCDataVector<T>::ReadDirectory(std::istream&);              \
  template bool NCDataVector<T>::ReadOldLayout(std::istream&, short);       \
  template bool NCDataVector<T>::ReadCells(std::istream&, int);
KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
