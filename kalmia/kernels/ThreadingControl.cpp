#include "kalmia/kernels/ThreadingControl.h"

#include <omp.h>

#include <algorithm>

namespace NCMultiThreading {

// Good before the initialiser below has run, too: one thread.
int ThreadingControl::numberOfProcessors_ = 1;
bool ThreadingControl::threadingIsOn_ = false;

void ThreadingControl::Reset() {
  omp_set_dynamic(1);
  const int processors = omp_get_num_procs();
  numberOfProcessors_ = processors;
  threadingIsOn_ = processors > 1;
  omp_set_num_threads(processors);
}

void ThreadingControl::SetThreadingIsOn(bool on) {
  threadingIsOn_ = on;
  omp_set_num_threads(on ? std::max(numberOfProcessors_, 1) : 1);
}

bool ThreadingControl::IsThreadingOn() { return threadingIsOn_; }

void ThreadingControl::SetNumberOfProcessors(int n) { numberOfProcessors_ = n; }

int ThreadingControl::GetNumberOfProcessors() { return numberOfProcessors_; }

namespace {

struct ResetAtLoad {
  ResetAtLoad() { ThreadingControl::Reset(); }
};
const ResetAtLoad resetAtLoad;

}  // namespace
}  // namespace NCMultiThreading
