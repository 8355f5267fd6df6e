#include <istream>
#include <ostream>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/internal/OldLayout.h"
#include "kalmia/containers/internal/SizeLimit.h"

namespace {

enum Entry : unsigned short { kRows, kColumns, kMissingCells, kCells, kColumnCounts, kEntries };

/// A stored row takes at least its magic with the length of it (8), its version (2), its size and its count (8).
constexpr int kSmallestRow = 18;

/// Bytes behind what the sizes promise are rows or counts that the reader would lose.
void RequireReadToItsEnd(InputStreamDirectory& directory, Entry entry) {
  std::istream* stream = directory.GetInput(entry);
  if (stream && kalmia::BytesLeft(*stream) > 0) kalmia::ThrowReadError();
}

}  // namespace

template <class T>
bool NCDataMatrix<T>::VexStreamableWrite(std::ostream& stream) {
  OutputStreamDirectory directory(stream, kEntries);
  WriteFourBytes(&rows_, 1, directory.GetOutput(kRows));
  WriteFourBytes(&columns_, 1, directory.GetOutput(kColumns));
  WriteFourBytes(&numMisVal_, 1, directory.GetOutput(kMissingCells));
  for (int r = 1; r <= rows_; ++r) directory.GetOutput(kCells) << rowArray_[r];
  directory.GetOutput(kColumnCounts) << *columnMisVal_;
  directory.Close();
  return stream.good();
}

template <class T>
bool NCDataMatrix<T>::VexStreamableRead(std::istream& stream) {
  if (!this->VexStreamableReadBases(stream)) return false;
  Clear();
  const short version = this->GetVexStreamVersionNumber();
  return version == 4 ? ReadStreamDirectory(stream) : ReadOldLayout(stream, version);
}

template <class T>
bool NCDataMatrix<T>::ReadStreamDirectory(std::istream& stream) {
  InputStreamDirectory directory(stream);
  if (stream.fail()) kalmia::ThrowReadError();
  NCDataMatrix read;
  int rows = 0;
  int missing = 0;  // what the cells say counts
  ReadFromStreamDir(rows, directory, kRows, /*must=*/true);
  ReadFromStreamDir(read.columns_, directory, kColumns, /*must=*/true);
  ReadFromStreamDir(missing, directory, kMissingCells, /*must=*/true);
  if (!kalmia::CanBeTable(rows, read.columns_)) kalmia::ThrowReadError();
  if (rows > 0) {
    std::istream* cells = directory.GetInput(kCells);
    if (!cells) throw VexStreamError();
    if (!kalmia::HasBytesFor(*cells, rows, kSmallestRow)) kalmia::ThrowReadError();
    read.MoveRows(rows);
  }
  for (int r = 1; r <= rows; ++r) {
    ReadFromStreamDir(read.rowArray_[r], directory, kCells, /*must=*/true);
    if (read.rowArray_[r].Size() != read.columns_) kalmia::ThrowReadError();
    read.rows_ = r;
  }
  RequireReadToItsEnd(directory, kCells);
  ReadFromStreamDir(*read.columnMisVal_, directory, kColumnCounts, /*must=*/true);
  if (read.columnMisVal_->Size() != read.columns_) kalmia::ThrowReadError();
  RequireReadToItsEnd(directory, kColumnCounts);
  directory.Close();
  if (stream.fail()) return false;
  read.CountMissing();
  swap(read);
  return true;
}

template <class T>
bool NCDataMatrix<T>::ReadOldLayout(std::istream& stream, short version) {
  if (!kalmia::BeginOldLayout(stream, version)) return false;
  int rows = 0;
  int columns = 0;
  int missing = 0;  // what the cells say counts
  if (!ReadFourBytes(&rows, 1, stream) || !ReadFourBytes(&columns, 1, stream) || !ReadFourBytes(&missing, 1, stream))
    return false;
  if (!kalmia::CanBeTable(rows, columns)) return false;

  // The stream may not know its length: only cells that were really there decide how large the matrix becomes.
  std::vector<T> cells;
  for (int r = 1; r <= rows; ++r) {
    NCDataVector<T> row;
    if (!(stream >> row) || row.Size() != columns) return false;
    cells.insert(cells.end(), row.begin(), row.end());
  }
  NCIntegralVector<int, -99> counts;
  if (!(stream >> counts) || counts.Size() != columns) return false;

  NCDataMatrix read;
  read.SetSize(rows, columns);
  const T* row = cells.data();
  for (int r = 1; r <= rows; ++r, row += columns) read.rowArray_[r].CopyZeroBasedVector(row, columns);
  read.CountMissing();
  swap(read);
  return true;
}

#define KALMIA_INSTANTIATE(T)                                                        \
  template bool NCDataMatrix<T>::VexStreamableWrite(std::ostream&);                  \
  template bool NCDataMatrix<T>::VexStreamableRead(std::istream&);                   \
  template bool NCDataMatrix<T>::ReadStreamDirectory(std::istream&);                 \
  template bool NCDataMatrix<T>::ReadOldLayout(std::istream&, short);

KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
