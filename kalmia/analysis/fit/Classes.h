#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// Which class each row belongs to.
struct Classes {
  std::vector<std::string> names;  ///< in the order of their bytes
  std::vector<int> classOfRow;     ///< number of the name, from 0; -1 of a row without a class
};

/// The classes of labels, of which an empty one stands for none.
/// Throws BadData for fewer than two classes, and for a class of a single row, which it names: no model can be asked
/// for a class that it has never seen.
KALMIA_EXPORT Classes ClassesOf(const std::vector<std::string>& labels);

/// A column for each class, 1 in its rows and 0 in those of the others; rows without a class have no cells.
KALMIA_EXPORT RealMatrix DummiesOf(const Classes& classes);

}  // namespace kalmia::analysis
