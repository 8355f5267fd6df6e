#pragma once

#include <istream>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/text/internal/Bytes.h"
#include "kalmia/support/VexStream.h"

namespace kalmia::analysis {

// The content of a model file, entry by entry: docs/model-file.md lists them. Readers return false where the bytes do
// not hold the entry, or where later work could not rely on it; they throw std::bad_alloc alone.

/// Names in an entry; false without the entry.
bool ReadNames(std::istream* entry, std::vector<std::string>* names);
/// A count, then so many records; read(record, stream) reads one, and returns false where there is no record.
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
bool ReadObject(std::istream* entry, VexStreamBase* object);

using Matrices = std::vector<NCDataMatrix<float>*>;
using ConstMatrices = std::vector<const NCDataMatrix<float>*>;
/// Matrices one after the other.
void WriteMatrices(const ConstMatrices& matrices, std::ostream& stream);
bool ReadMatrices(const Matrices& matrices, std::istream& stream);

/// Whether a matrix of the model has the shape that the names ask for.
bool HasShape(const NCDataMatrix<float>* matrix, std::size_t rows, std::size_t columns);
/// The same; a matrix without rows may have any number of columns.
bool HasRows(const NCDataMatrix<float>& matrix, std::size_t rows, std::size_t columns);
/// The same, or the matrix has no rows.
bool HasShapeOrNoRows(const NCDataMatrix<float>& matrix, std::size_t rows, std::size_t columns);

/// The scaled table less scores times loadings, of one set of components after the other.
using ScoresAndLoadings = std::pair<const NCDataMatrix<float>*, const NCDataMatrix<float>*>;
NCDataMatrix<float> LeftOf(NCDataMatrix<float> table, const ColumnScaling& scaling,
                           const std::vector<ScoresAndLoadings>& components);

// Parts of a file that each kind of model writes its own way: matrices that predict, records of components, scores of
// the training rows, residuals of the training table. `Agrees` tells whether all parts, names and scaling have shapes
// that fit together: later work relies on them.

void WriteModel(const StoredPLS& model, std::ostream& stream);
void WriteModel(const StoredPCA& model, std::ostream& stream);
void WriteModel(const StoredOPLS& model, std::ostream& stream);
void WriteModel(const StoredO2PLS& model, std::ostream& stream);
void WriteModel(const StoredFilter& model, std::ostream& stream);
bool ReadModel(std::istream& stream, StoredPLS* model);
bool ReadModel(std::istream& stream, StoredPCA* model);
bool ReadModel(std::istream& stream, StoredOPLS* model);
bool ReadModel(std::istream& stream, StoredO2PLS* model);
bool ReadModel(std::istream& stream, StoredFilter* model);

void WriteComponents(const StoredPLS& model, std::ostream& stream);
void WriteComponents(const StoredPCA& model, std::ostream& stream);
void WriteComponents(const StoredOPLS& model, std::ostream& stream);
void WriteComponents(const StoredO2PLS& model, std::ostream& stream);
void WriteComponents(const StoredFilter& model, std::ostream& stream);
bool ReadComponents(std::istream& stream, StoredPLS* model);
bool ReadComponents(std::istream& stream, StoredPCA* model);
bool ReadComponents(std::istream& stream, StoredOPLS* model);
bool ReadComponents(std::istream& stream, StoredO2PLS* model);
bool ReadComponents(std::istream& stream, StoredFilter* model);

void WriteScores(const StoredPLS& model, std::ostream& stream);
void WriteScores(const StoredPCA& model, std::ostream& stream);
void WriteScores(const StoredOPLS& model, std::ostream& stream);
void WriteScores(const StoredO2PLS& model, std::ostream& stream);
void WriteScores(const StoredFilter& model, std::ostream& stream);
bool ReadScores(std::istream& stream, StoredPLS* model);
bool ReadScores(std::istream& stream, StoredPCA* model);
bool ReadScores(std::istream& stream, StoredOPLS* model);
bool ReadScores(std::istream& stream, StoredO2PLS* model);
bool ReadScores(std::istream& stream, StoredFilter* model);

/// Whether the model has the scores of its training rows.
bool HasScores(const StoredPLS& model);
bool HasScores(const StoredPCA& model);
bool HasScores(const StoredOPLS& model);
bool HasScores(const StoredO2PLS& model);
bool HasScores(const StoredFilter& model);

/// The residuals of X, and of Y where the model has them. Those of OPLS and O2PLS are computed from the training table
/// and the scores, where the model does not hold them.
std::vector<NCDataMatrix<float>> ResidualsOf(const StoredPLS& model);
std::vector<NCDataMatrix<float>> ResidualsOf(const StoredPCA& model);
std::vector<NCDataMatrix<float>> ResidualsOf(const StoredOPLS& model);
std::vector<NCDataMatrix<float>> ResidualsOf(const StoredO2PLS& model);
std::vector<NCDataMatrix<float>> ResidualsOf(const StoredFilter& model);
bool TakeResiduals(const std::vector<NCDataMatrix<float>>& residuals, StoredPLS* model);
bool TakeResiduals(const std::vector<NCDataMatrix<float>>& residuals, StoredPCA* model);
bool TakeResiduals(const std::vector<NCDataMatrix<float>>& residuals, StoredOPLS* model);
bool TakeResiduals(const std::vector<NCDataMatrix<float>>& residuals, StoredO2PLS* model);
bool TakeResiduals(const std::vector<NCDataMatrix<float>>& residuals, StoredFilter* model);

bool Agrees(const StoredPLS& model);
bool Agrees(const StoredPCA& model);
bool Agrees(const StoredOPLS& model);
bool Agrees(const StoredO2PLS& model);
bool Agrees(const StoredFilter& model);

// Files before version 5 hold model, scores and residuals together in one entry.

bool ReadOldModel(std::istream& stream, StoredPLS* model);
bool ReadOldModel(std::istream& stream, StoredPCA* model);
bool ReadOldModel(std::istream& stream, StoredOPLS* model);
bool ReadOldModel(std::istream& stream, StoredO2PLS* model);
bool ReadOldModel(std::istream& stream, StoredFilter* model);

}  // namespace kalmia::analysis
