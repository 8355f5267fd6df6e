#pragma once

#include "kalmia/support/Export.h"

/// Pool of use counts, so that copying a vector never touches the heap. Thread-safe by a spin lock. Cells are not
/// cleared; the last cell released is the first reused. Blocks live until the program ends.
class KALMIA_EXPORT IntPool {
 public:
  static int* GetInt();
  static void ReleaseInt(int* cell);  ///< a cell of GetInt, not checked
};
