#include "kalmia/kernels/ParallelTasks.h"

#include "kalmia/kernels/threads/StoppableTeam.h"

namespace NCMultiThreading {

void RunTasks(int count, const std::function<void()>& ended, const std::function<void(int)>& task) {
  kalmia::ForPieces(count, kalmia::ThreadsForLongWork(), ended, [&task](int piece, const kalmia::Ask& ask) {
    task(piece);
    if (ask) ask();
  });
}

}  // namespace NCMultiThreading
