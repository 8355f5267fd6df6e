#pragma once

#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/Export.h"

/// What callers of the containers need beside them.
class KALMIA_EXPORT NCMatUtilities {
 public:
  /// The quiet NaN of the platform, for callers above the library. Nothing inside uses it: a missing cell is -99.
  static float NCGetQuietNaN();

  /// The numbers from `first` to `last` that are not in `v`, ascending, as a new vector of the caller's; empty where
  /// first > last. `v` is there and sorted ascending (not checked); repeated numbers and numbers outside the range are
  /// allowed. NCError for a range of more than 2^31 - 1 numbers.
  static NCIntegralVector<int, -99>* ComplementVector(const NCIntegralVector<int, -99>* v, int last, int first);
};
