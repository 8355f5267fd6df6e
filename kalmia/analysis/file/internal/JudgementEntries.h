#pragma once

#include <cstddef>
#include <istream>
#include <ostream>

#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/model/StoredValidation.h"

namespace kalmia::analysis {

// Entries of a model file that tell how the model was judged, as docs/model-file.md lists them. Reading checks that
// they have as many columns, classes and kinds of components as the model.

/// How many columns the model has; a model of X alone has no Y columns.
struct JudgedColumns {
  std::size_t x = 0;
  std::size_t y = 0;
  std::size_t kinds = 0;   ///< see StoredValidationEntry
  bool bothWays = false;   ///< whether X is predicted from Y, too
  bool classes = false;    ///< whether Y are dummies of classes
};

void WriteValidation(const StoredValidation& validation, std::ostream& stream);
bool ReadValidation(std::istream& stream, const JudgedColumns& columns, StoredValidation* validation);

/// How well rows of each class are found, fitted and left out.
void WriteClassFigures(const StoredClasses& classes, std::ostream& stream);
bool ReadClassFigures(std::istream& stream, std::size_t count, StoredClasses* classes);

}  // namespace kalmia::analysis
