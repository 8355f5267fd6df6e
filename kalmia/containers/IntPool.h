#pragma once

#include "kalmia/support/Export.h"

/// Pool of use counts, so that copying a vector never touches the heap. Safe from several threads: a spin lock guards
/// it. Cells come uncleared; the last one given back comes out first. Blocks live until the program ends.
class KALMIA_EXPORT IntPool {
 public:
  static int* GetInt();
  static void ReleaseInt(int* cell);  ///< one of GetInt, which is not checked
};
