#pragma once

#include "kalmia/support/NCError.h"

namespace DendroGram {

/// Two rows have less columns in common than a distance takes: the first such pair, row by row.
class CommonColumnsError : public NCError {
 public:
  CommonColumnsError(int first, int second, int common);
  NCError* Clone() const override { return new CommonColumnsError(*this); }

  int firstRow;   ///< from 1
  int secondRow;  ///< above the first
  int commonColumns;
};

}  // namespace DendroGram
