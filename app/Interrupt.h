#pragma once

#include "app/Failure.h"

namespace kalmia::app {

/// From here on Ctrl-C, a request to terminate and a terminal that hangs up only raise a flag, which the work looks at
/// where it can stop cleanly. A Ctrl-C after that ends the process at once. Writing beyond a limit of file size becomes
/// an ordinary error too.
void CatchSignals();

/// Whether Ctrl-C was pressed, or one of the others came.
bool Interrupted();

/// Throws Failure (Stopped) if so.
void StopIfInterrupted();

/// What the process returns: the code, or for a stop the shells' own number, 128 + that of the signal.
int ExitStatus(ExitCode code);

}  // namespace kalmia::app
