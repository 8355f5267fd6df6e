#pragma once

#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/Export.h"

/// Helpers for callers of the containers.
class KALMIA_EXPORT NCMatUtilities {
 public:
  /// The quiet NaN of the platform, for callers of the library. The library does not use it: a missing cell is -99.
  static float NCGetQuietNaN();

  /// The numbers from `first` to `last` that are not in `v`, ascending, as a new vector that the caller owns; empty if
  /// first > last. `v` is not null and sorted ascending (not checked); it may repeat numbers and have others outside
  /// the range. NCError for a range of more than 2^31 - 1 numbers.
  static NCIntegralVector<int, -99>* ComplementVector(const NCIntegralVector<int, -99>* v, int last, int first);
};
