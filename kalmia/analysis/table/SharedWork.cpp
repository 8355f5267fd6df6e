#include "kalmia/analysis/table/SharedWork.h"

#include "kalmia/kernels/ParallelTasks.h"

namespace kalmia::analysis {

void ShareWork(std::size_t count, const Proceed& proceed, const std::function<void(std::size_t)>& task) {
  std::size_t ended = 0;
  NCMultiThreading::RunTasks(
      static_cast<int>(count),
      [&] { proceed(static_cast<double>(++ended) / static_cast<double>(count)); },
      [&task](int k) { task(static_cast<std::size_t>(k)); });
}

}  // namespace kalmia::analysis
