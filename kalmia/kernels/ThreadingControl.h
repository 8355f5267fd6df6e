#pragma once

#include "kalmia/support/Export.h"

namespace NCMultiThreading {

/// The process-wide switch for parallel work. At load it is as Reset() leaves it, with the shared and with the static
/// library: without any call a program works on all processors.
///
/// Change it only while no calculation runs: nothing is locked. OpenMP keeps a number of threads for each thread that
/// starts regions, so the calls below set it for regions of the calling thread; the flag holds for all threads.
class KALMIA_EXPORT ThreadingControl {
 public:
  /// All processors of the machine: lets OpenMP adjust teams to the load (omp_set_dynamic(1)), passes
  /// omp_get_num_procs() to omp_set_num_threads, and switches threading on if there is more than one.
  static void Reset();
  /// Switches threading on or off, and gives OpenMP GetNumberOfProcessors() threads or one.
  static void SetThreadingIsOn(bool on);
  static bool IsThreadingOn();
  /// Only stores n. The next SetThreadingIsOn(true) passes it to OpenMP, or 1 if n is less.
  static void SetNumberOfProcessors(int n);
  static int GetNumberOfProcessors();

 private:
  static int numberOfProcessors_;  ///< threads of a parallel step
  static bool threadingIsOn_;      ///< off: no threads are started, and OpenMP regions run on the calling thread
};

}  // namespace NCMultiThreading
