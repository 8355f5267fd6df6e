#include "testing/Threads.h"

#include <omp.h>

#include "kalmia/kernels/ThreadingControl.h"
#include "kalmia/kernels/threads/Team.h"

using NCMultiThreading::ThreadingControl;

Threads::Threads(int threads) {
  omp_set_dynamic(0);
  ThreadingControl::SetNumberOfProcessors(threads);
  ThreadingControl::SetThreadingIsOn(true);
}

Threads::~Threads() { ThreadingControl::Reset(); }

int TeamReallyGot(std::int64_t cells) {
  int team = 0;
#pragma omp parallel num_threads(kalmia::TeamSize(cells))
#pragma omp single
  team = omp_get_num_threads();
  return team;
}
