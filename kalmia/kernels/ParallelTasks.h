#pragma once

#include <functional>

#include "kalmia/support/Export.h"

namespace NCMultiThreading {

/// Runs task(0), task(1), ... task(count - 1), each once, on the threads that ThreadingControl allows, the calling
/// thread among them. A thread that ends a task takes the next one, so tasks may differ in length. A task must not
/// depend on the thread that runs it.
///
/// `ended` (may be empty) is called once for each ended task, only by the calling thread: between its own tasks, and
/// within milliseconds while it waits for other threads. It can show progress, and stop by throwing. After a throw by
/// `ended` or a task no further task begins, and the first exception is thrown again when all threads have ended. Costs
/// some tens of microseconds beside the tasks.
KALMIA_EXPORT void RunTasks(int count, const std::function<void()>& ended, const std::function<void(int)>& task);

}  // namespace NCMultiThreading
