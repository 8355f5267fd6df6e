#pragma once

#include "kalmia/support/Export.h"
#include "kalmia/support/NCError.h"

namespace DendroGram {

/// Two rows have too few columns in common for a distance: the first such pair, row by row.
class KALMIA_EXPORT CommonColumnsError : public NCError {
 public:
  CommonColumnsError(int first, int second, int common);
  NCError* Clone() const override { return new CommonColumnsError(*this); }

  int firstRow;   ///< from 1
  int secondRow;  ///< above the first
  int commonColumns;
};

}  // namespace DendroGram
