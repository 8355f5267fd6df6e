#pragma once

#include "app/Failure.h"

namespace kalmia::app {

/// From here on Ctrl-C, a request to terminate and a terminal that hangs up only raise a flag, which the work looks at
/// where it can stop cleanly. A Ctrl-C after that ends the process at once. Writing beyond a limit of file size becomes
/// an ordinary error too.
void CatchSignals();

/// The same, and such a stop comes at the latest 100 ms after the signal, also where the work is deaf: the process then
/// removes its temporary paths, says that it was stopped, and ends. For main(): nothing is unwound.
void CatchSignalsWithDeadline();

/// The stop has come: the deadline is off, and what main() has to say is said once.
void CancelDeadline();

/// The deadline waits while one of these lives: in a step that must not be left half done, or where a library has
/// temporary files of its own.
class DeadlineHold {
 public:
  DeadlineHold();
  ~DeadlineHold();
  DeadlineHold(const DeadlineHold&) = delete;
  DeadlineHold& operator=(const DeadlineHold&) = delete;
};

/// Whether Ctrl-C was pressed, or one of the others came.
bool Interrupted();

/// Throws Failure (Stopped) if so.
void StopIfInterrupted();

/// What the process returns: the code, or for a stop the shells' own number, 128 + that of the signal.
int ExitStatus(ExitCode code);

}  // namespace kalmia::app
