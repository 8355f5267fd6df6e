#pragma once

#include <functional>

#include "kalmia/support/Export.h"

namespace NCMultiThreading {

/// Runs task(0), task(1), ... task(count - 1), each once, on the threads that ThreadingControl allows; the calling
/// thread is one of them. A thread takes the next task as soon as it has ended one, so tasks of unequal length are
/// welcome, and which thread runs a task is left to chance: what a task does must not depend on it.
///
/// `ended` (may be empty) is called once for each task that has ended, by the calling thread alone: between its own
/// tasks, and within milliseconds while it waits for those of others. It is the place to show progress and, by
/// throwing, to stop. After it or a task has thrown no further task begins; what was thrown first is thrown again when
/// all threads have ended. Costs some tens of microseconds beside the tasks themselves.
KALMIA_EXPORT void RunTasks(int count, const std::function<void()>& ended, const std::function<void(int)>& task);

}  // namespace NCMultiThreading
