#pragma once

#include <string>

#include "app/Analysis.h"
#include "kalmia/analysis/table/TextBuffer.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::app {

/// The whole content of a file, or of standard input where the name is "-". Large files are read by all threads. Stops
/// on Ctrl-C, also while it waits for somebody to write into a pipe. `progress` (may be null) moves from 0 to 1 where
/// the file tells its size.
/// Throws BadFile when it cannot be read, Stopped on Ctrl-C or a stop of the progress.
TextBuffer ReadText(const std::string& name, NCProgress* progress = nullptr);

/// The same as a string, for files that are small.
std::string ReadInput(const std::string& name);

/// How messages call the file: "standard input" for "-", otherwise its name on one line.
std::string InputName(const std::string& name);

}  // namespace kalmia::app
