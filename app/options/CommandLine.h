#pragma once

#include <string>

namespace kalmia::app {

/// The words of a command line as a shell takes them again.
std::string CommandLine(int argc, const char* const* argv);

}  // namespace kalmia::app
