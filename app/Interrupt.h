#pragma once

namespace kalmia::app {

/// From here on Ctrl-C only raises a flag, which the work looks at where it can stop cleanly. A second Ctrl-C ends the
/// process at once. Writing beyond a limit of file size becomes an ordinary error too.
void CatchSignals();

/// Whether Ctrl-C was pressed.
bool Interrupted();

/// Throws Failure (Stopped) if Ctrl-C was pressed.
void StopIfInterrupted();

}  // namespace kalmia::app
