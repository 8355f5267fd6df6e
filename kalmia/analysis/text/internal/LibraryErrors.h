#pragma once

#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/support/Exception.h"

namespace kalmia::analysis {

/// Returns what `work` returns. Errors of the library become BadData in the same words: callers of Kalmia::analysis see
/// only failures and std::bad_alloc.
template <class Work>
auto WithoutLibraryErrors(const Work& work) {
  try {
    return work();
  } catch (const Exception& error) {
    throw BadData(OneLine(static_cast<const char*>(error.GetMessage())));
  }
}

}  // namespace kalmia::analysis
