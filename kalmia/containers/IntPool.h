#pragma once

/// Pool of use counts, so that copying a vector never touches the heap. Safe from several threads: a spin lock guards
/// it. Cells come uncleared; the last one given back comes out first. Blocks live until the program ends.
class IntPool {
 public:
  static int* GetInt();
  static void ReleaseInt(int* cell);  ///< one of GetInt, which is not checked
};
