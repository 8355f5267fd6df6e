#pragma once

#include "app/console/ExitCode.h"

namespace kalmia::app {

// What a signal does, for Ctrl-C (SIGINT), a request to terminate (SIGTERM) and a terminal that hangs up (SIGHUP):
//
// - the first one raises a flag. The work stops where it looks at the flag. Where it has not ended within 100 ms, the
//   process ends where it stands: it removes its temporary paths and says that it was stopped;
// - a second Ctrl-C ends the process in the same way at once. A second one of the others does nothing: a terminal that
//   is closed may hang up twice, which is no haste;
// - no end comes within a step that must not be left half done (DeadlineHold), but at the end of that step.
//
// A run that met a signal exits with 128 + its number, whatever else went wrong.

/// From here on the signals raise the flag, and a second Ctrl-C ends the process. For the main thread: handlers run
/// there, whichever thread the signal comes to, and calls that wait there end with EINTR. Writing beyond a limit of
/// file size becomes an ordinary error too.
void CatchSignals();

/// The same, with the deadline of 100 ms. For main(): nothing is unwound there.
void CatchSignalsWithDeadline();

/// The stop has come: the deadline is off, and what main() has to say is said once.
void CancelDeadline();

/// No signal ends the process while one of these lives. For short steps of the main thread.
class DeadlineHold {
 public:
  DeadlineHold();
  ~DeadlineHold();
  DeadlineHold(const DeadlineHold&) = delete;
  DeadlineHold& operator=(const DeadlineHold&) = delete;
};

/// Whether Ctrl-C was pressed, or one of the others came.
bool Interrupted();

/// Throws Stopped if so.
void StopIfInterrupted();

/// What the process returns: the code, or for a stop the shells' own number, 128 + that of the signal.
int ExitStatus(ExitCode code);

}  // namespace kalmia::app
