#pragma once

#include <string>

namespace kalmia::app {

/// The whole content of a file, or of standard input where the name is "-". Stops on Ctrl-C.
/// Throws Failure (Files) when it cannot be read, (Stopped) on Ctrl-C.
std::string ReadInput(const std::string& name);

/// How messages call the file: "standard input" for "-", otherwise its name on one line.
std::string InputName(const std::string& name);

}  // namespace kalmia::app
