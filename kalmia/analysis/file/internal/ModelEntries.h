#pragma once

#include <istream>
#include <ostream>
#include <string>
#include <vector>

#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/text/internal/Bytes.h"
#include "kalmia/support/VexStream.h"

namespace kalmia::analysis {

// The content of a model file, entry by entry: docs/command/info.md lists them. Reading is false, and never throws, on
// bytes that do not hold what it reads, or parts that later work could not rely on.

/// The entries of the content, in their order. Those that a kind of model has no use for are empty; the last one is
/// there only where a column is shifted.
enum Entry : unsigned short {
  General,
  XNames,
  YNames,
  RowNames,
  XScaling,
  YScaling,
  Model,
  Components,
  Quality,
  Preprocessing,
  Shifts,
  Entries
};

/// Names in an entry.
bool ReadNames(unsigned short entry, InputStreamDirectory* directory, std::vector<std::string>* names);
/// Records behind their count; read(record, stream) reads one, and is false where it is none.
template <class Record, class Read>
bool ReadRecords(std::istream& stream, std::vector<Record>* records, const Read& read) {
  int count = 0;
  if (!ReadInteger(&count, stream)) return false;
  for (int a = 0; a < count; ++a) {
    records->emplace_back();
    if (!read(&records->back(), stream)) return false;
  }
  return true;
}
/// The object of the library in an entry.
bool ReadObject(unsigned short entry, InputStreamDirectory* directory, VexStreamBase* object);
/// The pooled deviation, and the quality of each Y column.
void WriteYQuality(const YModelInfo& model, OutputStreamDirectory* directory);
bool ReadYQuality(InputStreamDirectory* directory, YModelInfo* model);
/// Whether a matrix of the model has the shape that the names ask for.
bool HasShape(const NCDataMatrix<float>* matrix, std::size_t rows, std::size_t columns);
/// The same; a matrix without rows may have any number of columns.
bool HasRows(const NCDataMatrix<float>& matrix, std::size_t rows, std::size_t columns);

// What a kind of model has beside its frame. Reading also checks that the parts belong together, the frame's among
// them: later work relies on their shapes.

void WriteOwnEntries(const StoredPLS& model, OutputStreamDirectory* directory);
void WriteOwnEntries(const StoredPCA& model, OutputStreamDirectory* directory);
void WriteOwnEntries(const StoredOPLS& model, OutputStreamDirectory* directory);
void WriteOwnEntries(const StoredO2PLS& model, OutputStreamDirectory* directory);
void WriteOwnEntries(const StoredFilter& model, OutputStreamDirectory* directory);
bool ReadOwnEntries(InputStreamDirectory* directory, StoredPLS* model);
bool ReadOwnEntries(InputStreamDirectory* directory, StoredPCA* model);
bool ReadOwnEntries(InputStreamDirectory* directory, StoredOPLS* model);
bool ReadOwnEntries(InputStreamDirectory* directory, StoredO2PLS* model);
bool ReadOwnEntries(InputStreamDirectory* directory, StoredFilter* model);

}  // namespace kalmia::analysis
