#pragma once

namespace kalmia::analysis {}

namespace kalmia::app {

// The command is written in the words of Kalmia::analysis.
using namespace analysis;

}  // namespace kalmia::app
