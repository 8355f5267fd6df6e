#pragma once

#include <iosfwd>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

/// What a model writes: its matrices in the order of its stream form, the limit of rounds and the rounds of the newest
/// component.
struct ModelFields {
  std::vector<NCDataMatrix<float>*> matrices;
  int* maxIterations;
  int* iterations;
};

bool WriteModelDirectory(std::ostream& stream, const ModelFields& fields);  ///< an entry for each field
/// The same read. All entries have to be there. False, never an exception, where the bytes lie or end too early.
bool ReadModelDirectory(std::istream& stream, const ModelFields& fields);
/// Reads the fields as they followed each other before there was a directory. VexStreamError from a matrix that lies.
bool ReadModelWithoutDirectory(std::istream& stream, const ModelFields& fields);

}  // namespace kalmia
