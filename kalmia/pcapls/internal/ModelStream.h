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

/// Writes version 2: a directory with an entry for each field.
bool WriteModel(std::ostream& stream, const ModelFields& fields);

/// Reads version 2, all of whose entries have to be there, or version 1, the same fields one after the other; false for
/// any other. False too where the bytes lie or end too early; from a matrix of version 1, VexStreamError.
bool ReadModel(std::istream& stream, short version, const ModelFields& fields);

}  // namespace kalmia
