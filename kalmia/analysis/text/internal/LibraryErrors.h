#pragma once

#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/support/Exception.h"

namespace kalmia::analysis {

/// What `work` returns. What the library below throws becomes BadData with its words: callers of this floor see failures
/// and std::bad_alloc alone.
template <class Work>
auto WithoutLibraryErrors(const Work& work) {
  try {
    return work();
  } catch (const Exception& error) {
    throw BadData(OneLine(static_cast<const char*>(error.GetMessage())));
  }
}

}  // namespace kalmia::analysis
