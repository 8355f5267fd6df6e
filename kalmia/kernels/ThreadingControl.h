#pragma once

#include "kalmia/support/Export.h"

namespace NCMultiThreading {

/// The process-wide switch for parallel work. Starts as Reset() leaves it: the initialiser stands in the object file of
/// this class, which every parallel kernel refers to, so that it runs at load in programs that link the shared library
/// and in those that link the static one. A program that never touches this class works on all processors.
///
/// To be changed only while no calculation runs: nothing is locked. OpenMP keeps the number of threads for each thread
/// that starts regions, so the calls below reach the regions of the calling thread; the flag itself holds for all.
class KALMIA_EXPORT ThreadingControl {
 public:
  /// All processors of the machine: lets OpenMP adjust teams to the load of the machine (omp_set_dynamic(1)), takes the
  /// number of processors from omp_get_num_procs(), gives it to omp_set_num_threads, and switches threading on where
  /// there is more than one.
  static void Reset();
  /// Switches threading on or off, and gives OpenMP GetNumberOfProcessors() threads or one.
  static void SetThreadingIsOn(bool on);
  static bool IsThreadingOn();
  /// Stores n and nothing else: OpenMP learns of it at the next SetThreadingIsOn(true), of less than one as of one.
  static void SetNumberOfProcessors(int n);
  static int GetNumberOfProcessors();

 private:
  static int numberOfProcessors_;  ///< threads of a parallel step
  static bool threadingIsOn_;      ///< off: no threads are started, and OpenMP regions run on the calling thread
};

}  // namespace NCMultiThreading
